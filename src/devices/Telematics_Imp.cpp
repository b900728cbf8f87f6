// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Telematics_Imp.h"

#include "hx-aux/About.h"
#include "settings/WithSettings.h"

namespace Halvix {

namespace {

constexpr const char* kGprsKey = "GPRSPowerAtStartup";
constexpr const char* kWlanKey = "WLANPowerAtStartup";

HXStatus toStatus(bool on)
{
    return on ? HXStatusEnabled : HXStatusDisabled;
}

/// A missing file or key, or a text that is not a number, means "not set".
eErr readWish(const char* key, HXStatus* status)
{
    return withSettings([&](IniSettings& settings) {
        unsigned long number = 0;
        (void)IniSettings::ConvertStrToLong(&number, settings.get(key)); // stays 0 then
        *status = toStatus(number == 1);
        return ERR_SUCCESS;
    });
}

eErr storeWish(const char* key, HXStatus status)
{
    return storeSetting(key, status == HXStatusEnabled ? "1" : "0");
}

} // namespace

eErr Telematics_Imp::check(Availability& cached, eErr (About::*getter)(bool*), eErr missing)
{
    if (!cached.computed) {
        About* const about = GetAbout();
        if (about == nullptr)
            return ERR_MEM_ALLOC_FAIL;
        bool fitted = false;
        cached.value = (about->*getter)(&fitted) == ERR_SUCCESS && fitted;
        about->Release();
        cached.computed = true;
    }
    return cached.value ? ERR_SUCCESS : missing;
}

eErr Telematics_Imp::checkGPRS()
{
    return check(gprs_, &About::getIsGPRSMounted, ERR_TELEMATICS_GPRS_NOT_AVAILABLE);
}

eErr Telematics_Imp::checkWLAN()
{
    return check(wlan_, &About::getIsWLANMounted, ERR_TELEMATICS_WLAN_NOT_AVAILABLE);
}

eErr Telematics_Imp::checkGPS()
{
    return check(gps_, &About::getIsGPSMounted, ERR_TELEMATICS_GPS_NOT_AVAILABLE);
}

eErr Telematics_Imp::checkBT()
{
    return check(bt_, &About::getIsBTMounted, ERR_TELEMATICS_BT_NOT_AVAILABLE);
}

bool Telematics_Imp::isGPRSAvailable()
{
    return checkGPRS() == ERR_SUCCESS;
}

bool Telematics_Imp::isWLANAvailable()
{
    return checkWLAN() == ERR_SUCCESS;
}

bool Telematics_Imp::isGPSAvailable()
{
    return checkGPS() == ERR_SUCCESS;
}

bool Telematics_Imp::isBTAvailable()
{
    return checkBT() == ERR_SUCCESS;
}

eErr Telematics_Imp::getTelematicsAvailable(HXStatus* status)
{
    bool any = false;
    for (const auto next : {checkBT, checkGPS, checkWLAN, checkGPRS}) {
        const eErr err = next();
        if (err == ERR_MEM_ALLOC_FAIL)
            return err;
        any = err == ERR_SUCCESS;
        if (any)
            break;
    }
    *status = toStatus(any);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getGPRSPowerStatus(HXStatus* status)
{
    if (const eErr err = checkGPRS(); err != ERR_SUCCESS)
        return err;
    bool on = false;
    if (const eErr err = expander_.getGPRSPowerStatus(&on); err != ERR_SUCCESS)
        return err;
    *status = toStatus(on);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getGPRSStartUpPowerStatus(HXStatus* status)
{
    const eErr err = checkGPRS();
    return err == ERR_SUCCESS ? readWish(kGprsKey, status) : err;
}

eErr Telematics_Imp::getWLANPowerStatus(HXStatus* status)
{
    if (const eErr err = checkWLAN(); err != ERR_SUCCESS)
        return err;
    bool on = false;
    if (const eErr err = expander_.getWLANPowerStatus(&on); err != ERR_SUCCESS)
        return err;
    *status = toStatus(on);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getWLANStartUpPowerStatus(HXStatus* status)
{
    const eErr err = checkWLAN();
    return err == ERR_SUCCESS ? readWish(kWlanKey, status) : err;
}

eErr Telematics_Imp::getGPSAntennaStatus(HXStatus* status)
{
    if (const eErr err = checkGPS(); err != ERR_SUCCESS)
        return err;
    bool high = false;
    if (const eErr err = expander_.getXANTSHORTPowerStatus(&high); err != ERR_SUCCESS)
        return err;
    *status = toStatus(high);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::setGPRSPowerStatus(HXStatus status)
{
    const eErr err = checkGPRS();
    return err == ERR_SUCCESS ? expander_.setGPRSPowerStatus(status == HXStatusEnabled) : err;
}

eErr Telematics_Imp::setGPRSStartUpPowerStatus(HXStatus status)
{
    const eErr err = checkGPRS();
    return err == ERR_SUCCESS ? storeWish(kGprsKey, status) : err;
}

eErr Telematics_Imp::setWLANPowerStatus(HXStatus status)
{
    const eErr err = checkWLAN();
    return err == ERR_SUCCESS ? expander_.setWLANPowerStatus(status == HXStatusEnabled) : err;
}

eErr Telematics_Imp::setWLANStartUpPowerStatus(HXStatus status)
{
    const eErr err = checkWLAN();
    return err == ERR_SUCCESS ? storeWish(kWlanKey, status) : err;
}

eErr Telematics_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Telematics* GetTelematics()
{
    return new Halvix::Telematics_Imp;
}
