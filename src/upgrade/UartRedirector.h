// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/DeviceChannel.h"

namespace Halvix {

/// Selects the target of the service UART, through "/dev/uart-redir".
///
/// One object serves one run: once closed, the device is not opened again and the requests fail.
class UartRedirector {
public:
    /// Opens the device, unless it is already open; returns the handle.
    int openHWConnection();
    /// 1 (not open), 8 (direction above 2), 7.
    [[nodiscard]] eErr setComDir(unsigned char direction);
    /// 1 (not open), 8 (not one of the three modes). A refusal by the driver is not reported.
    [[nodiscard]] eErr setSsMode(unsigned char mode);
    /// 1 (not open), 7.
    [[nodiscard]] eErr frontBootMode();
    void closeHWConnection();

private:
    RunChannel channel_{"/dev/uart-redir"};
};

} // namespace Halvix
