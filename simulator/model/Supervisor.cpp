// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Supervisor.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

// Registers of the power device.
constexpr std::uint8_t kBacklight = 0;
constexpr std::uint8_t kCan = 1;
constexpr std::uint8_t kFan = 3;
constexpr std::uint8_t kTransition = 4;
constexpr std::array<std::uint8_t, 4> kVideo{2, 5, 6, 7};

// Registers of the diagnostics device.
constexpr std::uint8_t kSupervisorTemperature = 0;
constexpr std::uint8_t kBoardTemperature = 1;
constexpr std::uint8_t kStartupReason = 2;
constexpr std::uint8_t kShutDownReason = 3;
constexpr std::uint8_t kHardwareError = 4;
constexpr std::uint8_t kPowerCycles = 12;
constexpr std::uint8_t kHighest = 13;
constexpr std::uint8_t kLowest = 14;
constexpr std::uint8_t kClearError = 25;

constexpr std::uint16_t kSuspend = 1;
constexpr Time kAfterAcknowledgement = 2s;
constexpr Time kPatience = 60s;
constexpr Time kOneDegree = 10s; ///< temperature used by the heating

Time durationOf(const std::string& text, Time shortOne, Time longOne)
{
    if (text == "short")
        return shortOne;
    if (text == "long")
        return longOne;
    return std::chrono::milliseconds{parseNumber(text, 0, 3'600'000)};
}

} // namespace

Supervisor::Supervisor(Unit& unit)
    : configuration{unit}, diagnostics{unit, "/dev/diag-id"}, power{unit, "/dev/power-id"}, unit_{unit},
      times_{OperatingTime{unit.clock()}, OperatingTime{unit.clock()}, OperatingTime{unit.clock()},
             OperatingTime{unit.clock()}, OperatingTime{unit.clock()}, OperatingTime{unit.clock()},
             OperatingTime{unit.clock()}}
{
    describeLoads();
    describeDiagnostics();
    describeActions();
    switchLoads();
    noteTimes();
}

void Supervisor::describeLoads()
{
    const auto load = [this](std::uint8_t number, const std::string& name) {
        unit_.properties().add(
            name, [this, number] { return onOrOff(power[number] != 0); },
            [this, number](const std::string& text) { (void)writeLoad(number, parseFlag(text)); },
            "whether it has power now");
        power.onWrite(number, [this, number](std::uint16_t value) { return writeLoad(number, value != 0); });
    };
    load(kBacklight, "power.backlight");
    load(kCan, "power.can");
    load(kFan, "power.fan");
    for (std::size_t i = 0; i < kVideo.size(); ++i)
        load(kVideo[i], "power.video." + std::to_string(i + 1));
    power.property(kTransition, "power.transition", 0, "which transition is requested");
    power.onWrite(kTransition, [this](std::uint16_t value) { return acknowledge(value); });
    unit_.properties().readOnly(
        "power.state",
        [this] {
            constexpr const char* kNames[] = {"running", "suspended", "heating", "off"};
            return std::string{kNames[static_cast<int>(state_)]};
        },
        "running, suspended, heating or off");
}

void Supervisor::describeDiagnostics()
{
    for (std::uint8_t number = 0; number < kClearError; ++number) // measured values are read-only
        diagnostics.onWrite(number, [](std::uint16_t) { return -EINVAL; });
    describeTemperature(kSupervisorTemperature, "diagnostics.ss-temp", 38, "supervisor's temperature, degrees Celsius");
    describeTemperature(kBoardTemperature, "diagnostics.pcb-temp", 35, "board's temperature, degrees Celsius");
    diagnostics.property(kLowest, "diagnostics.lowest", 35, "lowest temperature of the board, as a 16-bit word");
    diagnostics.property(kHighest, "diagnostics.highest", 35, "highest temperature of the board, as a 16-bit word");
    diagnostics.property(kStartupReason, "diagnostics.startup-reason", FrontButton, "15, 85, 170 or 240");
    diagnostics.property(kShutDownReason, "diagnostics.shutdown-reason", FrontButton, "15, 85, 170 or 240");
    diagnostics.property(kHardwareError, "diagnostics.error", 0, "hardware error status, 0 to 131");
    diagnostics.property(kPowerCycles, "diagnostics.power-cycles", 42, "how often the unit was switched on");
    diagnostics.onWrite(kClearError, [this](std::uint16_t value) {
        if (value != 1)
            return -EINVAL;
        diagnostics[kHardwareError] = 0;
        return 0;
    });
    describeTime(0, 8, 7, 9, "seconds that the unit has run");
    describeTime(1, -1, 10, 11, "seconds since this start");
    describeTime(2, -1, 23, 24, "seconds suspended");
    describeTime(3, -1, 15, 16, "seconds with backlight");
    describeTime(4, -1, 17, 18, "seconds with CAN power");
    describeTime(5, -1, 19, 20, "seconds with the external fan");
    describeTime(6, -1, 21, 22, "seconds of heating");
}

