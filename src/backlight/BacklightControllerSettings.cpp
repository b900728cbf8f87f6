// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/BacklightControllerParts.h"
#include "backlight/Log.h"
#include "backlight/SettingsKeys.h"
#include "settings/WithSettings.h"

#include <string>
#include <utility>
#include <vector>

// How the controller reads, repairs and stores its settings.

namespace Halvix {

/// In the order in which the settings are looked up.
struct BacklightController::Texts {
    std::string averageWndSize, rejectWndSize, rejectDeltaInLux, k, mode, status, softTransitions;
};

namespace {

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
    return {file.get(keys::averageWndSize), file.get(keys::rejectWndSize), file.get(keys::rejectDeltaInLux),
            file.get(keys::slope),          file.get(keys::mode),          file.get(keys::status),
            file.get(keys::softTransitions)};
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
    std::vector<IniSettings::Setting> changes{{keys::slope, {}}};
    const auto add = [&](const char* key, std::uint32_t number) {
        changes.push_back({key, {}});
        return IniSettings::ConvertLongToStr(number, &changes.back().value) == ERR_SUCCESS;
    };
    if (IniSettings::ConvertDoubleToStr(settings.k, &changes.back().value) != ERR_SUCCESS ||
        !add(keys::averageWndSize, settings.averageWndSize) || !add(keys::rejectWndSize, settings.rejectWndSize) ||
        !add(keys::rejectDeltaInLux, settings.rejectDeltaInLux) ||
        !add(keys::mode, static_cast<std::uint32_t>(settings.mode)) ||
        !add(keys::softTransitions, settings.bSoftTransitions) || !add(keys::status, settings.enabled))
        return false;
    file.reload(); // without the empty entries that the look-ups added
    file.set(std::move(changes));
    return true;
}

eErr BacklightController::updateK(double k)
try {
    std::string text;
    if (IniSettings::ConvertDoubleToStr(k, &text) != ERR_SUCCESS) {
        logController("Error BacklightController::updateK failed %f\n", k);
        return ERR_SUCCESS;
    }
    return storeSetting(keys::slope, text.c_str());
} catch (const std::exception&) {
    return ERR_MEM_ALLOC_FAIL;
}

} // namespace Halvix
