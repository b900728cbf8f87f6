// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "panel/server/Loop.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace hxpanel {

/// A connection to a unit's event socket that never waits: answers and events arrive in the loop.
class UnitLink {
public:
    using Json = nlohmann::json;
    using OnAnswer = std::function<void(const Json& answer)>;
    using OnEvent = std::function<void(const Json& event, std::string_view line)>;
    using OnEnd = std::function<void()>;

    /// Throws hxsim::UnitGone. `onEnd` is called once, when the unit has gone or cut the connection off; the link may
    /// be destroyed in it, as in every other of these functions.
    UnitLink(Loop& loop, const std::string& unit, OnEvent onEvent, OnEnd onEnd);
    UnitLink(const UnitLink&) = delete;
    UnitLink& operator=(const UnitLink&) = delete;
    ~UnitLink();

    /// Sends a command; `onAnswer` is called with its answer, unless the link ends before.
    void send(const std::vector<std::string>& words, OnAnswer onAnswer);

    /// The longest command in the form in which it is sent. A unit cuts off who sends a longer one.
    static constexpr std::size_t kLongestCommand = 60U << 10;
    /// The length of a command in that form.
    static std::size_t lengthOf(const std::vector<std::string>& words);

private:
    void serve();
    bool receive();
    void flush();
    void take(std::string_view line);
    void end();

    Loop& loop_;
    int fd_;
    bool greeted_ = false;
    std::string unread_{};
    std::string unsent_{};
    std::uint64_t id_ = 0;
    std::map<std::uint64_t, OnAnswer> waiting_{};
    OnEvent onEvent_;
    OnEnd onEnd_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< false when the object has gone
};

} // namespace hxpanel
