// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <functional>

namespace hxsim {

/// "/dev/backlight": a level and a status byte. Setting the property acts like another program that sets the level.
class Backlight : public Hardware {
public:
    explicit Backlight(Unit& unit);

    std::uint8_t level = 128;
    std::uint8_t status = 0;

    /// Called with every level that a program writes.
    std::function<void(std::uint8_t level)> onWrite;
};

} // namespace hxsim
