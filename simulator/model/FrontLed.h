// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <array>
#include <cstdint>
#include <string>

namespace hxsim {

/// The status LED of the front panel. It repeats a pattern from the moment of setting it: a number of pulses, each on
/// and then off, and a rest. Times are in units of 10 ms.
class FrontLed : public Hardware {
public:
    explicit FrontLed(Unit& unit);

    [[nodiscard]] bool lit() const;

    std::array<std::uint8_t, 4> timing{100, 0, 0, 1}; ///< on, off, rest, pulses
    std::array<std::uint8_t, 3> color{0, 15, 0};      ///< red, green, blue, each 0 to 15
    bool duringStartup = true;

private:
    Unit& unit_;
    Time since_{0};
};

} // namespace hxsim
