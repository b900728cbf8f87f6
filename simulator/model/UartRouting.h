// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>

namespace hxsim {

class Microcontroller;

/// "/dev/uart-redir": the routing of the service UART, and the boot pins of the two microcontrollers.
///
/// The supervisor's mode 0x96 restarts it in its bootloader; in 0x0F it does not access the front-panel controller and
/// the FPGA's flash; 0xC3 is normal operation, and entering it restarts the front-panel controller. The front-panel
/// controller can be started in its bootloader only in mode 0x0F.
class UartRouting : public Hardware {
public:
    explicit UartRouting(Unit& unit);

    /// Null when the line is disconnected.
    [[nodiscard]] Microcontroller* peer();

    std::uint8_t direction = 0; ///< 0 disconnected, 1 supervisor, 2 front-panel controller
    std::uint8_t mode = 0xC3;

private:
    int setDirection(std::uint8_t value);
    int setMode(std::uint8_t value);
    int startFrontBootloader();

    Unit& unit_;
};

} // namespace hxsim
