// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_ADC_H
#define HX_AUX_ADC_H

#include "hx-aux/errors.h"

namespace Halvix {

enum VoltageEnum HX_32BIT {
    Voltage0 = 0,
    Voltage1 = 1,
    Voltage2 = 2,
    Voltage3 = 3,
    Voltage4 = 4,
    Voltage5 = 5,
    Voltage6 = 6,
    Voltage7 = 7,
    HX_32BIT_RANGE(VoltageEnum)
};

class Adc {
public:
    virtual eErr getVoltage(VoltageEnum which, double* voltage) = 0;
    virtual void Release() = 0;

protected:
    ~Adc() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Adc* GetAdc();

#endif
