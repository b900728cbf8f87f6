// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Config.h"

#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Objects.h"
#include "tools/hxaux/VideoChannels.h"

namespace hxaux {

namespace {

using Halvix::Config;
using Halvix::eErr;
using Halvix::HXStatus;

// One setting: how it is shown and how it is changed. A setter reads the value named "value".
struct Setting {
    const char* name;
    eErr (*show)(Call& call, Config& config, const char* name);
    eErr (*change)(Call& call, Config& config);
};

template <typename Number, eErr (Config::*Get)(Number*)>
eErr showNumber(Call& call, Config& config, const char* name)
{
    Number value{};
    const eErr err = (config.*Get)(&value);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, static_cast<long long>(value));
    return err;
}

// A load's word may differ from 0 and 1; it is then shown as a number.
template <eErr (Config::*Get)(HXStatus*)>
eErr showStatus(Call& call, Config& config, const char* name)
{
    auto status = Halvix::HXStatusDisabled;
    const eErr err = (config.*Get)(&status);
    if (err != Halvix::ERR_SUCCESS)
        return err;
    const bool isFlag = status == Halvix::HXStatusDisabled || status == Halvix::HXStatusEnabled;
    call.print(name, isFlag ? Value(status == Halvix::HXStatusEnabled) : Value(static_cast<int>(status)));
    return err;
}

template <typename Number, eErr (Config::*Set)(Number)>
eErr change(Call& call, Config& config)
{
    return (config.*Set)(call.as<Number>("value"));
}

eErr showVideo(Call& call, Config& config, const char* name)
{
    unsigned char channels = 0;
    const eErr err = config.getVideoStartupPowerConfig(&channels);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, listOfChannels(channels));
    return err;
}

eErr changeVideo(Call& call, Config& config)
{
    return config.setVideoStartupPowerConfig(channelsOf(call, "value"));
}

eErr showVoltage(Call& call, Config& config, const char* name)
{
    double volts = 0;
    const eErr err = config.getStartupVoltageConfig(&volts);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, Value(volts, 2), "V");
    return err;
}

eErr changeVoltage(Call& call, Config& config)
{
    return config.setStartupVoltageConfig(call.real("value"));
}

eErr showHeating(Call& call, Config& config, const char* name)
{
    short celsius = 0;
    const eErr err = config.getHeatingTempLimit(&celsius);
    if (err == Halvix::ERR_SUCCESS)
        call.print(name, celsius, "degrees C");
    return err;
}

using Halvix::PowerAction;
using Halvix::TriggerConf;

constexpr Setting kTrigger{"trigger", showNumber<TriggerConf, &Config::getStartupTriggerConfig>,
                           change<TriggerConf, &Config::setStartupTriggerConfig>};
constexpr Setting kShortPress{"short-press", showNumber<PowerAction, &Config::getShortButtonPressAction>,
                              change<PowerAction, &Config::setShortButtonPressAction>};
constexpr Setting kLongPress{"long-press", showNumber<PowerAction, &Config::getLongButtonPressAction>,
                             change<PowerAction, &Config::setLongButtonPressAction>};
constexpr Setting kSignal{"signal", showNumber<PowerAction, &Config::getOnOffSigAction>,
                          change<PowerAction, &Config::setOnOffSigAction>};
constexpr Setting kButtonTime{"button-time", showNumber<unsigned short, &Config::getFrontBtnTrigTime>,
                              change<unsigned short, &Config::setFrontBtnTrigTime>};
constexpr Setting kSignalTime{"signal-time", showNumber<unsigned int, &Config::getExtOnOffSigTrigTime>,
                              change<unsigned int, &Config::setExtOnOffSigTrigTime>};
constexpr Setting kSuspendTime{"suspend-time", showNumber<unsigned short, &Config::getSuspendMaxTime>,
                               change<unsigned short, &Config::setSuspendMaxTime>};
constexpr Setting kCan{"can", showStatus<&Config::getCanStartupPowerConfig>,
                       change<HXStatus, &Config::setCanStartupPowerConfig>};
constexpr Setting kVideo{"video", showVideo, changeVideo};
constexpr Setting kFan{"fan", showStatus<&Config::getExtFanStartupPowerConfig>,
                       change<HXStatus, &Config::setExtFanStartupPowerConfig>};
constexpr Setting kVoltage{"voltage", showVoltage, changeVoltage};
constexpr Setting kHeating{"heating", showHeating, change<short, &Config::setHeatingTempLimit>};
constexpr Setting kPowerOn{"power-on", showStatus<&Config::getPowerOnStartup>,
                           change<HXStatus, &Config::setPowerOnStartup>};

constexpr const Setting* kSettings[] = {&kTrigger,    &kShortPress,  &kLongPress, &kSignal, &kButtonTime,
                                        &kSignalTime, &kSuspendTime, &kCan,       &kVideo,  &kFan,
                                        &kVoltage,    &kHeating,     &kPowerOn};

