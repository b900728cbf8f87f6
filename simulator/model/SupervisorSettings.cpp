// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/SupervisorSettings.h"

namespace hxsim {

namespace {

struct Setting {
    SupervisorSettings::Number number;
    const char* name;
    std::uint16_t healthy;
    const char* help;
    RegisterRange range{};
};

using S = SupervisorSettings;

constexpr RegisterRange kCounts{0, 4095}; // the converter has 12 bits
constexpr RegisterRange kHeat{31, 61};
constexpr RegisterRange kActions{0, 2};
constexpr RegisterRange kStarts{1, 3};

constexpr Setting kSettings[] = {
    {S::ButtonDebounce, "config.button-debounce", 50, "ms that the front button is ignored after a change"},
    {S::ButtonTime, "config.button-time", 2000, "ms from which a press of the front button is long"},
    {S::SignalTimeLow, "config.signal-time.low", 500, "ms that the external signal must last, low word"},
    {S::SignalTimeHigh, "config.signal-time.high", 0, "ms that the external signal must last, high word"},
    {S::SuspendTime, "config.suspend-time", 60, "minutes after which a suspended unit is switched off"},
    {S::Voltage, "config.voltage", 930, "converter counts of the supply below which the unit does not start", kCounts},
    {S::HeatingLimit, "config.heating", 56, "degrees above -56 below which the unit is heated before it starts", kHeat},
    {S::ShortPress, "config.short-press", 1, "action of a short press: 0 none, 1 suspend, 2 shut down", kActions},
    {S::LongPress, "config.long-press", 2, "action of a long press: 0 none, 1 suspend, 2 shut down", kActions},
    {S::OnOffSignal, "config.signal", 2, "action of the external signal: 0 none, 1 suspend, 2 shut down", kActions},
    {S::StartupTrigger, "config.trigger", 3, "what starts the unit: 1 front button, 2 external signal, 3 both",
     kStarts},
};

struct Switch {
    SupervisorSettings::Number number;
    const char* name;
    bool isOn;
    const char* help;
};

constexpr Switch kSwitches[] = {
    {S::Can, "config.can", true, "CAN powered at start-up"},
    {S::Video1, "config.video.1", true, "video channel powered at start-up"},
    {S::Video2, "config.video.2", true, "video channel powered at start-up"},
    {S::Video3, "config.video.3", false, "video channel powered at start-up"},
    {S::Video4, "config.video.4", false, "video channel powered at start-up"},
    {S::ExternalFan, "config.fan", false, "external fan powered at start-up"},
    {S::PowerOn, "config.power-on", false, "whether the unit starts when it gets power"},
};

constexpr double kSupplyVoltsPerCount = 3.3 / 4096.0;
constexpr double kDivider = 12.0;

} // namespace

SupervisorSettings::SupervisorSettings(Unit& unit) : SupervisorRegisters{unit, "/dev/conf-id"}
{
    for (const Setting& setting : kSettings) {
        property(setting.number, setting.name, setting.healthy, setting.help, setting.range);
        limit(setting.number, setting.range);
    }
    for (const Switch& row : kSwitches)
        switchProperty(row.number, row.name, row.isOn, row.help);
}

Time SupervisorSettings::buttonTime() const
{
    return std::chrono::milliseconds{read(ButtonTime)};
}

Time SupervisorSettings::signalTime() const
{
    return std::chrono::milliseconds{read(SignalTimeHigh) * 65536L + read(SignalTimeLow)};
}

Time SupervisorSettings::suspendTime() const
{
    return std::chrono::minutes{read(SuspendTime)};
}

double SupervisorSettings::startupVolts() const
{
    return read(Voltage) * kSupplyVoltsPerCount * kDivider;
}

int SupervisorSettings::heatingCelsius() const
{
    return static_cast<int>(read(HeatingLimit)) - 56;
}

} // namespace hxsim
