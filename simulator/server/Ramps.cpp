// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Ramps.h"

#include "simulator/model/Text.h"

#include <cmath>

namespace hxsim {

namespace {

constexpr Time kStep = std::chrono::milliseconds{20};

} // namespace

void Ramps::set(const std::string& property, double value, bool isWhole)
{
    unit_.properties().set(property, decimal(isWhole ? std::round(value) : std::round(value * 1e6) / 1e6));
}

void Ramps::start(const std::string& property, double from, double to, Time over)
{
    const std::string before = unit_.properties().get(property);
    Ramp ramp{from, to, unit_.clock().now(), over, false};
    try {
        set(property, to, false);
        set(property, from, false);
    } catch (const BadText&) {
        unit_.properties().set(property, before);
        throw;
    }
    const auto isRefused = [&](double value) {
        try {
            set(property, value, false);
        } catch (const BadText&) {
            return true;
        }
        return false;
    };
    ramp.isWhole = isRefused((from + to) / 2 + 0.001) && isRefused((from + to) / 2 - 0.001); // one can be out of range
    set(property, from, ramp.isWhole);
    if (const auto running = steps_.find(property); running != steps_.end())
        unit_.clock().cancel(running->second);
    ramps_.insert_or_assign(property, ramp);
    step(property);
}

void Ramps::step(const std::string& property)
{
    const Ramp& ramp = ramps_.at(property);
    const Time now = unit_.clock().now();
    const Time end = ramp.begin + ramp.over;
    const double part =
        now >= end ? 1 : static_cast<double>((now - ramp.begin).count()) / static_cast<double>(ramp.over.count());
    set(property, ramp.from + part * (ramp.to - ramp.from), ramp.isWhole);
    if (now >= end) {
        ramps_.erase(property);
        steps_.erase(property);
        return;
    }
    steps_.insert_or_assign(property,
                            unit_.clock().at(std::min(now + kStep, end), [this, property] { step(property); }));
}

} // namespace hxsim
