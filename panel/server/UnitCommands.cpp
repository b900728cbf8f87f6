// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/UnitCommands.h"

#include "simulator/client/EventSocket.h"

#include <nlohmann/json.hpp>

#include <map>
#include <utility>

namespace hxpanel {

namespace {

constexpr Milliseconds kIdle{5000};

const std::map<std::string, Permission>& permissions()
{
    using enum Permission;
    static const std::map<std::string, Permission> rows{
        {"actions", Reads},  {"calls", Reads},      {"clear", Changes},  {"devices", Reads},  {"do", Changes},
        {"fail", Changes},   {"faults", Reads},     {"get", Reads},      {"log", Reads},      {"names", Reads},
        {"programs", Reads}, {"properties", Reads}, {"ramp", Changes},   {"remove", Changes}, {"restore", Changes},
        {"scale", Reads},    {"set", Changes},      {"unfail", Changes},
    };
    return rows;
}

} // namespace

Permission permissionOf(const std::string& command)
{
    const auto found = permissions().find(command);
    return found == permissions().end() ? Permission::Refused : found->second;
}

std::vector<std::string> allowedCommands(bool readOnly)
{
    std::vector<std::string> names;
    for (const auto& [name, permission] : permissions())
        if (permission == Permission::Reads || !readOnly)
            names.push_back(name);
    return names;
}

UnitCommands::~UnitCommands()
{
    giveUp(Outcome::NotRunning);
    loop_.cancel(idle_);
}

void UnitCommands::send(const std::vector<std::string>& words, OnEnd onEnd)
{
    loop_.cancel(std::exchange(idle_, 0));
    if (link_ == nullptr) {
        try {
            link_ = std::make_unique<UnitLink>(
                loop_, unit_, [](const Json&, std::string_view) {}, [this] { giveUp(Outcome::NotRunning); });
        } catch (const hxsim::BadText&) {
            return onEnd(Outcome::NotRunning, {});
        }
    }
    const std::uint64_t number = ++number_;
    waiting_[number] = {std::move(onEnd), loop_.after(kPatience, [this] { giveUp(Outcome::NoAnswer); })};
    link_->send(words, [this, number](const Json& answer) { finish(number, Outcome::Answered, answer); });
}

void UnitCommands::finish(std::uint64_t number, Outcome outcome, const Json& answer)
{
    const Waiting waiting = std::move(waiting_[number]);
    waiting_.erase(number);
    loop_.cancel(waiting.limit);
    disconnectLater();
    waiting.onEnd(outcome, answer);
}

/// The connection has ended, or has to: a late answer would be one too many.
void UnitCommands::giveUp(Outcome outcome)
{
    link_.reset();
    while (!waiting_.empty())
        finish(waiting_.begin()->first, outcome, {});
}

void UnitCommands::disconnectLater()
{
    loop_.cancel(idle_);
    idle_ = 0;
    if (waiting_.empty())
        idle_ = loop_.after(kIdle, [this] {
            idle_ = 0;
            link_.reset();
        });
}

} // namespace hxpanel
