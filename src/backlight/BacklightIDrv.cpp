// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/BacklightIDrv.h"

#include "platform/ControlCodes.h"

namespace Halvix {

namespace {

constexpr Read<unsigned char> kLevel{codes::backlightLevel};
constexpr Write<unsigned char> kSetLevel{codes::setBacklightLevel};
constexpr Read<unsigned char> kStatus{codes::backlightStatus};

} // namespace

eErr BacklightIDrv::getIntensity(unsigned char* level)
{
    return read(kLevel, level);
}

eErr BacklightIDrv::setIntensity(unsigned char level)
{
    return write(kSetLevel, level);
}

eErr BacklightIDrv::getStatus(unsigned char* status)
{
    return read(kStatus, status);
}

} // namespace Halvix
