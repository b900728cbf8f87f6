// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Config_Imp.h"

#include "hx-aux/version-gates.h"
#include "platform/ControlCodes.h"
#include "platform/X86Convert.h"

#include <cstdint>

namespace Halvix {

namespace {

using Word = std::uint16_t;

/// A time, after a first word that belongs to something else.
struct TimeBlock {
    Word first;
    Word time;
};
static_assert(sizeof(TimeBlock) == 4);

/// The supervisor expects a 1 here when the suspend time is set.
constexpr Word kSuspendMark = 1;

constexpr double kMinVolts = 9.0;
constexpr double kMaxVolts = 28.0;
constexpr short kMinCelsius = -25;
constexpr short kMaxCelsius = 5;
constexpr short kCelsiusOffset = 56; // the supervisor counts from -56 degrees
constexpr unsigned char kAllChannels = 15;

bool knowsActions()
{
    return DoesSystemHaveAtLeastSSVersion(1, 0, 0, 0);
}

bool knowsHeating()
{
    return DoesSystemHaveAtLeastSSVersion(0, 9, 0, 0);
}

bool knowsPowerOn()
{
    return DoesSystemHaveAtLeastSSVersion(1, 0, 3, 0);
}

/// The first check of every operation with a version: 1, 25.
eErr ready(const DeviceChannel& channel, bool (*supported)())
{
    if (const eErr err = channel.opened(); err != ERR_SUCCESS)
        return err;
    return supported() ? ERR_SUCCESS : ERR_NEWER_SS_VERSION_REQUIRED;
}

/// A setting with a known set of values.
template <class Setting>
struct Choice {
    Read<Word> read;
    Write<Word> write;
    Word least;
    Word largest;

