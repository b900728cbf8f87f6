// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_POWER_H
#define HX_AUX_POWER_H

#include "hx-aux/errors.h"

namespace Halvix {

enum ButtonPowerTransitionStatus HX_32BIT {
    ButtonPowerTransition0 = 0,
    ButtonPowerTransition1 = 1,
    ButtonPowerTransition2 = 2,
    ButtonPowerTransition3 = 3,
    ButtonPowerTransition4 = 4,
    ButtonPowerTransition5 = 5,
    ButtonPowerTransition6 = 6,
    HX_32BIT_RANGE(ButtonPowerTransitionStatus)
};

class Power {
public:
    virtual eErr getBLPowerStatus(HXStatus* status) = 0;
    virtual eErr getCanPowerStatus(HXStatus* status) = 0;
    virtual eErr getVideoPowerStatus(unsigned char* channels) = 0;
    virtual eErr getExtFanPowerStatus(HXStatus* status) = 0;
    virtual eErr setBLPowerStatus(HXStatus status) = 0;
    virtual eErr setCanPowerStatus(HXStatus status) = 0;
    virtual eErr setVideoPowerStatus(unsigned char channels) = 0;
    virtual eErr setExtFanPowerStatus(HXStatus status) = 0;
    virtual eErr getButtonPowerTransitionStatus(ButtonPowerTransitionStatus* status) = 0;
    virtual eErr ackPowerRequest() = 0;
    virtual void Release() = 0;

protected:
    ~Power() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Power* GetPower();

#endif
