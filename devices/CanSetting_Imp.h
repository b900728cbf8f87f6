// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/CanSetting.h"

namespace Halvix {

class CanSetting_Imp : public CanSetting {
public:
    // Read by applications as data, so they are symbols of the library and not only constants in a header.
    __attribute__((visibility("default"))) static const int CAN_NET_MIN;
    __attribute__((visibility("default"))) static const int CAN_NET_MAX;
    __attribute__((visibility("default"))) static const unsigned short CAN_MAX_BAUDRATE; // kbit/s

    CanSetting_Imp() = default;
    virtual ~CanSetting_Imp() = default; // after the interface's slots, so no slot moves

    eErr getBaudrate(unsigned char net, unsigned short* kbit) override;
    eErr getFrameType(unsigned char net, CanFrameType* type) override;
    eErr setBaudrate(unsigned char net, unsigned short kbit) override;
    eErr setFrameType(unsigned char net, CanFrameType type) override;
    eErr Release() override;
};

} // namespace Halvix
