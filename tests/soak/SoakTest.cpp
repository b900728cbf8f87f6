// SPDX-License-Identifier: LicenseRef-HXAux
// Every operation of every interface, and every factory with its release, repeatedly: nothing may grow with the number
// of calls. HX_SOAK_ROUNDS is the number of rounds; scripts/check.sh soak uses a million.
#include "hx-aux/Jida.h"
#include "testing/Arguments.h"
#include "testing/ErasedOperations.h"
#include "testing/EveryOperation.h"
#include "testing/OperationCalls.h"
#include "tests/soak/Holdings.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <string_view>

using namespace Halvix;
using faults::OperationCall;

namespace soak {

namespace {

constexpr int kWarmUp = 30;

/// A million rounds are for cheap operations: a test ends after this time if it has had its usual rounds.
constexpr std::chrono::seconds kLongestUse{30};
constexpr int kFewestRounds = 2000;

/// Uses that take a millisecond or more each. They have fewer rounds: growth is compared exactly, however many there
/// are.
struct Slow {
    std::string_view use; ///< prefix of its name
    int divisor;
    const char* reason;
};
constexpr Slow kSlow[] = {
    {"FirmwareUpgrade.startFpga", 4, "a whole flash, and a thread that waits for it page by page"},
    {"FirmwareUpgrade.startSS", 5, "a file of 95 kB and a whole conversation with the bootloader"},
    {"FirmwareUpgrade.startFront", 5, "a file of 50 kB and a whole conversation with the bootloader"},
    {"HXAuxPrivate.", 4, "production data, read or written 128 bytes at a time"},
    {"Telematics.", 4, "production data, read for the kind of modem"},
};

/// Handles that stay open by the headers: growth per call.
struct Growth {
    std::string_view use;
    std::size_t devices;
    const char* reason;
};
constexpr Growth kGrowing[] = {
    {"Video.init", 1, "the device of an earlier call stays open until the process ends"},
};

/// Number of descriptors of this process that the simulated unit uses for an open device.
std::size_t descriptorsOfADevice(SimulatedUnit& unit)
{
    const std::size_t before = Holdings::now(unit, 0).descriptors;
    Halvix::Adc* const adc = GetAdc();
    const std::size_t with = Holdings::now(unit, 0).descriptors;
    adc->Release();
    return with - before;
}
constexpr int kRoundsOfGrowing = 200;

int roundsOf(const std::string& use)
{
    const char* const wanted = std::getenv("HX_SOAK_ROUNDS");
    int rounds = wanted != nullptr ? std::atoi(wanted) : heapIsExact() ? 2000 : 100;
    for (const Slow& slow : kSlow)
        if (use.starts_with(slow.use))
            rounds = std::max(rounds / slow.divisor, 50);
    for (const Growth& growing : kGrowing)
        if (use == growing.use)
            rounds = std::min(rounds, kRoundsOfGrowing);
    return rounds;
}

const Growth* growthOf(const std::string& use)
{
    const auto* const found = std::ranges::find(kGrowing, use, &Growth::use);
    return found != std::end(kGrowing) ? found : nullptr;
}

// Ends one round, so that the next one starts in the same state.

template <class Interface>
void endRound(Interface&, const OperationCall& tried, const std::string&, SimulatedUnit& unit)
{
    if (tried.milliseconds == 0 || faults::runsForever(tried.operation))
        return;
    unit.sleepFor(tried.milliseconds);
    waitForThreads();
}

void endRound(Lightsensor& sensor, const OperationCall&, const std::string& name, SimulatedUnit&)
{
    if (name == "startAverageCalc") {
        (void)sensor.stopAverageCalc();
        waitForThreads();
    }
}

void endRound(Telematics& telematics, const OperationCall& tried, const std::string& name, SimulatedUnit&)
{
    const HXStatus opposite = !tried.numbers.empty() && tried.numbers[0] == 1 ? HXStatusDisabled : HXStatusEnabled;
    if (name == "setGPRSPowerStatus")
        (void)telematics.setGPRSPowerStatus(opposite);
    if (name == "setWLANPowerStatus")
        (void)telematics.setWLANPowerStatus(opposite);
}

/// Threads that run through all rounds: the automatic backlight's own and that of its averaging, or the averaging.
std::size_t threadsOf(const std::string& use)
{
    return faults::runsForever(use) ? 2 : use == "Lightsensor.getAverageIlluminance" ? 1 : 0;
}

struct Counter {
    int uses = 0;
    long rounds = 0;
};

/// Calls `round` repeatedly and compares before and after. `round` returns whether it succeeded.
void repeat(const std::string& use, SimulatedUnit& unit, const std::function<bool()>& round, Counter& counter)
{
    int wrong = 0;
    const auto times = [&](int most) {
        const auto end = std::chrono::steady_clock::now() + kLongestUse;
        int done = 0;
        for (; done < most && (done < kFewestRounds || std::chrono::steady_clock::now() < end); ++done) {
            wrong += round() ? 0 : 1;
            digestJournal();
        }
        return done;
    };
    (void)times(kWarmUp);
    if (threadsOf(use) != 0) { // they must have reached their final state
        unit.sleepFor(5000);
        digestJournal();
    }
    Holdings expected = Holdings::now(unit, threadsOf(use));
    const int rounds = times(roundsOf(use));
    Holdings found = Holdings::now(unit, threadsOf(use));
    if (const Growth* const growth = growthOf(use)) {
        expected.descriptors += growth->devices * descriptorsOfADevice(unit) * static_cast<std::size_t>(rounds);
        expected.heap = found.heap = {}; // the unit's own records of an open file
    }
    EXPECT_EQ(found, expected) << use << " after " << rounds << " rounds";
    EXPECT_EQ(wrong, 0) << use << " answers otherwise";
    ++counter.uses;
    counter.rounds += rounds;
}

bool isUsual(const OperationCall& tried, int answer)
{
    const bool again = faults::runsForever(tried.operation) && answer == ERR_INIT_FAILED; // it was initialised before
    return answer == tried.usual || answer == ERR_NOT_SUPPORTED || again;
}

template <class Interface>
void soakFactory(Counter& counter)
{
    using Operations = every::Operations<Interface>;
    SimulatedUnit unit;
    startMeasurement();
    const auto round = [] {
        Interface* const object = Operations::make();
        return object != nullptr && object->Release() == ERR_SUCCESS;
    };
    repeat(std::string{Operations::kName} + ".Get" + Operations::kName, unit, round, counter);
}

template <class Interface>
void soakOperation(const OperationCall& tried, const every::ErasedOperation& operation, Counter& counter)
{
    const std::string& name = operation.name;
    SimulatedUnit unit;
    faults::prepareUnit(unit, tried);
    startMeasurement();
    Interface* const object = every::Operations<Interface>::make();
    faults::prepare(*object, name, unit);
    const auto round = [&] {
        faults::Arguments arguments{tried.numbers, tried.texts};
        const bool good = isUsual(tried, operation.call(object, arguments));
        endRound(*object, tried, name, unit);
        return good;
    };
    repeat(tried.operation, unit, round, counter);
    faults::finish(*object, name, unit);
    object->Release();
    waitForThreads(faults::runsForever(tried.operation) ? threadsOf(tried.operation) : 0);
}

/// With a wait, the second call would never return.
std::vector<OperationCall> waysToRepeat(const std::string& operation)
{
    if (operation == "FirmwareUpgrade.getUpgradeStatus")
        return {{operation, {0}}};
    return faults::waysToCall(operation);
}

std::string partOf(const std::string& operation)
{
    for (const char* part : {"Fpga", "SS", "Front"})
        if (operation.starts_with("start" + std::string{part}))
            return part;
    return {};
}

void print(const std::string& subject, const Counter& counter)
{
    std::printf("[  SOAK    ] %s: %d ways of use, %ld rounds\n", subject.c_str(), counter.uses, counter.rounds);
}

/// One part of an interface's operations; the factory belongs to the unnamed part.
template <class Interface>
void soak(const std::string& part = "")
{
    using Operations = every::Operations<Interface>;
    const std::string interface = Operations::kName;
    Counter counter;
    if (part.empty())
        soakFactory<Interface>(counter);
    for (const every::ErasedOperation& operation : every::operationsOf(interface)) {
        if (partOf(operation.name) != part)
            continue;
        for (const OperationCall& tried : waysToRepeat(interface + '.' + operation.name))
            if (tried.scope == faults::Scope::Caller)
                soakOperation<Interface>(tried, operation, counter);
    }
    print(interface + part, counter);
}

} // namespace

// One test for each interface: they run in parallel.

template <class Interface>
class SoakOf : public testing::Test {
};

TYPED_TEST_SUITE(SoakOf, every::Interfaces<testing::Types>, every::Names);

TYPED_TEST(SoakOf, LeavesItAsItWas)
{
    soak<TypeParam>();
}

TEST(Soak, LeavesFpgaUpgradesAsTheyWere)
{
    soak<FirmwareUpgrade>("Fpga");
}
TEST(Soak, LeavesSupervisorUpgradesAsTheyWere)
{
    soak<FirmwareUpgrade>("SS");
}
TEST(Soak, LeavesFrontUpgradesAsTheyWere)
{
    soak<FirmwareUpgrade>("Front");
}

/// Runs that end early: thousands of threads start and end, without bootloader traffic.
TEST(Soak, LeavesThreadedRunsThatFailAsTheyWere)
{
    using Start = eErr (FirmwareUpgrade::*)(const char*, bool);
    Counter counter;
    for (const Start start : {&FirmwareUpgrade::startFpgaUpgrade, &FirmwareUpgrade::startFpgaVerification}) {
        SimulatedUnit unit{"fpga.status = 1"};
        startMeasurement();
        FirmwareUpgrade* const upgrade = GetFirmwareUpgrade();
        const auto round = [&] {
            const eErr answer = (upgrade->*start)("/opt/etc/none.mcs", false);
            unit.sleepFor(1000);
            waitForThreads();
            UpgradeStatus status{};
            bool failed = false;
            for (int i = 0; i < 10 && !failed; ++i) {
                (void)upgrade->getUpgradeStatus(&status, false);
                failed = status.action == UpgradeActionFailed;
            }
            return answer == ERR_SUCCESS && failed;
        };
        repeat("threaded run that fails", unit, round, counter);
        upgrade->Release();
    }
    print("threaded runs that fail", counter);
}

/// The object is released while its thread is still running.
TEST(Soak, LeavesObjectsThatAreReleasedInABeepOrAnAveragingAsTheyWere)
{
    Counter counter;
    SimulatedUnit unit;
    startMeasurement();
    const auto beep = [&] {
        Buzzer* const buzzer = GetBuzzer();
        const eErr answer = buzzer->buzze(200, false);
        buzzer->Release();
        unit.sleepFor(500);
        waitForThreads();
        return answer == ERR_SUCCESS;
    };
    repeat("Buzzer released in a beep", unit, beep, counter);
    const auto average = [&] {
        Lightsensor* const sensor = GetLightsensor();
        const eErr answer = sensor->startAverageCalc(2, 2, 50, SamplingModeAuto);
        (void)sensor->stopAverageCalc();
        sensor->Release();
        waitForThreads();
        return answer == ERR_SUCCESS;
    };
    repeat("Lightsensor with an averaging", unit, average, counter);
    print("objects released early", counter);
}

TEST(Soak, LeavesTheFunctionsAsTheyWere)
{
    SimulatedUnit unit;
    startMeasurement();
    Counter counter;
    const std::map<std::string, std::function<bool()>> functions{
        {"GetErrorStringA", [] { return GetErrorStringA(ERR_OPEN_FAILED) != nullptr; }},
        {"GetErrorStringW", [] { return GetErrorStringW(ERR_OPEN_FAILED) != nullptr; }},
        {"GetHwErrorStatusStringA", [] { return GetHwErrorStatusStringA(1) != nullptr; }},
        {"GetHwErrorStatusStringW", [] { return GetHwErrorStatusStringW(1) != nullptr; }},
        {"GetStartupReasonStringA", [] { return GetStartupReasonStringA(1) != nullptr; }},
        {"GetStartupReasonStringW", [] { return GetStartupReasonStringW(1) != nullptr; }},
        {"DoesSystemHaveAtLeastFPGAVersion", [] { return DoesSystemHaveAtLeastFPGAVersion(0, 0, 0, 0); }},
        {"DoesSystemHaveAtLeastSSVersion", [] { return DoesSystemHaveAtLeastSSVersion(0, 0, 0, 0); }},
        {"DoesSystemHaveAtLeastFrontVersion", [] { return DoesSystemHaveAtLeastFrontVersion(0, 0, 0, 0); }},
        {"JidaLinuxInitialize", [] { return JidaLinuxInitialize(); }},
    };
    for (const auto& [name, call] : functions)
        repeat(name, unit, call, counter);
    print("functions", counter);
}

} // namespace soak
