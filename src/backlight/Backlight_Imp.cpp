// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Backlight_Imp.h"

#include "backlight/SettingsKeys.h"
#include "settings/WithSettings.h"

#include <utility>

namespace Halvix {

namespace {

constexpr int kLedDimmingChanged = 132; // command of the service daemon

eErr number(const std::string& text, unsigned long* value)
{
    return IniSettings::ConvertStrToLong(value, text);
}

const char* oneOrZero(bool value)
{
    return value ? "1" : "0";
}

} // namespace

eErr Backlight_Imp::setAndNotify(const char* key, const char* value)
{
    const eErr err = storeSetting(key, value);
    if (err == ERR_SUCCESS)
        newSettings_.signal();
    return err;
}

eErr Backlight_Imp::startAutomaticBL()
{
    return setAndNotify(keys::status, "1");
}

eErr Backlight_Imp::stopAutomaticBL()
{
    return setAndNotify(keys::status, "0");
}

eErr Backlight_Imp::setAutomaticBLParams(bool softTransitions)
{
    return setAndNotify(keys::softTransitions, oneOrZero(softTransitions));
}

eErr Backlight_Imp::getAutomaticBLStatus(unsigned char* enabled)
{
    return withSettings([&](IniSettings& settings) {
        unsigned long value = 0;
        const eErr err = number(settings.get(keys::status), &value);
        *enabled = err == ERR_SUCCESS && value != 0 ? 1 : 0; // an unreadable setting is reported as off
        return err;
    });
}

eErr Backlight_Imp::getAutomaticBLParams(bool* softTransitions, double* k)
{
    return withSettings([&](IniSettings& settings) {
        const std::string soft = settings.get(keys::softTransitions);
        const std::string slope = settings.get(keys::slope);
        unsigned long value = 0;
        if (const eErr err = number(soft, &value); err != ERR_SUCCESS)
            return err;
        *softTransitions = value != 0; // written also when the slope is unreadable; callers rely on it
        return IniSettings::ConvertStrToDouble(k, slope);
    });
}

eErr Backlight_Imp::setAutomaticBLFilter(unsigned long averageWndSize, unsigned long rejectWndSize,
                                         unsigned long rejectDeltaInLux, LightSensorSamplingMode mode)
try {
    std::vector<IniSettings::Setting> changes{
        {keys::averageWndSize, {}}, {keys::rejectWndSize, {}}, {keys::rejectDeltaInLux, {}}, {keys::mode, {}}};
    const unsigned long values[] = {averageWndSize, rejectWndSize, rejectDeltaInLux, static_cast<unsigned int>(mode)};
    for (std::size_t i = 0; i < std::size(values); ++i)
        if (const eErr err = IniSettings::ConvertLongToStr(values[i], &changes[i].value); err != ERR_SUCCESS)
            return err;
    const eErr err = withSettings([&](IniSettings& settings) {
        settings.set(std::move(changes));
        return ERR_SUCCESS;
    });
    if (err == ERR_SUCCESS)
        newSettings_.signal();
    return err;
} catch (const std::exception&) {
    return ERR_MEM_ALLOC_FAIL;
}

eErr Backlight_Imp::getAutomaticBLFilter(unsigned long* averageWndSize, unsigned long* rejectWndSize,
                                         unsigned long* rejectDeltaInLux, LightSensorSamplingMode* mode)
{
    return withSettings([&](IniSettings& settings) {
        unsigned long modeNumber = 0;
        if (const eErr err = number(settings.get(keys::mode), &modeNumber); err != ERR_SUCCESS)
            return err;
        *mode = static_cast<LightSensorSamplingMode>(modeNumber);
        const std::pair<const char*, unsigned long*> windows[] = {{keys::averageWndSize, averageWndSize},
                                                                  {keys::rejectWndSize, rejectWndSize},
                                                                  {keys::rejectDeltaInLux, rejectDeltaInLux}};
        for (const auto& [key, output] : windows)
            if (const eErr err = number(settings.get(key), output); err != ERR_SUCCESS)
                return err;
        return ERR_SUCCESS;
    });
}

eErr Backlight_Imp::getLedDimming(HXStatus* status)
{
    return withSettings([&](IniSettings& settings) {
        const std::string text = settings.get(keys::ledDimming);
        unsigned long value = text.empty() ? 1 : 0; // on by default
        (void)number(text, &value);                 // a text that is not a number reads as off
        *status = value == 1 ? HXStatusEnabled : HXStatusDisabled;
        return ERR_SUCCESS;
    });
}

eErr Backlight_Imp::setLedDimming(HXStatus status)
{
    if (const eErr err = storeSetting(keys::ledDimming, oneOrZero(status == HXStatusEnabled)); err != ERR_SUCCESS)
        return err;
    return LinuxWrapper::ControlDaemon(kLedDimmingChanged) == ERR_SUCCESS ? ERR_SUCCESS : ERR_COMMAND_FAILED;
}

eErr Backlight_Imp::Release()
{
    releaseInstance();
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Backlight* GetBacklight()
{
    return Halvix::Backlight_Imp::getInstance();
}