void showConfig(Call& call)
{
    const Interface<Config> config(GetConfig());
    for (const Setting* setting : kSettings)
        (void)call.attempt(setting->name, setting->show(call, *config, setting->name));
}

template <const Setting& Which>
void showOrChange(Call& call)
{
    const Interface<Config> config(GetConfig());
    call.check(call.has("value") ? Which.change(call, *config) : Which.show(call, *config, Which.name));
}

Argument value(double least, double most, std::string_view help)
{
    return integer("value", least, most, "", help).optional();
}

constexpr std::string_view kFirmware = "The supervisor's firmware defines what each value does.";
constexpr std::string_view kUnit = "The time is in the supervisor's own unit.";
constexpr std::string_view kKept = "Kept by the supervisor over restarts.";

} // namespace

const Object objects::Config{
    "config",
    "start-up and power behaviour that the supervisor keeps",
    {
        {.name = "",
         .help = "Shows every setting.",
         .example = "hxaux config",
         .run = showConfig,
         .details = "A setting that cannot be read is named on standard error; the others are still shown."},
        {.name = "trigger",
         .help = "Shows or sets which events may start the unit.",
         .example = "hxaux config trigger 3",
         .run = showOrChange<kTrigger>,
         .values = {value(1, 3, "1 to 3; shown when left out")},
         .details = kFirmware},
        {.name = "short-press",
         .help = "Shows or sets what a short press of the front button does.",
         .example = "hxaux config short-press 1",
         .run = showOrChange<kShortPress>,
         .values = {value(0, 2, "0 to 2; shown when left out")},
         .details = kFirmware},
        {.name = "long-press",
         .help = "Shows or sets what a long press of the front button does.",
         .example = "hxaux config long-press 2",
         .run = showOrChange<kLongPress>,
         .values = {value(0, 2, "0 to 2; shown when left out")},
         .details = kFirmware},
        {.name = "signal",
         .help = "Shows or sets what the external on/off signal does.",
         .example = "hxaux config signal 0",
         .run = showOrChange<kSignal>,
         .values = {value(0, 2, "0 to 2; shown when left out")},
         .details = kFirmware},
        {.name = "button-time",
         .help = "Shows or sets how long the front button must be held to count.",
         .example = "hxaux config button-time 2000",
         .run = showOrChange<kButtonTime>,
         .values = {value(0, 65535, "shown when left out")},
         .details = kUnit},
        {.name = "signal-time",
         .help = "Shows or sets how long the external on/off signal must last to count.",
         .example = "hxaux config signal-time 500",
         .run = showOrChange<kSignalTime>,
         .values = {value(0, 4294967295.0, "shown when left out")},
         .details = kUnit},
        {.name = "suspend-time",
         .help = "Shows or sets how long the unit may stay suspended.",
         .example = "hxaux config suspend-time 60",
         .run = showOrChange<kSuspendTime>,
         .values = {value(0, 65535, "shown when left out")},
         .details = kUnit},
        {.name = "can",
         .help = "Shows or sets whether the CAN interfaces are powered at start-up.",
         .example = "hxaux config can on",
         .run = showOrChange<kCan>,
         .values = {choice("value", kOnOff, "shown when left out").optional()},
         .details = kKept},
        {.name = "video",
         .help = "Shows or sets which video channels are powered at start-up.",
         .example = "hxaux config video 1,2",
         .run = showOrChange<kVideo>,
         .values = {text("value", "numbers of channels, 'all' or 'none'; shown when left out").optional()},
         .details = kKept},
        {.name = "fan",
         .help = "Shows or sets whether the external fan is powered at start-up.",
         .example = "hxaux config fan off",
         .run = showOrChange<kFan>,
         .values = {choice("value", kOnOff, "shown when left out").optional()},
         .details = kKept},
        {.name = "voltage",
         .help = "Shows or sets the supply voltage that the unit needs to start.",
         .example = "hxaux config voltage 11.5",
         .run = showOrChange<kVoltage>,
         .values = {real("value", 9, 28, "V", "shown when left out").optional()},
         .details = "Stored in steps of 9.7 mV, cut down."},
        {.name = "heating",
         .help = "Shows or sets the temperature below which the unit is heated before it starts.",
         .example = "hxaux config heating -10",
         .run = showOrChange<kHeating>,
         .values = {integer("value", -25, 5, "degrees C", "shown when left out").optional()},
         .details = kKept},
        {.name = "power-on",
         .help = "Shows or sets whether the unit starts as soon as it gets power.",
         .example = "hxaux config power-on on",
         .run = showOrChange<kPowerOn>,
         .values = {choice("value", kOnOff, "shown when left out").optional()},
         .details = kKept},
    }};

} // namespace hxaux