void Supervisor::describeTime(std::size_t which, int highWord, std::uint8_t minutes, std::uint8_t seconds,
                              const char* help)
{
    OperatingTime& time = times_[which];
    diagnostics.onRead(minutes, [&time] { return static_cast<std::uint16_t>(time.seconds() / 60); });
    diagnostics.onRead(seconds, [&time] { return static_cast<std::uint16_t>(time.seconds() % 60); });
    if (highWord >= 0)
        diagnostics.onRead(static_cast<std::uint8_t>(highWord),
                           [&time] { return static_cast<std::uint16_t>(time.seconds() / 60 >> 16); });
    unit_.properties().add(
        "diagnostics.time." + std::to_string(which), [&time] { return std::to_string(time.seconds()); },
        [&time](const std::string& text) {
            time.setSeconds(static_cast<std::uint64_t>(parseNumber(text, 0, INT64_MAX / 1000000000)));
        },
        help);
}

void Supervisor::describeTemperature(std::uint8_t number, const std::string& name, int celsius, const char* help)
{
    diagnostics[number] = static_cast<std::uint16_t>(celsius);
    unit_.properties().add(
        name, [this, number] { return std::to_string(static_cast<std::int16_t>(diagnostics[number])); },
        [this, number](const std::string& text) {
            diagnostics[number] = static_cast<std::uint16_t>(parseNumber(text, INT16_MIN, INT16_MAX));
            if (number == kBoardTemperature)
                followTemperature(static_cast<std::int16_t>(diagnostics[number]));
        },
        help);
}

void Supervisor::followTemperature(std::int16_t celsius)
{
    const auto lowest = static_cast<std::int16_t>(diagnostics[kLowest]);
    const auto highest = static_cast<std::int16_t>(diagnostics[kHighest]);
    diagnostics[kLowest] = static_cast<std::uint16_t>(std::min(lowest, celsius));
    diagnostics[kHighest] = static_cast<std::uint16_t>(std::max(highest, celsius));
}

void Supervisor::describeActions()
{
    Actions& actions = unit_.actions();
    actions.add(
        "press", "front [short|long|MILLISECONDS]",
        [this](const Actions::Words& words) {
            if (words.empty() || words.size() > 2 || words[0] != "front")
                throw BadText{"press front [short|long|MILLISECONDS]"};
            pressFrontButton(
                durationOf(words.size() == 2 ? words[1] : "short", 200ms, configuration.buttonTime() + 500ms));
        },
        "presses the front button; a short press without an argument");
    actions.add(
        "signal", "[MILLISECONDS]",
        [this](const Actions::Words& words) {
            if (words.size() > 1)
                throw BadText{"signal [MILLISECONDS]"};
            giveSignal(words.empty() ? configuration.signalTime() + 500ms : durationOf(words[0], 0ms, 0ms));
        },
        "applies the external on/off signal; without an argument long enough to count");
    actions.add(
        "supply", "on|off",
        [this](const Actions::Words& words) {
            if (words.size() != 1)
                throw BadText{"supply on|off"};
            supply(parseFlag(words[0]));
        },
        "applies or removes the supply voltage");
    actions.add(
        "restart", "", [this](const Actions::Words&) { restart(); }, "restarts the operating system");
}

int Supervisor::writeLoad(std::uint8_t number, bool on)
{
    power[number] = on ? 1 : 0;
    noteTimes();
    return 0;
}

int Supervisor::acknowledge(std::uint16_t value)
{
    if (value != 0)
        return -EINVAL;
    power[kTransition] = 0;
    if (action_ != 0 && timer_) {
        unit_.clock().cancel(*timer_);
        timer_ = unit_.clock().after(kAfterAcknowledgement, [this] { carryOut(); });
    }
    return 0;
}

bool Supervisor::mayStartBy(std::uint16_t trigger) const
{
    return (configuration.read(SupervisorSettings::StartupTrigger) & trigger) != 0;
}

void Supervisor::pressFrontButton(Time duration)
{
    if (state_ == State::Off && mayStartBy(1))
        return start(FrontButton);
    if (state_ == State::Suspended)
        return run();
    const Time limit = configuration.buttonTime();
    const bool isLong = duration >= limit;
    unit_.clock().after(std::min(duration, limit), [this, isLong] {
        if (isLong)
            request(Requester::LongPress, configuration.read(SupervisorSettings::LongPress), FrontButton);
        else
            request(Requester::ShortPress, configuration.read(SupervisorSettings::ShortPress), FrontButton);
    });
}

