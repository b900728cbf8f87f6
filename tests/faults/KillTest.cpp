// SPDX-License-Identifier: LicenseRef-HXAux
// A program that is killed before each system call of an operation: the resulting state of the unit's locks, settings
// file, memories and hardware, seen from outside. docs/locks-and-processes.md describes these states.
#include "simulator/inprocess/LinkedUnit.h"
#include "simulator/model/Buzzer.h"
#include "simulator/model/CallWatch.h"
#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "simulator/model/TelematicsBoard.h"
#include "simulator/model/UartRouting.h"
#include "testing/Arguments.h"
#include "testing/ErasedOperations.h"
#include "testing/EveryOperation.h"
#include "testing/OperationCalls.h"
#include "tests/faults/Forked.h"
#include "tests/faults/Hash.h"
#include "tests/faults/Injector.h"

#include <gmock/gmock.h>

#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <sstream>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Halvix;
using namespace faults;
using testing::IsEmpty;

namespace {

/// State of the unit of a killed program. Its model dies with the program, so this is recorded at the last moment.
struct Hardware {
    std::size_t eeprom; ///< sums
    std::size_t flash;
    bool sounds;
    bool keyHeld;     ///< of the GSM module
    bool routed;      ///< the service UART, to a microcontroller
    bool upgradeMode; ///< the supervisor has left normal operation
};

Hardware* lastHardware = nullptr; // shared with the program to be killed

/// The parts of the unit; used without its lock, which the killed thread holds.
struct Parts {
    const std::vector<std::uint8_t>* eeprom;
    const hxsim::Microcontrollers* microcontrollers;
    const hxsim::FpgaFlash* fpga;
    const hxsim::Buzzer* buzzer;
    const hxsim::TelematicsBoard* telematics;
    const hxsim::UartRouting* routing;
};

Parts parts;

std::size_t sum(std::size_t before, const std::vector<std::uint8_t>& bytes)
{
    return before * 31 + hashOf(bytes);
}

void writeDown()
{
    const auto& both = *parts.microcontrollers;
    *lastHardware = {
        sum(1, *parts.eeprom),         sum(sum(sum(1, both.supervisor.flash), both.front.flash), parts.fpga->content),
        parts.buzzer->trigger != 0,    parts.telematics->keyHeld,
        parts.routing->direction != 0, parts.routing->mode != 0xC3};
}

void watchHardware(SimulatedUnit& unit)
{
    lastHardware =
        new (mmap(nullptr, sizeof(Hardware), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Hardware{};
    // One at a time: each expression holds the unit's lock.
    auto& linked = dynamic_cast<hxsim::LinkedUnit&>(*hxsim::Link::current());
    parts.eeprom = &linked.unit()->memories().at("eeprom-main").bytes;
    parts.microcontrollers = &*unit.model<hxsim::Microcontrollers>();
    parts.fpga = &*unit.model<hxsim::FpgaFlash>();
    parts.buzzer = &*unit.model<hxsim::Buzzer>();
    parts.telematics = &*unit.model<hxsim::TelematicsBoard>();
    parts.routing = &*unit.model<hxsim::UartRouting>();
    beforeDeath(writeDown);
}

/// The result of a run, passed from the child to the test as a text; a settings file has no tabs.
struct State {
    std::string settings;
    Hardware hardware{};
    std::string locks; ///< "NAME VALUE, ..."
};

std::string textOf(const State& state)
{
    std::ostringstream text;
    text << state.settings << '\t' << state.locks << '\t' << state.hardware.eeprom << ' ' << state.hardware.flash << ' '
         << state.hardware.sounds << ' ' << state.hardware.keyHeld << ' ' << state.hardware.routed << ' '
         << state.hardware.upgradeMode;
    return text.str();
}

State stateOf(const std::string& output)
{
    State state;
    std::istringstream text{output};
    std::getline(text, state.settings, '\t');
    std::getline(text, state.locks, '\t');
    text >> state.hardware.eeprom >> state.hardware.flash >> state.hardware.sounds >> state.hardware.keyHeld >>
        state.hardware.routed >> state.hardware.upgradeMode;
    return state;
}

/// One way to call one operation, for any number of runs.
class Life {
public:
    using Action = std::function<void()>;

    Life(OperationCall tried, std::function<Action()> makeAction)
        : try_{std::move(tried)}, makeAction_{std::move(makeAction)}
    {
    }

    /// Numbers of the calls to be killed at.
    [[nodiscard]] std::vector<std::size_t> calls() const
    {
        const Ended ended = inAChild([&] {
            SimulatedUnit unit;
            begin(unit);
            live(unit, [&] { startRecording(try_.scope); });
            std::ostringstream text;
            for (const std::size_t number : choose(recording_, Kind::Kill))
                text << number << ' ';
            return text.str();
        });
        std::istringstream text{ended.output};
        return {std::istream_iterator<std::size_t>{text}, {}};
    }

    /// The state when it is killed there; after its last call: when it ends.
    [[nodiscard]] State killedAt(std::size_t number) const
    {
        return stateOf(inAChild([&] {
                           SimulatedUnit unit;
                           begin(unit);
                           watchHardware(unit);
                           const pid_t program = fork();
                           if (program == 0) {
                               live(unit, [&] { startFailing(Kind::Kill, try_.scope, number); });
                               writeDown();
                               _exit(0);
                           }
                           int status = 0;
                           waitpid(program, &status, 0);
                           return textOf({unit.settings(), *lastHardware, joined(locksTaken())});
                       }).output);
    }

private:
    static std::string joined(const std::set<std::string>& names)
    {
        std::string text;
        for (const std::string& name : names)
            text += (text.empty() ? "" : ", ") + name;
        return text;
    }
    void begin(SimulatedUnit& unit) const
    {
        thisIsTheCaller();
        prepareUnit(unit, try_);
        hxsim::watchCalls(onCall);
    }
    void live(SimulatedUnit& unit, const std::function<void()>& start) const
    {
        const Action action = makeAction_();
        start();
        action();
        if (try_.milliseconds != 0)
            unit.sleepFor(try_.milliseconds);
        recording_ = stop();
    }

    OperationCall try_;
    std::function<Action()> makeAction_;
    mutable Recording recording_;
};

std::string oldOrNew(bool isOld, bool isNew, const char* what)
{
    return std::string{isOld ? "old " : isNew ? "new " : "partly new "} + what;
}

/// Describes one state relative to the first and the last state.
std::string describe(const State& state, const State& first, const State& last)
{
    std::vector<std::string> words;
    if (state.settings.empty())
        words.emplace_back("empty file");
    else if (first.settings != last.settings)
        words.push_back(oldOrNew(state.settings == first.settings, state.settings == last.settings, "file"));
    if (first.hardware.eeprom != last.hardware.eeprom)
        words.push_back(oldOrNew(state.hardware.eeprom == first.hardware.eeprom,
                                 state.hardware.eeprom == last.hardware.eeprom, "EEPROM"));
    if (first.hardware.flash != last.hardware.flash)
        words.push_back(oldOrNew(state.hardware.flash == first.hardware.flash,
                                 state.hardware.flash == last.hardware.flash, "flash"));
    if (state.hardware.sounds)
        words.emplace_back("sounds");
    if (state.hardware.keyHeld)
        words.emplace_back("key held");
    if (state.hardware.routed)
        words.emplace_back("line routed");
    if (state.hardware.upgradeMode)
        words.emplace_back("supervisor in upgrade mode");
    if (!state.locks.empty())
        words.push_back(state.locks);
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text.empty() ? "nothing" : text;
}

using States = std::vector<std::string>;

/// The states from the first call to the end, equal neighbours once.
States statesOf(const Life& life, int& kills)
{
    std::vector<State> states;
    for (const std::size_t number : life.calls())
        states.push_back(life.killedAt(number));
    kills += static_cast<int>(states.size());
    states.push_back(life.killedAt(static_cast<std::size_t>(-1)));
    States all;
    for (const State& state : states)
        if (const std::string words = describe(state, states.front(), states.back());
            all.empty() || all.back() != words)
            all.push_back(words);
    return all;
}

/// By operation, with the number of the variant if there are several: "buzze 2".
using Table = std::map<std::string, States>;

const States kReads{"nothing", "FILE_HXAUXINI_IS_IN_USE 0", "nothing"};
const States kWrites{"old file", "old file, FILE_HXAUXINI_IS_IN_USE 0", "empty file, FILE_HXAUXINI_IS_IN_USE 0",
                     "new file, FILE_HXAUXINI_IS_IN_USE 0", "new file"};

/// Kills at each call of each operation of the interface that begins so; one that is not in the table changes nothing.
template <class Interface>
void killEverywhere(const Table& expected, const std::string& beginning = "")
{
    const std::string interface = every::Operations<Interface>::kName;
    int kills = 0;
    std::vector<std::string> wrong;
    for (const every::ErasedOperation& operation : every::operationsOf(interface)) {
        if (!operation.name.starts_with(beginning))
            continue;
        const std::vector<OperationCall> ways = waysToCall(interface + '.' + operation.name);
        for (std::size_t i = 0; i < ways.size(); ++i) {
            const auto makeAction = [&tried = ways[i], &operation] {
                auto* const object = every::Operations<Interface>::make();
                return Life::Action{[&tried, &operation, object] {
                    Arguments arguments{tried.numbers, tried.texts};
                    (void)operation.call(object, arguments);
                }};
            };
            const std::string name = ways.size() == 1 ? operation.name : operation.name + ' ' + std::to_string(i + 1);
            const auto row = expected.find(name);
            const States states = statesOf(Life{ways[i], makeAction}, kills);
            if (states != (row == expected.end() ? States{"nothing"} : row->second))
                wrong.push_back(name + " leaves " + testing::PrintToString(states));
        }
    }
    std::printf("[  KILLS   ] %s: %d\n", (interface + beginning).c_str(), kills);
    testing::Test::RecordProperty("kills", kills);
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Kill, LeavesOfBacklight)
{
    killEverywhere<Backlight>(
        {{"getAutomaticBLStatus", kReads},
         {"getAutomaticBLParams", kReads},
         {"getAutomaticBLFilter", kReads},
         {"getLedDimming", kReads},
         // The file has the value already: its text is the same before and after.
         {"startAutomaticBL",
          {"nothing", "FILE_HXAUXINI_IS_IN_USE 0", "empty file, FILE_HXAUXINI_IS_IN_USE 0", "FILE_HXAUXINI_IS_IN_USE 0",
           "nothing"}},
         {"stopAutomaticBL", kWrites},
         {"setAutomaticBLParams", kWrites},
         {"setLedDimming", kWrites},
         // One write of the whole file for each of the four settings.
         {"setAutomaticBLFilter",
          {"old file", "old file, FILE_HXAUXINI_IS_IN_USE 0", "empty file, FILE_HXAUXINI_IS_IN_USE 0",
           "old file, FILE_HXAUXINI_IS_IN_USE 0", "empty file, FILE_HXAUXINI_IS_IN_USE 0",
           "partly new file, FILE_HXAUXINI_IS_IN_USE 0", "empty file, FILE_HXAUXINI_IS_IN_USE 0",
           "new file, FILE_HXAUXINI_IS_IN_USE 0", "new file"}}});
}

TEST(Kill, LeavesOfBuzzer)
{
    const std::string taken = "HXAUX_BUZZING_IN_PROGRESS 0";
    killEverywhere<Buzzer>({{"setTrigger", {"nothing", "sounds"}},
                            {"buzze 1", {"nothing", taken, "sounds, " + taken, taken, "nothing"}},
                            {"buzze 2", {"nothing", taken, "nothing"}},
                            {"buzze 3", {taken, "sounds, " + taken, taken, "nothing"}}});
}

TEST(Kill, LeavesOfHXAuxPrivate)
{
    const std::string averages = "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0";
    const std::string reads = "FILE_HXAUXINI_IS_IN_USE 0";
    killEverywhere<HXAuxPrivate>(
        {{"getFileSetting", kReads},
         {"setFileSetting", kWrites},
         {"setEepromProperty", {"old EEPROM", "partly new EEPROM", "new EEPROM"}},
         {"automaticBacklightInit 1", {"nothing", averages}},
         {"automaticBacklightInit 2", {"nothing", reads, "nothing", averages, reads + ", " + averages, averages}}});
}

TEST(Kill, LeavesOfLightsensor)
{
    const std::string averages = "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED 0";
    killEverywhere<Lightsensor>({{"startAverageCalc 1", {"nothing", averages}},
                                 {"startAverageCalc 2", {averages}},
                                 {"setOperatingRange", {"nothing", averages, "nothing"}}});
}

TEST(Kill, LeavesOfTelematics)
{
    killEverywhere<Telematics>({{"setGPRSStartUpPowerStatus", kWrites},
                                {"setWLANStartUpPowerStatus", kWrites},
                                {"setGPRSPowerStatus 1", {"nothing", "key held", "nothing"}}},
                               "set");
}

TEST(Kill, LeavesOfTouchScreenCalib)
{
    killEverywhere<TouchScreenCalib>({});
}

TEST(Kill, LeavesOfCanSetting)
{
    killEverywhere<CanSetting>({});
}

const std::string kUpgrading = "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS 0";
const std::string kUpgradeMode = "supervisor in upgrade mode, " + kUpgrading;
const std::string kRouted = "line routed, " + kUpgradeMode;
/// Killed before its thread starts, or not at all.
const States kStartsProgramming{"old flash", "old flash, " + kUpgrading, "new flash"};

TEST(Kill, LeavesOfFpgaUpgrades)
{
    const States programmes{"old flash",
                            "old flash, " + kUpgrading,
                            "old flash, " + kUpgradeMode,
                            "partly new flash, " + kUpgradeMode,
                            "new flash, " + kUpgradeMode,
                            "new flash, " + kUpgrading,
                            "new flash"};
    killEverywhere<FirmwareUpgrade>(
        {{"startFpgaUpgrade 1", programmes},
         {"startFpgaUpgrade 2", kStartsProgramming},
         {"startFpgaUpgrade 3", {programmes.begin() + 1, programmes.end()}}, // the lock is acquired with the thread
         {"startFpgaVerification 1", {"nothing", kUpgrading, kUpgradeMode, kUpgrading, "nothing"}},
         {"startFpgaVerification 2", {"nothing", kUpgrading, "nothing"}}},
        "startFpga");
}

TEST(Kill, LeavesOfSupervisorUpgrades)
{
    // One request restores the line and starts the new firmware.
    killEverywhere<FirmwareUpgrade>(
        {{"startSSUpgrade 1",
          {"old flash", "old flash, " + kUpgrading, "old flash, " + kUpgradeMode, "old flash, " + kRouted,
           "partly new flash, " + kRouted, "new flash, " + kRouted, "new flash, " + kUpgrading, "new flash"}},
         {"startSSUpgrade 2", kStartsProgramming},
         {"startSSVerification", {"nothing", kUpgrading, kUpgradeMode, kRouted, kUpgrading, "nothing"}}},
        "startSS");
}

TEST(Kill, LeavesOfFrontUpgrades)
{
    const std::string routedOnly = "line routed, " + kUpgrading;
    killEverywhere<FirmwareUpgrade>(
        {{"startFrontUpgrade",
          {"old flash", "old flash, " + kUpgrading, "old flash, " + kUpgradeMode, "old flash, " + kRouted,
           "partly new flash, " + kRouted, "new flash, " + kRouted, "new flash, " + routedOnly,
           "new flash, " + kUpgrading, "new flash"}},
         {"startFrontVerification", {"nothing", kUpgrading, kUpgradeMode, kRouted, routedOnly, kUpgrading, "nothing"}}},
        "startFront");
}

} // namespace
