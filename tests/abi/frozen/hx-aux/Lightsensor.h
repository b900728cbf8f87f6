// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_LIGHTSENSOR_H
#define HX_AUX_LIGHTSENSOR_H

#include "hx-aux/errors.h"
#include "hx-aux/types.h"

namespace Halvix {

class Lightsensor {
public:
    virtual eErr getIlluminance(unsigned short* lux) = 0;
    virtual eErr getIlluminance(unsigned short* lux, unsigned char* ch0, unsigned char* ch1) = 0;
    virtual eErr getAverageIlluminance(unsigned short* lux) = 0;
    virtual eErr startAverageCalc(unsigned long averageWndSize, unsigned long rejectWndSize,
                                  unsigned long rejectDeltaInLux, LightSensorSamplingMode mode) = 0;
    virtual eErr stopAverageCalc() = 0;
    virtual eErr getOperatingRange(LightSensorOperationRange* range) = 0;
    virtual eErr setOperatingRange(LightSensorOperationRange range) = 0;
    virtual void Release() = 0;

protected:
    ~Lightsensor() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Lightsensor* GetLightsensor();

#endif
