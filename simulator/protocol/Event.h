// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <cstdint>
#include <string>

namespace hxsim {

/// One thing that happened on a unit. Events of a unit are numbered from 1 in their order; an event that only one
/// follower gets (Alarm, Held) has the number 0.
struct Event {
    enum class Kind {
        Property, ///< `subject` changed from `old` to `text`
        Request,  ///< a program's call on `subject`; `text` is the call as the log shows it
        Fault,    ///< an injected failure met a call: `text` on `subject`, with `error`
        Joined,   ///< `process` uses the unit from now on; `subject` is its program
        Left,     ///< `process` does not use it any more
        Output,   ///< the program `subject` printed the line `text`
        Alarm,    ///< the time that a follower asked for has come
        Held,     ///< virtual time does not pass: `thread` of `subject` `text` ("is running"), for `old` seconds
    };

    Kind kind = Kind::Alarm;
    Time time{0}; ///< of the unit
    std::uint64_t number = 0;
    std::string subject{};
    std::string text{};
    std::string old{};
    int process = 0;
    int thread = 0;
    std::string name{};      ///< of a request: "put 4", "0x40010003", "open"
    std::string direction{}; ///< of a request: "in" to the device, "out" from it, "both" or "none"
    std::string in{};        ///< bytes of a request, as "00 80"
    std::string out{};
    std::string error{}; ///< "EIO" for a failed request

    bool operator==(const Event&) const = default;
};

} // namespace hxsim
