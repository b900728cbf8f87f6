// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/TouchScreenCalib.h"
#include "platform/DeviceChannel.h"

namespace Halvix {

class TouchScreenCalib_Imp : public TouchScreenCalib {
public:
    TouchScreenCalib_Imp() = default;
    virtual ~TouchScreenCalib_Imp() = default; // after the interface's slots, so no slot moves

    eErr SetMode(CalibrationModeSettings mode) override;
    eErr GetMode(CalibrationModeSettings* mode) override;
    eErr SetCalibrationPoint(unsigned char point) override;
    eErr CheckCalibrationPointFinished(bool* finished, unsigned char point) override;
    eErr GetConfigParam(CalibrationConfigParam parameter, unsigned short* value) override;
    eErr SetConfigParam(CalibrationConfigParam parameter, unsigned short value) override;
    eErr Release() override;

private:
    DeviceChannel channel_{"/dev/front-mcu-id"};
};

} // namespace Halvix
