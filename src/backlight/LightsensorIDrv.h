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

    /// 1, 7, 6, or 8 for a conversion that is not complete: no output is written then. The range is queried after the
    /// reading. If that fails, its code is returned, `*range` stays unchanged, and the reading is still written,
    /// calculated with the range in `*range`.
    [[nodiscard]] eErr getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1,
                                      LightSensorOperationRange* range);
    /// 1, 7, 6, or 8 for a range that is neither of the two.
    [[nodiscard]] eErr getOperatingRange(LightSensorOperationRange* range);
    /// 1, 9 for a value that is neither of the two (callers rely on 9, not 8), 7. The count is not checked.
    [[nodiscard]] eErr setOperatingRange(LightSensorOperationRange range);
};

} // namespace Halvix
