// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"
#include "simulator/model/SupervisorRegisters.h"

#include <cstdint>
#include <optional>
#include <string>

namespace hxsim {

/// The touch controller in the front microcontroller: its registers, and the calibration that it runs.
///
/// A calibration begins when its mode is written and ends when every point was taken. The controller takes a point when
/// a finger has rested on it for a while; register 1 then shows the point's number in its high byte. `touch 3` puts the
/// finger on the target of point 3, `lift` removes it; a finger that follows always touches the requested point.
class TouchController : public Hardware {
public:
    explicit TouchController(Unit& unit);

    SupervisorRegisters registers; ///< "/dev/front-mcu-id"
    std::uint8_t calibration = 0;  ///< mode of the running calibration as its request names it, 0 when none runs
    std::uint8_t awaited = 0;      ///< requested point
    std::uint8_t taken = 0;        ///< last accepted point
    unsigned calibrated = 0;       ///< completed calibrations
    std::optional<std::uint8_t> finger;
    bool fingerFollows = false;

private:
    void describeRegisters();
    int begin(std::uint8_t mode);
    int await(std::uint8_t point);
    void look();
    void take(std::uint8_t point);
    [[nodiscard]] std::string fingerText() const;
    void placeFinger(const std::string& text);

    Unit& unit_;
    std::uint32_t points_ = 0; ///< bit n: point n was accepted in this calibration
    std::optional<Clock::Key> resting_;
};

} // namespace hxsim
