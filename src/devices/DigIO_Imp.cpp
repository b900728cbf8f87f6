// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/DigIO_Imp.h"

#include "platform/ControlCodes.h"

#include <cstdint>
#include <new>

namespace Halvix {

namespace {

constexpr Read<std::uint8_t> kReadInputs{codes::digitalInputs};
constexpr unsigned kFourInputs = 0x0F; // the driver may set the other bits

} // namespace

eErr DigIO_Imp::getDigIO(unsigned char* inputs)
{
    std::uint8_t byte = 0;
    if (const eErr err = channel_.read(kReadInputs, &byte); err != ERR_SUCCESS)
        return err;
    *inputs = static_cast<unsigned char>(byte & kFourInputs);
    return ERR_SUCCESS;
}

eErr DigIO_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::DigIO* GetDigIO()
{
    return new (std::nothrow) Halvix::DigIO_Imp;
}
