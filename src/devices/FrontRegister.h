// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/ControlCodes.h"
#include "platform/DeviceChannel.h"

#include <cstdint>

namespace Halvix {

/// Register and value of the front microcontroller's touch controller; in an answer the number is meaningless.
struct FrontRegister {
    std::uint16_t number;
    std::uint16_t value;
};
static_assert(sizeof(FrontRegister) == 4);

/// Calibration and touch settings share this channel and its registers.
inline constexpr Write<FrontRegister> kWriteFrontRegister{codes::setFrontRegister};
inline constexpr Request<std::uint8_t, FrontRegister> kReadFrontRegister{codes::frontRegister};

} // namespace Halvix
