// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/DeviceChannel.h"

namespace Halvix {

/// The backlight's driver, "/dev/backlight": one request per operation, which answers 1, 7 or 6.
class BacklightIDrv : private DeviceChannel {
public:
    BacklightIDrv() { openHWConnection(); }

    void openHWConnection() { open("/dev/backlight"); }

    [[nodiscard]] eErr getIntensity(unsigned char* level);
    [[nodiscard]] eErr setIntensity(unsigned char level);
    [[nodiscard]] eErr getStatus(unsigned char* status);
};

} // namespace Halvix
