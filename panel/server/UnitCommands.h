// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/UnitLink.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace hxpanel {

/// Whether a command of the page may reach a unit.
enum class Permission { Reads, Changes, Refused };
Permission permissionOf(const std::string& command);
/// The commands that are allowed, for messages.
std::vector<std::string> allowedCommands(bool readOnly);

/// Sends the commands of all pages to one unit, in their order.
class UnitCommands {
public:
    using Json = nlohmann::json;
    enum class Outcome { Answered, NotRunning, NoAnswer };
    using OnEnd = std::function<void(Outcome, const Json& answer)>;

    UnitCommands(Loop& loop, std::string unit) : loop_{loop}, unit_{std::move(unit)} {}
    UnitCommands(const UnitCommands&) = delete;
    UnitCommands& operator=(const UnitCommands&) = delete;
    ~UnitCommands();

    void send(const std::vector<std::string>& words, OnEnd onEnd);

    static constexpr Milliseconds kPatience{10000};

private:
    struct Waiting {
        OnEnd onEnd{};
        Loop::Timer limit = 0;
    };

    void finish(std::uint64_t number, Outcome outcome, const Json& answer);
    void giveUp(Outcome outcome);
    void disconnectLater();

    Loop& loop_;
    std::string unit_;
    std::unique_ptr<UnitLink> link_{};
    std::map<std::uint64_t, Waiting> waiting_{};
    std::uint64_t number_ = 0;
    Loop::Timer idle_ = 0;
};

} // namespace hxpanel
