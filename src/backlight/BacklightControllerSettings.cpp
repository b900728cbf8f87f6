// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/BacklightControllerParts.h"
#include "backlight/Log.h"
#include "backlight/SettingsKeys.h"
#include "settings/WithSettings.h"

#include <string>

// How the controller reads, repairs and stores its settings.

namespace Halvix {

struct BacklightController::Texts {
    std::string averageWndSize, rejectWndSize, rejectDeltaInLux, k, mode, status, softTransitions;
};

namespace {

const char* oneOrZero(bool value)
{
    return value ? "1" : "0";
}

/// True when the text was a number; else the target stays and the failure is logged.
template <class Target>
bool convert(const std::string& text, Target* target, const char* name)
{
    unsigned long value = 0;
    const eErr err = IniSettings::ConvertStrToLong(&value, text);
    if (err != ERR_SUCCESS) {
        logController("Error %s %d\n", name, err);
        return false;
    }
    *target = static_cast<Target>(value);
    return true;
}

bool convertSlope(const std::string& text, double* k)
{
    const eErr err = IniSettings::ConvertStrToDouble(k, text);
    if (err != ERR_SUCCESS)
        logController("Error s_k %d\n", err);
    return err == ERR_SUCCESS;
}

} // namespace

bool BacklightController::readSettings()
try {
    logController("Read settings\n");
    AblSettings& settings = parts_->settings;
    settings = AblSettings{};
    // The file stays locked until a repair is written, so that a setter cannot write in between and lose its value.
    IniSettings file;
    file.load(LinuxWrapper::GetSettingsFileName());
    bool valid = convertSettings(fetchSettings(file));
    if (!valid)
        valid = repairSettings(file);
    logController("Mode %d\n", settings.mode);
    logController("Execute %d\n", settings.enabled);
    if (!valid)
        settings.enabled = false;
    return valid;
} catch (const std::exception&) {
    parts_->settings.enabled = false;
    return false;
}

BacklightController::Texts BacklightController::fetchSettings(IniSettings& file)
{
    Texts texts;
    texts.averageWndSize = file.get(keys::averageWndSize);
    texts.rejectWndSize = file.get(keys::rejectWndSize);
    texts.rejectDeltaInLux = file.get(keys::rejectDeltaInLux);
    texts.k = file.get(keys::slope);
    texts.mode = file.get(keys::mode);
    texts.status = file.get(keys::status);
    texts.softTransitions = file.get(keys::softTransitions);
    return texts;
}

bool BacklightController::convertSettings(const Texts& texts)
{
    AblSettings& settings = parts_->settings;
    bool valid = convert(texts.mode, &settings.mode, "s_mode");
    valid &= convert(texts.averageWndSize, &settings.averageWndSize, "s_averageWndSize");
    valid &= convert(texts.rejectWndSize, &settings.rejectWndSize, "s_rejectWndSize");
    valid &= convert(texts.rejectDeltaInLux, &settings.rejectDeltaInLux, "s_rejectDeltaInLux");
    valid &= convertSlope(texts.k, &settings.k);
    valid &= convert(texts.status, &settings.enabled, "s_enabled");
    valid &= convert(texts.softTransitions, &settings.bSoftTransitions, "s_bSoftTransitions");
    return valid;
}

bool BacklightController::repairSettings(IniSettings& file)
{
    const AblSettings& settings = parts_->settings;
    const auto mode = static_cast<std::uint32_t>(settings.mode);
    Texts texts;
    if (IniSettings::ConvertDoubleToStr(settings.k, &texts.k) != ERR_SUCCESS ||
        IniSettings::ConvertLongToStr(settings.averageWndSize, &texts.averageWndSize) != ERR_SUCCESS ||
        IniSettings::ConvertLongToStr(settings.rejectWndSize, &texts.rejectWndSize) != ERR_SUCCESS ||
        IniSettings::ConvertLongToStr(settings.rejectDeltaInLux, &texts.rejectDeltaInLux) != ERR_SUCCESS ||
        IniSettings::ConvertLongToStr(mode, &texts.mode) != ERR_SUCCESS)
        return false;
    file.reload(); // without the empty entries that the look-ups added
    file.set({{keys::slope, texts.k},
              {keys::averageWndSize, texts.averageWndSize},
              {keys::rejectWndSize, texts.rejectWndSize},
              {keys::rejectDeltaInLux, texts.rejectDeltaInLux},
              {keys::mode, texts.mode},
              {keys::softTransitions, oneOrZero(settings.bSoftTransitions)},
              {keys::status, oneOrZero(settings.enabled)}});
    return true;
}

eErr BacklightController::updateK(double k)
try {
    std::string text;
    if (IniSettings::ConvertDoubleToStr(k, &text) != ERR_SUCCESS) {
        logController("Error BacklightController::updateK failed %f\n", k);
        return ERR_SUCCESS;
    }
    return withSettings([&](IniSettings& settings) {
        settings.set(keys::slope, text);
        return ERR_SUCCESS;
    });
} catch (const std::exception&) {
    return ERR_MEM_ALLOC_FAIL;
}

} // namespace Halvix
