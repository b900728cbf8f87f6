// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>
#include <deque>

namespace hxsim {

class Microcontroller;
class UartRouting;

/// "/dev/ttyS0" and the wire behind it. Each byte takes its transfer time, or none when pacing is off.
class ServiceUart : public Hardware {
public:
    explicit ServiceUart(Unit& unit);

    /// A byte that a microcontroller sends. It is lost unless the line is routed to that one.
    void fromTarget(const Microcontroller& target, std::uint8_t byte);

    LineSettings line;
    bool paced = true;
    std::int64_t dropToTarget = 0; ///< fault: the byte towards the target that is lost
    std::int64_t dropToUnit = 0;   ///< fault: the byte towards the unit that is lost

private:
    /// Bytes that a read waits for.
    [[nodiscard]] std::size_t wanted() const;
    Outcome read(std::span<std::uint8_t> out, Time started);
    Outcome write(std::span<const std::uint8_t> in);
    /// When a byte that starts now is transferred; the line in that direction is busy until `busyUntil`.
    Time passedAt(Time& busyUntil);
    void deliver(std::uint8_t byte);
    [[nodiscard]] bool targetUnderstands() const;

    Unit& unit_;
    Time sendingUntil_{0};
    Time receivingUntil_{0};
    std::deque<std::uint8_t> received_;
};

} // namespace hxsim
