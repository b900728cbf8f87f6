// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_TOUCHSCREENCALIB_H
#define HX_AUX_TOUCHSCREENCALIB_H

#include "hx-aux/errors.h"

namespace Halvix {

enum CalibrationModeSettings HX_32BIT {
    CalibrationModeNone = 0,
    CalibrationMode5Points = 1,
    CalibrationMode5PointsExtended = 2,
    CalibrationMode9PointsExtended = 3,
    CalibrationMode13PointsExtended = 4,
    HX_32BIT_RANGE(CalibrationModeSettings)
};

enum CalibrationConfigParam HX_32BIT {
    CalibrationParam0 = 0,
    CalibrationParam1 = 1,
    CalibrationParam2 = 2,
    CalibrationParam3 = 3,
    CalibrationParam4 = 4,
    CalibrationParam5 = 5,
    HX_32BIT_RANGE(CalibrationConfigParam)
};

class TouchScreenCalib {
public:
    virtual eErr SetMode(CalibrationModeSettings mode) = 0;
    virtual eErr GetMode(CalibrationModeSettings* mode) = 0;
    virtual eErr SetCalibrationPoint(unsigned char point) = 0;
    virtual eErr CheckCalibrationPointFinished(bool* finished, unsigned char point) = 0;
    virtual eErr GetConfigParam(CalibrationConfigParam parameter, unsigned short* value) = 0;
    virtual eErr SetConfigParam(CalibrationConfigParam parameter, unsigned short value) = 0;
    virtual void Release() = 0;

protected:
    ~TouchScreenCalib() {}
};

} // namespace Halvix

HX_EXPORT Halvix::TouchScreenCalib* GetTouchScreenCalib();

#endif