void Supervisor::giveSignal(Time duration)
{
    const Time needed = configuration.signalTime();
    if (duration < needed)
        return;
    unit_.clock().after(needed, [this] {
        if (state_ == State::Off && mayStartBy(2))
            start(ExternalSignal);
        else if (state_ == State::Suspended)
            run();
        else
            request(Requester::Signal, configuration.read(SupervisorSettings::OnOffSignal), ExternalSignal);
    });
}

void Supervisor::supply(bool on)
{
    const bool was = std::exchange(supplied_, on);
    if (on == was)
        return;
    if (on) {
        unit_.returnSupply();
        if (configuration.read(SupervisorSettings::PowerOn) != 0)
            start(PowerApplied);
        return;
    }
    if (state_ != State::Off) {
        diagnostics[kShutDownReason] = PowerApplied;
        switchOff();
    }
    unit_.failSupply();
}

void Supervisor::restart()
{
    if (state_ != State::Running)
        return;
    diagnostics[kShutDownReason] = OsRestart;
    diagnostics[kStartupReason] = OsRestart;
    times_[1].setSeconds(0);
    switchLoads();
    noteTimes();
}

void Supervisor::request(Requester requester, std::uint16_t action, Reason reason)
{
    if (state_ != State::Running || action == 0 || action > 2 || action_ != 0)
        return;
    action_ = action;
    reason_ = reason;
    power[kTransition] = static_cast<std::uint16_t>(static_cast<std::uint16_t>(requester) + action - 1);
    timer_ = unit_.clock().after(kPatience, [this] { carryOut(); });
}

void Supervisor::carryOut()
{
    const std::uint16_t action = action_;
    if (action == kSuspend) {
        enter(State::Suspended);
        timer_ = unit_.clock().after(configuration.suspendTime(), [this] {
            diagnostics[kShutDownReason] = reason_;
            switchOff();
        });
    } else {
        diagnostics[kShutDownReason] = reason_;
        switchOff();
    }
}

void Supervisor::enter(State state)
{
    if (timer_)
        unit_.clock().cancel(*timer_);
    timer_.reset();
    action_ = 0;
    power[kTransition] = 0;
    state_ = state;
    if (state != State::Running)
        for (const std::uint8_t load : {kBacklight, kCan, kFan, kVideo[0], kVideo[1], kVideo[2], kVideo[3]})
            power[load] = 0;
    else
        switchLoads();
    noteTimes();
}

void Supervisor::start(Reason reason)
{
    const double volts = parseReal(unit_.properties().get("voltage.0"));
    if (!supplied_ || volts < configuration.startupVolts())
        return;
    reason_ = reason;
    startWhenWarm();
}

void Supervisor::startWhenWarm()
{
    const auto celsius = static_cast<std::int16_t>(diagnostics[kBoardTemperature]);
    if (celsius < configuration.heatingCelsius()) {
        enter(State::Heating);
        timer_ = unit_.clock().after(kOneDegree, [this] {
            diagnostics[kBoardTemperature] = static_cast<std::uint16_t>(diagnostics[kBoardTemperature] + 1);
            startWhenWarm();
        });
        return;
    }
    diagnostics[kStartupReason] = reason_;
    ++diagnostics[kPowerCycles];
    times_[1].setSeconds(0);
    run();
}

void Supervisor::run()
{
    enter(State::Running);
}

void Supervisor::switchOff()
{
    enter(State::Off);
}

void Supervisor::switchLoads()
{
    using S = SupervisorSettings;
    constexpr S::Number kVideoSettings[] = {S::Video1, S::Video2, S::Video3, S::Video4};
    power[kBacklight] = 1;
    power[kCan] = configuration.read(S::Can) != 0;
    power[kFan] = configuration.read(S::ExternalFan) != 0;
    for (std::size_t i = 0; i < kVideo.size(); ++i)
        power[kVideo[i]] = configuration.read(kVideoSettings[i]) != 0;
}

void Supervisor::noteTimes()
{
    const bool running = state_ == State::Running;
    times_[0].run(running);
    times_[1].run(running);
    times_[2].run(state_ == State::Suspended);
    times_[3].run(power[kBacklight] != 0);
    times_[4].run(power[kCan] != 0);
    times_[5].run(power[kFan] != 0);
    times_[6].run(state_ == State::Heating);
}

HXSIM_HARDWARE(Supervisor)

} // namespace hxsim
