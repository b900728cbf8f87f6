// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

#include "simulator/model/Hardware.h"

namespace hxsim {

class Microcontroller;

/// "/dev/uart-redir": who is at the other end of the service UART, and the boot pins of the two microcontrollers.
///
/// The supervisor's mode 0x96 restarts it in its bootloader; 0x0F makes it leave the front-panel controller and the
/// FPGA's flash alone; 0xC3 makes it work as usual again, which restarts the front-panel controller. The
/// front-panel controller can be started in its bootloader only while the supervisor leaves it alone.
class UartRouting : public Hardware {
public:
    explicit UartRouting(Unit& unit);

    /// Null when the line leads nowhere.
    [[nodiscard]] Microcontroller* peer();

    std::uint8_t direction = 0; ///< 0 nobody, 1 supervisor, 2 front-panel controller
    std::uint8_t mode = 0xC3;

private:
    int setDirection(std::uint8_t value);
    int setMode(std::uint8_t value);
    int startFrontBootloader();

    Unit& unit_;
};

} // namespace hxsim
