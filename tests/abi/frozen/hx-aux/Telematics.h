// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_TELEMATICS_H
#define HX_AUX_TELEMATICS_H

#include "hx-aux/errors.h"

namespace Halvix {

class Telematics {
public:
    virtual eErr getTelematicsAvailable(HXStatus* status) = 0;
    virtual eErr getGPRSPowerStatus(HXStatus* status) = 0;
    virtual eErr getGPRSStartUpPowerStatus(HXStatus* status) = 0;
    virtual eErr getWLANPowerStatus(HXStatus* status) = 0;
    virtual eErr getWLANStartUpPowerStatus(HXStatus* status) = 0;
    virtual eErr getGPSAntennaStatus(HXStatus* status) = 0;
    virtual eErr setGPRSPowerStatus(HXStatus status) = 0;
    virtual eErr setGPRSStartUpPowerStatus(HXStatus status) = 0;
    virtual eErr setWLANPowerStatus(HXStatus status) = 0;
    virtual eErr setWLANStartUpPowerStatus(HXStatus status) = 0;
    virtual void Release() = 0;

protected:
    ~Telematics() {}
};

} // namespace Halvix

HX_EXPORT Halvix::Telematics* GetTelematics();

#endif
