// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_FRONTLED_H
#define HX_AUX_FRONTLED_H

#include "hx-aux/errors.h"

namespace Halvix {

enum HXAuxColor HX_32BIT {
    ColorRed = 0,
    ColorGreen = 1,
    ColorBlue = 2,
    ColorCyan = 3,
    ColorMagenta = 4,
    ColorOrange = 5,
    ColorOther = 6,
    HX_32BIT_RANGE(HXAuxColor)
};

class FrontLED {
public:
    virtual eErr getSignal(double* frequency, unsigned char* dutyCycle) = 0;
    virtual eErr getOnTime(unsigned char* onTime) = 0;
    virtual eErr getOffTime(unsigned char* offTime) = 0;
    virtual eErr getIdleTime(unsigned char* idleTime) = 0;
    virtual eErr getNrOfPulses(unsigned char* pulses) = 0;
    virtual eErr getColor(unsigned char* red, unsigned char* green, unsigned char* blue) = 0;
    virtual eErr getColor(HXAuxColor* color) = 0;
    virtual eErr getEnabledDuringStartup(HXStatus* status) = 0;
    virtual eErr setSignal(double frequency, unsigned char dutyCycle) = 0;
    virtual eErr setOnTime(unsigned char onTime) = 0;
    virtual eErr setOffTime(unsigned char offTime) = 0;
    virtual eErr setIdleTime(unsigned char idleTime) = 0;
    virtual eErr setNrOfPulses(unsigned char pulses) = 0;
    virtual eErr setColor(unsigned char red, unsigned char green, unsigned char blue) = 0;
    virtual eErr setColor(HXAuxColor color) = 0;
    virtual eErr setOff() = 0;
    virtual eErr setEnabledDuringStartup(HXStatus status) = 0;
    virtual void Release() = 0;

protected:
    ~FrontLED() {}
};

} // namespace Halvix

HX_EXPORT unsigned char stdColor[18];
HX_EXPORT Halvix::FrontLED* GetFrontLED();

#endif
