// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/DigIO.h"
#include "platform/DeviceChannel.h"

namespace Halvix {

class DigIO_Imp : public DigIO {
public:
    DigIO_Imp() = default;
    virtual ~DigIO_Imp() = default; // after the interface's slots, so no slot moves

    eErr getDigIO(unsigned char* inputs) override;
    eErr Release() override;

private:
    DeviceChannel channel_{"/dev/dig-io"};
};

} // namespace Halvix
