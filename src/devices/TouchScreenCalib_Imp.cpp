// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/TouchScreenCalib_Imp.h"

#include "devices/FrontRegister.h"

#include <algorithm>
#include <array>

namespace Halvix {

namespace {

constexpr Read<std::uint8_t> kReadMode{codes::calibrationMode};
constexpr Write<std::uint8_t> kWriteMode{codes::setCalibrationMode};

constexpr std::uint8_t kPointRegister = 1; // written: the point to take; read back: high byte, the point taken

struct Mode {
    CalibrationModeSettings mode;
    std::uint8_t raw;
    unsigned char highestPoint;
};

constexpr std::array<Mode, 4> kModes{{
    {CalibrationMode5Points, 1, 5},
    {CalibrationMode5PointsExtended, 6, 5},
    {CalibrationMode9PointsExtended, 10, 9},
    {CalibrationMode13PointsExtended, 14, 13},
}};

const Mode* find(CalibrationModeSettings mode)
{
    const auto* found = std::ranges::find(kModes, mode, &Mode::mode);
    return found == kModes.end() ? nullptr : found;
}

// Parameters 2 and 3 are crossed; applications rely on the numbering.
constexpr std::array<std::uint8_t, 6> kParameterRegisters{13, 14, 16, 15, 17, 18};

/// Null for a parameter that does not exist, also for a negative one.
const std::uint8_t* findRegister(CalibrationConfigParam parameter)
{
    const auto index = static_cast<std::uint32_t>(parameter);
    return index < kParameterRegisters.size() ? &kParameterRegisters[index] : nullptr;
}

} // namespace

eErr TouchScreenCalib_Imp::SetMode(CalibrationModeSettings mode)
{
    const Mode* wanted = find(mode);
    if (wanted == nullptr)
        return ERR_INVALID_DATA;
    return channel_.writeUncounted(kWriteMode, wanted->raw);
}

eErr TouchScreenCalib_Imp::GetMode(CalibrationModeSettings* mode)
{
    std::uint8_t raw = 0;
    if (const eErr err = channel_.read(kReadMode, &raw); err != ERR_SUCCESS)
        return err;
    const auto* found = std::ranges::find(kModes, raw, &Mode::raw);
    *mode = found == kModes.end() ? CalibrationModeNone : found->mode;
    return ERR_SUCCESS;
}

eErr TouchScreenCalib_Imp::SetCalibrationPoint(unsigned char point)
{
    CalibrationModeSettings mode = CalibrationModeNone;
    if (const eErr err = GetMode(&mode); err != ERR_SUCCESS) // through the slot: a derived class may override it
        return err;
    const Mode* running = find(mode);
    if (running == nullptr)
        return ERR_NOT_RUNNING;
    if (point > running->highestPoint)
        return ERR_INVALID_DATA;
    return channel_.writeUncounted(kWriteFrontRegister, {kPointRegister, point});
}

eErr TouchScreenCalib_Imp::CheckCalibrationPointFinished(bool* finished, unsigned char point)
{
    FrontRegister answer{};
    if (const eErr err = channel_.query(kReadFrontRegister, kPointRegister, &answer); err != ERR_SUCCESS)
        return err;
    *finished = answer.value >> 8 == point;
    return ERR_SUCCESS;
}

eErr TouchScreenCalib_Imp::GetConfigParam(CalibrationConfigParam parameter, unsigned short* value)
{
    const std::uint8_t* number = findRegister(parameter);
    if (number == nullptr)
        return ERR_INVALID_DATA;
    FrontRegister answer{};
    if (const eErr err = channel_.query(kReadFrontRegister, *number, &answer); err != ERR_SUCCESS)
        return err;
    *value = answer.value;
    return ERR_SUCCESS;
}

eErr TouchScreenCalib_Imp::SetConfigParam(CalibrationConfigParam parameter, unsigned short value)
{
    const std::uint8_t* number = findRegister(parameter);
    if (number == nullptr)
        return ERR_INVALID_DATA;
    return channel_.writeUncounted(kWriteFrontRegister, {*number, value});
}

eErr TouchScreenCalib_Imp::Release()
{
    delete this;
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::TouchScreenCalib* GetTouchScreenCalib()
{
    return new Halvix::TouchScreenCalib_Imp;
}
