// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/LightTrace.h"

#include "simulator/model/Backlight.h"
#include "simulator/model/LightSensor.h"

namespace hxsim {

namespace {

double secondsOf(Time time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

LightTrace::LightTrace(Unit& unit)
{
    unit.get<LightSensor>().onRead = [this, &unit](double luxSet, double luxReported) {
        if (recording)
            readings.push_back({secondsOf(unit.clock().now()), luxSet, luxReported});
    };
    unit.get<Backlight>().onWrite = [this, &unit](std::uint8_t level) {
        if (recording)
            levels.push_back({secondsOf(unit.clock().now()), level});
    };
    unit.properties().flag("light.trace", recording, "whether readings and levels are recorded for a picture");
}

int LightTrace::reversals() const
{
    int count = 0;
    int direction = 0;
    for (std::size_t i = 1; i < levels.size(); ++i) {
        const int difference = levels[i].level - levels[i - 1].level;
        if (difference == 0)
            continue;
        const int now = difference > 0 ? 1 : -1;
        count += direction != 0 && now != direction ? 1 : 0;
        direction = now;
    }
    return count;
}

double LightTrace::levelAt(double seconds) const
{
    double level = levels.empty() ? 0 : levels.front().level;
    for (const Level& one : levels) {
        if (one.seconds > seconds)
            break;
        level = one.level;
    }
    return level;
}

double LightTrace::secondsToNinety(double from, double to) const
{
    const double before = levelAt(from);
    const double way = levelAt(to) - before;
    if (way == 0)
        return -1;
    for (const Level& one : levels)
        if (one.seconds > from && (one.level - before) / way >= 0.9)
            return one.seconds - from;
    return -1;
}

HXSIM_HARDWARE(LightTrace)

} // namespace hxsim
