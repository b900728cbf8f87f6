// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HX_AUX_CANSETTING_H
#define HX_AUX_CANSETTING_H

#include "hx-aux/errors.h"

namespace Halvix {

enum CanFrameType HX_32BIT { CanFrameTypeStandard = 0, CanFrameTypeExtended = 1, HX_32BIT_RANGE(CanFrameType) };

class CanSetting {
public:
    virtual eErr getBaudrate(unsigned char net, unsigned short* kbit) = 0;
    virtual eErr getFrameType(unsigned char net, CanFrameType* type) = 0;
    virtual eErr setBaudrate(unsigned char net, unsigned short kbit) = 0;
    virtual eErr setFrameType(unsigned char net, CanFrameType type) = 0;
    virtual void Release() = 0;

protected:
    ~CanSetting() {}
};

} // namespace Halvix

HX_EXPORT Halvix::CanSetting* GetCanSetting();

#endif
