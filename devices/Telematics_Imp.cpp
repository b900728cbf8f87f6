// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Telematics_Imp.h"

#include "hx-aux/About.h"
#include "platform/LinuxWrapper.h"
#include "settings/IniSettings.h"

#include <new>

namespace Halvix {

namespace {

constexpr const char* kGprsKey = "GPRSPowerAtStartup";
constexpr const char* kWlanKey = "WLANPowerAtStartup";

HXStatus toStatus(bool on)
{
    return on ? HXStatusEnabled : HXStatusDisabled;
}

/// A missing file or key, or a text that is no number, is "not wished".
eErr readWish(const char* key, HXStatus* status)
try {
    IniSettings settings;
    settings.load(LinuxWrapper::GetSettingsFileName());
    unsigned long number = 0;
    (void)IniSettings::ConvertStrToLong(&number, settings.get(key)); // stays 0 then
    *status = toStatus(number == 1);
    return ERR_SUCCESS;
} catch (const std::bad_alloc&) {
    return ERR_MEM_ALLOC_FAIL;
}

eErr storeWish(const char* key, HXStatus status)
try {
    IniSettings settings;
    settings.load(LinuxWrapper::GetSettingsFileName());
    settings.set(key, status == HXStatusEnabled ? "1" : "0");
    return ERR_SUCCESS;
} catch (const std::bad_alloc&) {
    return ERR_MEM_ALLOC_FAIL;
}

} // namespace

bool Telematics_Imp::isAvailable(Availability& cached, eErr (About::*ask)(bool*))
{
    if (cached.computed)
        return cached.value;
    bool fitted = false;
    if (About* about = GetAbout(); about != nullptr) {
        fitted = (about->*ask)(&fitted) == ERR_SUCCESS && fitted;
        about->Release();
    }
    cached.value = fitted;
    cached.computed = true;
    return fitted;
}

bool Telematics_Imp::isGPRSAvailable()
{
    return isAvailable(gprs_, &About::getIsGPRSMounted);
}

bool Telematics_Imp::isWLANAvailable()
{
    return isAvailable(wlan_, &About::getIsWLANMounted);
}

bool Telematics_Imp::isGPSAvailable()
{
    return isAvailable(gps_, &About::getIsGPSMounted);
}

bool Telematics_Imp::isBTAvailable()
{
    return isAvailable(bt_, &About::getIsBTMounted);
}

eErr Telematics_Imp::getTelematicsAvailable(HXStatus* status)
{
    *status = toStatus(isBTAvailable() || isGPSAvailable() || isWLANAvailable() || isGPRSAvailable());
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getGPRSPowerStatus(HXStatus* status)
{
    if (!isGPRSAvailable())
        return ERR_TELEMATICS_GPRS_NOT_AVAILABLE;
    bool on = false;
    if (const eErr err = expander_.getGPRSPowerStatus(&on); err != ERR_SUCCESS)
        return err;
    *status = toStatus(on);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getGPRSStartUpPowerStatus(HXStatus* status)
{
    return isGPRSAvailable() ? readWish(kGprsKey, status) : ERR_TELEMATICS_GPRS_NOT_AVAILABLE;
}

eErr Telematics_Imp::getWLANPowerStatus(HXStatus* status)
{
    if (!isWLANAvailable())
        return ERR_TELEMATICS_WLAN_NOT_AVAILABLE;
    bool on = false;
    if (const eErr err = expander_.getWLANPowerStatus(&on); err != ERR_SUCCESS)
        return err;
    *status = toStatus(on);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::getWLANStartUpPowerStatus(HXStatus* status)
{
    return isWLANAvailable() ? readWish(kWlanKey, status) : ERR_TELEMATICS_WLAN_NOT_AVAILABLE;
}

eErr Telematics_Imp::getGPSAntennaStatus(HXStatus* status)
{
    if (!isGPSAvailable())
        return ERR_TELEMATICS_GPS_NOT_AVAILABLE;
    bool high = false;
    if (const eErr err = expander_.getXANTSHORTPowerStatus(&high); err != ERR_SUCCESS)
        return err;
    *status = toStatus(high);
    return ERR_SUCCESS;
}

eErr Telematics_Imp::setGPRSPowerStatus(HXStatus status)
{
    return isGPRSAvailable() ? expander_.setGPRSPowerStatus(status == HXStatusEnabled)
                             : ERR_TELEMATICS_GPRS_NOT_AVAILABLE;
}

eErr Telematics_Imp::setGPRSStartUpPowerStatus(HXStatus status)
{
    return isGPRSAvailable() ? storeWish(kGprsKey, status) : ERR_TELEMATICS_GPRS_NOT_AVAILABLE;
}

eErr Telematics_Imp::setWLANPowerStatus(HXStatus status)
{
    return isWLANAvailable() ? expander_.setWLANPowerStatus(status == HXStatusEnabled)
                             : ERR_TELEMATICS_WLAN_NOT_AVAILABLE;
}

eErr Telematics_Imp::setWLANStartUpPowerStatus(HXStatus status)
{
    return isWLANAvailable() ? storeWish(kWlanKey, status) : ERR_TELEMATICS_WLAN_NOT_AVAILABLE;
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
