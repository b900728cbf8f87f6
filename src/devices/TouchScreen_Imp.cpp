// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/TouchScreen_Imp.h"

#include "devices/FrontRegister.h"
#include "hx-aux/version-gates.h"

#include <array>

namespace Halvix {

namespace {

constexpr Read<std::uint8_t> kReadMode{codes::touchMode};
constexpr Write<std::uint8_t> kWriteMode{codes::setTouchMode};
constexpr Read<std::uint16_t> kReadRightClickTime{codes::mouseRightClickTime};
constexpr Write<std::uint16_t> kWriteRightClickTime{codes::setMouseRightClickTime};

constexpr std::uint16_t kRightClickTimePreset = 999;
constexpr std::uint8_t kModeMask = 3;

enum class Kind { Number, Switch };

struct AdvancedSetting {
    std::uint8_t number;   // of the controller's register
    std::uint16_t highest; // value that can be set
    unsigned shift;        // the register holds the value shifted left by so many bits
    Kind kind = Kind::Number;
};

constexpr std::array<AdvancedSetting, 12> kAdvancedSettings{{
    {4, 65535, 0},
    {5, 4095, 0},
    {6, 4095, 0},
    {7, 16383, 2},
    {8, 16383, 2},
    {9, 16383, 2},
    {11, 16383, 2}, // this one and the next are crossed; applications rely on the numbering
    {10, 32767, 0},
    {12, 65535, 0, Kind::Switch},
    {13, 32767, 0},
    {14, 65535, 0},
    {19, 65535, 0},
}};

/// Null for a parameter that does not exist, also for a negative one.
const AdvancedSetting* find(TSAdvancedSettingsParameter parameter)
{
    const auto index = static_cast<std::uint32_t>(parameter);
    return index < kAdvancedSettings.size() ? &kAdvancedSettings[index] : nullptr;
}

bool frontHasModes()
{
    return DoesSystemHaveAtLeastFrontVersion(0, 5, 0, 0);
}

bool frontHas(TSAdvancedSettingsParameter parameter)
{
    return parameter == TSAdvancedSetting0 ? frontHasModes() : DoesSystemHaveAtLeastFrontVersion(1, 0, 0, 0);
}

std::uint16_t toRegister(const AdvancedSetting& setting, std::uint16_t value)
{
    if (setting.kind == Kind::Switch)
        return value != 0 ? 1 : 0;
    return static_cast<std::uint16_t>(value << setting.shift);
}

} // namespace

eErr TouchScreen_Imp::ready() const
{
    if (!channel_.isOpen())
        return ERR_OPEN_FAILED;
    return frontHasModes() ? ERR_SUCCESS : ERR_NEWER_FRONT_VERSION_REQUIRED;
}

eErr TouchScreen_Imp::getMode(TouchScreenModeSettings* mode)
{
    if (const eErr err = ready(); err != ERR_SUCCESS)
        return err;
    std::uint8_t byte = 0;
    if (const eErr err = channel_.read(kReadMode, &byte); err != ERR_SUCCESS)
        return err;
    if (byte > kModeMask)
        return ERR_INVALID_DATA;
    *mode = static_cast<TouchScreenModeSettings>(byte);
    return ERR_SUCCESS;
}

eErr TouchScreen_Imp::getMouseRightClickTime(unsigned short* time)
{
    if (const eErr err = ready(); err != ERR_SUCCESS)
        return err;
    return channel_.read(kReadRightClickTime, time, kRightClickTimePreset);
}

eErr TouchScreen_Imp::setMode(TouchScreenModeSettings mode)
{
    if (const eErr err = ready(); err != ERR_SUCCESS)
        return err;
    return channel_.write(kWriteMode, static_cast<std::uint8_t>(mode & kModeMask)); // any value: callers rely on it
}

eErr TouchScreen_Imp::setMouseRightClickTime(unsigned short time)
{
    if (const eErr err = ready(); err != ERR_SUCCESS)
        return err;
    return channel_.write(kWriteRightClickTime, time);
}

eErr TouchScreen_Imp::setAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short value)
{
    if (!frontHas(parameter))
        return ERR_NEWER_FRONT_VERSION_REQUIRED;
    const AdvancedSetting* setting = find(parameter);
    if (setting == nullptr || value > setting->highest)
        return ERR_INVALID_DATA;
    return channel_.writeUncounted(kWriteFrontRegister, {setting->number, toRegister(*setting, value)});
}

eErr TouchScreen_Imp::getAdvancedSetting(TSAdvancedSettingsParameter parameter, unsigned short* value)
{
    if (!frontHas(parameter))
        return ERR_NEWER_FRONT_VERSION_REQUIRED;
    const AdvancedSetting* setting = find(parameter);
    if (setting == nullptr)
        return ERR_INVALID_DATA;
    FrontRegister answer{};
    if (const eErr err = channel_.query(kReadFrontRegister, setting->number, &answer); err != ERR_SUCCESS)
        return err;
    *value = static_cast<unsigned short>(answer.value >> setting->shift);
    return ERR_SUCCESS;
}

eErr TouchScreen_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::TouchScreen* GetTouchScreen()
{
    return new Halvix::TouchScreen_Imp;
}
