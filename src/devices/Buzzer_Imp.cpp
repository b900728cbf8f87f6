// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Buzzer_Imp.h"

#include "platform/ControlCodes.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace Halvix {

namespace {

constexpr unsigned short kMinHertz = 700;
constexpr unsigned short kMaxHertz = 10000;
constexpr unsigned short kMaxVolume = 51;

/// On or off, and three unused bytes.
using Trigger = std::array<std::uint8_t, 4>;

/// A negative time counts as 0: as unsigned it would sound for 49 days and lock out every other program.
unsigned long sleepTime(int time)
{
    return static_cast<unsigned long>(std::max(time, 0));
}

} // namespace

eErr Buzzer_Imp::getSetup(_SetupType* s)
{
    return channel_.readThrough({codes::buzzerSetup}, s);
}

eErr Buzzer_Imp::setSetup(_SetupType s)
{
    return channel_.writeUncounted({codes::setBuzzerSetup}, s);
}

eErr Buzzer_Imp::getFrequency(unsigned short* hertz)
{
    _SetupType setup{};
    if (const eErr err = getSetup(&setup); err != ERR_SUCCESS)
        return err;
    *hertz = setup.frequency;
    return ERR_SUCCESS;
}

eErr Buzzer_Imp::getVolume(unsigned short* volume)
{
    _SetupType setup{};
    if (const eErr err = getSetup(&setup); err != ERR_SUCCESS)
        return err;
    *volume = setup.volume;
    return ERR_SUCCESS;
}

eErr Buzzer_Imp::getTrigger(bool* on)
{
    std::uint8_t raw = 0;
    if (const eErr err = channel_.read({codes::buzzerTrigger}, &raw); err != ERR_SUCCESS)
        return err;
    *on = raw != 0;
    return ERR_SUCCESS;
}

eErr Buzzer_Imp::setFrequency(unsigned short hertz)
{
    if (hertz < kMinHertz || hertz > kMaxHertz) // before the device: callers rely on it
        return ERR_INVALID_PARAMETER;
    _SetupType setup{};
    if (const eErr err = getSetup(&setup); err != ERR_SUCCESS)
        return err;
    setup.frequency = hertz;
    return setSetup(setup);
}

eErr Buzzer_Imp::setVolume(unsigned short volume)
{
    if (volume > kMaxVolume) // before the device: callers rely on it
        return ERR_INVALID_PARAMETER;
    _SetupType setup{};
    if (const eErr err = getSetup(&setup); err != ERR_SUCCESS)
        return err;
    setup.volume = volume;
    return setSetup(setup);
}

eErr Buzzer_Imp::setTrigger(bool on)
{
    _SetupType found{};
    if (const eErr err = getSetup(&found); err != ERR_SUCCESS)
        return err;
    const _SetupType repaired{std::clamp(found.frequency, kMinHertz, kMaxHertz), std::min(found.volume, kMaxVolume)};
    if (repaired.frequency != found.frequency || repaired.volume != found.volume)
        if (const eErr err = setSetup(repaired); err != ERR_SUCCESS)
            return err;
    return channel_.writeUncounted({codes::setBuzzerTrigger}, Trigger{on});
}

eErr Buzzer_Imp::beep(int time)
{
    const eErr result = setTrigger(true);
    if (result == ERR_SUCCESS) {
        LinuxWrapper::Sleep(sleepTime(time));
        (void)setTrigger(false); // the beep has sounded; an error here has no consequence
    }
    oneBeep_.signal();
    return result;
}

// Without blocking, another thread releases the lock. If that thread cannot be started, the lock stays taken and every
// later beep on the unit is refused until it is reset. Callers rely on this state.
eErr Buzzer_Imp::buzze(int time, bool blocking) HX_UNCHECKED_LOCKING
{
    if (!oneBeep_.tryWait())
        return ERR_IN_PROGRESS;
    if (blocking)
        return beep(time);
    pendingTime_ = time;
    ++users_;
    const eErr err = LinuxWrapper::startThread(soundPendingBeep, this);
    if (err != ERR_SUCCESS)
        --users_;
    return err;
}

// The caller of buzze has acquired the lock.
void Buzzer_Imp::soundPendingBeep(const void* buzzer) HX_UNCHECKED_LOCKING
{
    auto* self = static_cast<Buzzer_Imp*>(const_cast<void*>(buzzer)); // thread arguments are const
    (void)self->setTrigger(true); // no caller to report to; the time passes regardless
    LinuxWrapper::Sleep(sleepTime(self->pendingTime_));
    (void)self->setTrigger(false);
    self->oneBeep_.signal();
    self->leave();
}

void Buzzer_Imp::leave()
{
    if (--users_ == 0)
        delete this;
}

eErr Buzzer_Imp::Release()
{
    leave();
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Buzzer* GetBuzzer()
{
    return new Halvix::Buzzer_Imp;
}
