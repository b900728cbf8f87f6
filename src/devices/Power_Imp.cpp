// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Power_Imp.h"

#include "hx-aux/version-gates.h"
#include "platform/ControlCodes.h"

namespace Halvix {

namespace {

constexpr unsigned char kAllChannels = 15;
constexpr std::uint8_t kLastTransition = 6;
constexpr std::uint8_t kAcknowledged = 0;

} // namespace

eErr Power_Imp::getStatus(Read<std::uint8_t> request, HXStatus* status)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    std::uint8_t raw = 0;
    if (const eErr err = channel_.read(request, &raw); err != ERR_SUCCESS)
        return err;
    *status = raw != 0 ? HXStatusEnabled : HXStatusDisabled;
    return ERR_SUCCESS;
}

eErr Power_Imp::setStatus(Write<std::uint8_t> request, HXStatus status)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    return channel_.write(request, std::uint8_t{status == HXStatusEnabled}); // anything except 1 switches off
}

eErr Power_Imp::getBLPowerStatus(HXStatus* status)
{
    return getStatus({codes::powerBacklight}, status);
}

eErr Power_Imp::getCanPowerStatus(HXStatus* status)
{
    return getStatus({codes::powerCan}, status);
}

eErr Power_Imp::getVideoPowerStatus(unsigned char* channels)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    return channel_.read({codes::powerVideo}, channels);
}

eErr Power_Imp::getExtFanPowerStatus(HXStatus* status)
{
    return getStatus({codes::powerExtFan}, status);
}

eErr Power_Imp::setBLPowerStatus(HXStatus status)
{
    return setStatus({codes::setPowerBacklight}, status);
}

eErr Power_Imp::setCanPowerStatus(HXStatus status)
{
    return setStatus({codes::setPowerCan}, status);
}

eErr Power_Imp::setVideoPowerStatus(unsigned char channels)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    if (channels > kAllChannels)
        return ERR_INVALID_DATA;
    return channel_.write({codes::setPowerVideo}, channels);
}

eErr Power_Imp::setExtFanPowerStatus(HXStatus status)
{
    return setStatus({codes::setPowerExtFan}, status);
}

eErr Power_Imp::getButtonPowerTransitionStatus(ButtonPowerTransitionStatus* status)
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    if (!DoesSystemHaveAtLeastSSVersion(0, 9, 0, 0))
        return ERR_NEWER_SS_VERSION_REQUIRED;
    std::uint8_t raw = 0;
    if (const eErr err = channel_.read({codes::powerButtonTransition}, &raw); err != ERR_SUCCESS)
        return err;
    if (raw > kLastTransition)
        return ERR_INVALID_DATA;
    *status = static_cast<ButtonPowerTransitionStatus>(raw);
    return ERR_SUCCESS;
}

eErr Power_Imp::ackPowerRequest()
{
    if (const eErr err = channel_.ensureOpen(); err != ERR_SUCCESS)
        return err;
    // Unlike the other operations it does not check the count; callers rely on its success.
    return channel_.writeUncounted({codes::ackPowerRequest}, kAcknowledged);
}

eErr Power_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Power* GetPower()
{
    return new Halvix::Power_Imp;
}