    [[nodiscard]] bool holds(Setting value) const
    {
        return value >= static_cast<Setting>(least) && value <= static_cast<Setting>(largest);
    }
};

constexpr Choice<TriggerConf> kStartupTrigger{{codes::confStartupTrigger}, {codes::setConfStartupTrigger}, 1, 3};
constexpr Choice<PowerAction> kShortPress{{codes::confShortButtonPress}, {codes::setConfShortButtonPress}, 0, 2};
constexpr Choice<PowerAction> kLongPress{{codes::confLongButtonPress}, {codes::setConfLongButtonPress}, 0, 2};
constexpr Choice<PowerAction> kOnOffSignal{{codes::confOnOffSignal}, {codes::setConfOnOffSignal}, 0, 2};

template <class Setting>
eErr get(const DeviceChannel& channel, const Choice<Setting>& choice, Setting* value)
{
    if (const eErr err = ready(channel, knowsActions); err != ERR_SUCCESS)
        return err;
    Word word = 0;
    if (const eErr err = channel.read(choice.read, &word); err != ERR_SUCCESS)
        return err;
    const auto setting = static_cast<Setting>(word);
    if (!choice.holds(setting))
        return ERR_INVALID_DATA;
    *value = setting;
    return ERR_SUCCESS;
}

template <class Setting>
eErr set(const DeviceChannel& channel, const Choice<Setting>& choice, Setting value)
{
    if (const eErr err = ready(channel, knowsActions); err != ERR_SUCCESS)
        return err;
    if (!choice.holds(value))
        return ERR_INVALID_DATA;
    return channel.write(choice.write, static_cast<Word>(value));
}

/// On/off settings whose word is passed on unchecked in both directions.
eErr getUnchecked(const DeviceChannel& channel, Read<Word> request, HXStatus* status)
{
    Word word = 0;
    if (const eErr err = channel.read(request, &word); err != ERR_SUCCESS)
        return err;
    *status = static_cast<HXStatus>(word);
    return ERR_SUCCESS;
}

eErr getTime(const DeviceChannel& channel, Read<TimeBlock> request, unsigned short* time)
{
    TimeBlock block{};
    if (const eErr err = channel.read(request, &block); err != ERR_SUCCESS)
        return err;
    *time = block.time;
    return ERR_SUCCESS;
}

} // namespace

eErr Config_Imp::getStartupTriggerConfig(TriggerConf* trigger)
{
    return get(channel_, kStartupTrigger, trigger);
}

eErr Config_Imp::getShortButtonPressAction(PowerAction* action)
{
    return get(channel_, kShortPress, action);
}

eErr Config_Imp::getLongButtonPressAction(PowerAction* action)
{
    return get(channel_, kLongPress, action);
}

eErr Config_Imp::getOnOffSigAction(PowerAction* action)
{
    return get(channel_, kOnOffSignal, action);
}

eErr Config_Imp::getFrontBtnTrigTime(unsigned short* time)
{
    return getTime(channel_, {codes::confFrontBtnTrigTime}, time);
}

eErr Config_Imp::getExtOnOffSigTrigTime(unsigned int* time)
{
    return channel_.read({codes::confExtOnOffSigTrigTime}, time);
}

eErr Config_Imp::getSuspendMaxTime(unsigned short* time)
{
    return getTime(channel_, {codes::confSuspendMaxTime}, time);
}

eErr Config_Imp::getCanStartupPowerConfig(HXStatus* status)
{
    return getUnchecked(channel_, {codes::confCanStartup}, status);
}

eErr Config_Imp::getVideoStartupPowerConfig(unsigned char* channels)
{
    Word mask = 0;
    if (const eErr err = channel_.read({codes::confVideoStartup}, &mask); err != ERR_SUCCESS)
        return err;
    *channels = static_cast<unsigned char>(mask);
    return ERR_SUCCESS;
}

eErr Config_Imp::getExtFanStartupPowerConfig(HXStatus* status)
{
    return getUnchecked(channel_, {codes::confExtFanStartup}, status);
}

eErr Config_Imp::getStartupVoltageConfig(double* volts)
{
    Word raw = 0;
    if (const eErr err = channel_.read({codes::confStartupVoltage}, &raw); err != ERR_SUCCESS)
        return err;
    // 9.0 is stored as slightly less; the lowest setting must read back as it was set.
    const double measured = raw * 33.0 * 12.0 / 40960.0;
    *volts = measured < kMinVolts ? kMinVolts : measured;
    return ERR_SUCCESS;
}

eErr Config_Imp::getHeatingTempLimit(short* celsius)
{
    if (const eErr err = ready(channel_, knowsHeating); err != ERR_SUCCESS)
        return err;
    Word raw = 0;
    if (const eErr err = channel_.read({codes::confHeatingTempLimit}, &raw); err != ERR_SUCCESS)
        return err;
    if (raw < kMinCelsius + kCelsiusOffset || raw > kMaxCelsius + kCelsiusOffset)
        return ERR_INVALID_DATA;
    *celsius = static_cast<short>(raw - kCelsiusOffset);
    return ERR_SUCCESS;
}

eErr Config_Imp::getPowerOnStartup(HXStatus* status)
{
    if (const eErr err = ready(channel_, knowsPowerOn); err != ERR_SUCCESS)
        return err;
    Word word = 0; // the driver fills the low byte only
    if (const eErr err = channel_.read({codes::confPowerOnStartup}, &word); err != ERR_SUCCESS)
        return err;
    *status = word != 0 ? HXStatusEnabled : HXStatusDisabled;
    return ERR_SUCCESS;
}

eErr Config_Imp::setStartupTriggerConfig(TriggerConf trigger)
{
    return set(channel_, kStartupTrigger, trigger);
}

eErr Config_Imp::setShortButtonPressAction(PowerAction action)
{
    return set(channel_, kShortPress, action);
}

eErr Config_Imp::setLongButtonPressAction(PowerAction action)
{
    return set(channel_, kLongPress, action);
}

eErr Config_Imp::setOnOffSigAction(PowerAction action)
{
    return set(channel_, kOnOffSignal, action);
}

eErr Config_Imp::setFrontBtnTrigTime(unsigned short time)
{
    TimeBlock block{};
    if (const eErr err = channel_.read({codes::confFrontBtnTrigTime}, &block); err != ERR_SUCCESS)
        return err;
    block.time = time; // the first word is written back unchanged
    return channel_.write({codes::setConfFrontBtnTrigTime}, block);
}

eErr Config_Imp::setExtOnOffSigTrigTime(unsigned int time)
{
    return channel_.write({codes::setConfExtOnOffSigTrigTime}, time);
}

eErr Config_Imp::setSuspendMaxTime(unsigned short time)
{
    return channel_.write({codes::setConfSuspendMaxTime}, TimeBlock{kSuspendMark, time});
}

eErr Config_Imp::setCanStartupPowerConfig(HXStatus status)
{
    return channel_.write({codes::setConfCanStartup}, static_cast<Word>(status));
}

eErr Config_Imp::setVideoStartupPowerConfig(unsigned char channels)
{
    if (const eErr err = channel_.opened(); err != ERR_SUCCESS)
        return err;
    if (channels > kAllChannels)
        return ERR_INVALID_DATA;
    return channel_.write({codes::setConfVideoStartup}, Word{channels});
}

eErr Config_Imp::setExtFanStartupPowerConfig(HXStatus status)
{
    return channel_.write({codes::setConfExtFanStartup}, static_cast<Word>(status));
}

eErr Config_Imp::setStartupVoltageConfig(double volts)
{
    if (const eErr err = channel_.opened(); err != ERR_SUCCESS)
        return err;
    if (volts < kMinVolts || volts > kMaxVolts) // a NaN passes; callers rely on both comparisons
        return ERR_INVALID_DATA;
    return channel_.write({codes::setConfStartupVoltage}, x86TruncateToWord(volts * 40960.0 / 396.0));
}

eErr Config_Imp::setHeatingTempLimit(short celsius)
{
    if (const eErr err = ready(channel_, knowsHeating); err != ERR_SUCCESS)
        return err;
    if (celsius < kMinCelsius || celsius > kMaxCelsius)
        return ERR_INVALID_DATA;
    return channel_.write({codes::setConfHeatingTempLimit}, static_cast<Word>(celsius + kCelsiusOffset));
}

eErr Config_Imp::setPowerOnStartup(HXStatus status)
{
    if (const eErr err = ready(channel_, knowsPowerOn); err != ERR_SUCCESS)
        return err;
    return channel_.write({codes::setConfPowerOnStartup}, static_cast<Word>(status));
}

eErr Config_Imp::Release()
{
    releaseInstance();
    return ERR_SUCCESS;
}

} // namespace Halvix

Halvix::Config* GetConfig()
{
    return Halvix::Config_Imp::getInstance();
}
