// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/DeviceChannel.h"

namespace Halvix {

/// The light sensor's driver, "/dev/lightsensor". Its requests are single; any thread may send them at any time.
class LightsensorIDrv : private DeviceChannel {
public:
    LightsensorIDrv() { openHWConnection(); }
    ~LightsensorIDrv();
    LightsensorIDrv(const LightsensorIDrv&) = delete;
    LightsensorIDrv& operator=(const LightsensorIDrv&) = delete;

    void openHWConnection() { open("/dev/lightsensor"); }

    /// 1, 7, 6, or 8 for a conversion that is not complete: no output is written then. The range is asked after the
    /// reading; when that fails its code is answered, `*range` stays, and the reading is written all the same, taken
    /// in the range that `*range` held.
    [[nodiscard]] eErr getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1,
                                      LightSensorOperationRange* range);
    /// 1, 7, 6, or 8 for a range that is neither of the two.
    [[nodiscard]] eErr getOperatingRange(LightSensorOperationRange* range);
    /// 1, 9 for a value that is neither of the two (callers know it as 9, not 8), 7. The count is not looked at.
    [[nodiscard]] eErr setOperatingRange(LightSensorOperationRange range);
};

} // namespace Halvix
