// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Adc.h"
#include "platform/DeviceChannel.h"

namespace Halvix {

class Adc_Imp : public Adc {
public:
    Adc_Imp() = default;
    virtual ~Adc_Imp() = default; // after the interface's slots, so no slot moves

    eErr getVoltage(VoltageEnum which, double* voltage) override;
    eErr Release() override;

private:
    DeviceChannel channel_{"/dev/adc-id"};
};

} // namespace Halvix
