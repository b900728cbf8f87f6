// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_BACKLIGHT_H
#define HX_AUX_BACKLIGHT_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

class Backlight {
public:
    virtual eErr getIntensity(unsigned char* level) = 0;
    virtual eErr setIntensity(unsigned char level) = 0;
    virtual eErr getStatus(unsigned char* status) = 0;
    virtual eErr startAutomaticBL() = 0;
    virtual eErr stopAutomaticBL() = 0;
    virtual eErr getAutomaticBLStatus(unsigned char* enabled) = 0;
    virtual eErr setAutomaticBLParams(bool softTransitions) = 0;
    virtual eErr getAutomaticBLParams(bool* softTransitions, double* k) = 0;
    virtual eErr setAutomaticBLFilter(unsigned long averageWndSize, unsigned long rejectWndSize,
                                      unsigned long rejectDeltaInLux, LightSensorSamplingMode mode) = 0;
    virtual eErr getAutomaticBLFilter(unsigned long* averageWndSize, unsigned long* rejectWndSize,
                                      unsigned long* rejectDeltaInLux, LightSensorSamplingMode* mode) = 0;
    virtual eErr getLedDimming(HXStatus* status) = 0;
    virtual eErr setLedDimming(HXStatus status) = 0;
    virtual void Release() = 0;

protected:
    ~Backlight() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Backlight* GetBacklight();

#endif
