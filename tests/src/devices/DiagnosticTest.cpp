// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Diagnostic.h"

#include "simulator/model/Supervisor.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace diagnostic_test {

using namespace Halvix;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr const char* kDevice = "/dev/diag-id";
constexpr int kUntouched = 77;

struct Reading : Named {
    eErr (*call)(Diagnostic&, std::vector<int>&);
    std::vector<std::string> requests;
    std::vector<int> values;
};

template <class Value, eErr (Diagnostic::*Getter)(Value*)>
eErr word(Diagnostic& diagnostic, std::vector<int>& values)
{
    auto typed = static_cast<Value>(kUntouched);
    const eErr err = (diagnostic.*Getter)(&typed);
    values = {typed};
    return err;
}

eErr minMax(Diagnostic& diagnostic, std::vector<int>& values)
{
    short first = kUntouched;
    short second = kUntouched;
    const eErr err = diagnostic.getMinMaxTemp(&first, &second);
    values = {first, second};
    return err;
}

eErr timers(Diagnostic& diagnostic, std::vector<int>& values)
{
    TimerType read{};
    std::fill(std::begin(read.seconds), std::end(read.seconds), static_cast<unsigned>(kUntouched));
    const eErr err = diagnostic.getTimer(&read);
    values.assign(std::begin(read.seconds), std::end(read.seconds));
    return err;
}

const std::vector<Reading> kReadings{
    {"getSSTemp", word<short, &Diagnostic::getSSTemp>, {"get 0 -> 65516"}, {-20}},
    {"getPCBTemp", word<short, &Diagnostic::getPCBTemp>, {"get 1 -> 32767"}, {32767}},
    {"getStartupReason", word<unsigned short, &Diagnostic::getStartupReason>, {"get 2 -> 170"}, {0xAA}},
    {"getShutDownReason", word<unsigned short, &Diagnostic::getShutDownReason>, {"get 3 -> 240"}, {0xF0}},
    {"getHwErrorStatus", word<unsigned short, &Diagnostic::getHwErrorStatus>, {"get 4 -> 65535"}, {65535}},
    {"getPowerCycles", word<unsigned short, &Diagnostic::getPowerCycles>, {"get 12 -> 50000"}, {50000}},
    {"getMinMaxTemp", minMax, {"get 14 -> 16", "get 13 -> 80"}, {80, 16}},
    {"getTimer",
     timers,
     {"get 8 -> 1", "get 7 -> 2", "get 9 -> 3", "get 11 -> 5", "get 10 -> 4", "get 23 -> 0", "get 24 -> 6",
      "get 15 -> 7", "get 16 -> 8", "get 17 -> 9", "get 18 -> 10", "get 19 -> 11", "get 20 -> 12", "get 21 -> 13",
      "get 22 -> 14"},
     {(65536 + 2) * 60 + 3, 245, 6, 428, 550, 672, 794}},
};

/// The unit of the rows: distinct values that need their signs and high bits.
constexpr const char* kDescription = "diagnostics.ss-temp = -20\n"
                                     "diagnostics.pcb-temp = 32767\n"
                                     "diagnostics.startup-reason = 170\n"
                                     "diagnostics.shutdown-reason = 240\n"
                                     "diagnostics.error = 65535\n"
                                     "diagnostics.power-cycles = 50000\n"
                                     "diagnostics.lowest = 16\n"
                                     "diagnostics.highest = 80\n"
                                     "diagnostics.time.0 = 3932283\n"
                                     "diagnostics.time.1 = 245\n"
                                     "diagnostics.time.2 = 6\n"
                                     "diagnostics.time.3 = 428\n"
                                     "diagnostics.time.4 = 550\n"
                                     "diagnostics.time.5 = 672\n"
                                     "diagnostics.time.6 = 794\n";

/// "get 3" of "get 3 -> 240".
std::string callOf(const std::string& request)
{
    return request.substr(0, request.find(' ', request.find(' ') + 1));
}

class DiagnosticReading : public hxtest::TestWithRow<Reading> {};
TEST_ROWS_IN(Every, DiagnosticReading, kNameOfRow, kReadings);

ROW_TEST(DiagnosticReading, TakesItsRegistersInOrder)
{
    SimulatedUnit unit{kDescription};
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    std::vector<int> values;

    EXPECT_EQ(row().call(*diagnostic, values), ERR_SUCCESS);

    EXPECT_EQ(values, row().values);
    EXPECT_THAT(unit.requestsTo(kDevice), ElementsAreArray(row().requests));
}

ROW_TEST(DiagnosticReading, WorksOnceTheDeviceIsThere)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "open", ENOENT, 1);
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    std::vector<int> values;

    EXPECT_EQ(row().call(*diagnostic, values), ERR_OPEN_FAILED);
    EXPECT_THAT(values, testing::Each(kUntouched));

    EXPECT_EQ(row().call(*diagnostic, values), ERR_SUCCESS);
}

ROW_TEST(DiagnosticReading, LeavesItsOutputsWhenTheDriverRefusesAnyRead)
{
    for (int read = 0; read < static_cast<int>(row().requests.size()); ++read) {
        SimulatedUnit unit;
        unit.fail(kDevice, callOf(row().requests[static_cast<std::size_t>(read)]));
        Released<Diagnostic> diagnostic{GetDiagnostic()};
        std::vector<int> values;

        EXPECT_EQ(row().call(*diagnostic, values), ERR_IOCTRL_FAILED);

        EXPECT_THAT(values, testing::Each(kUntouched));
        EXPECT_EQ(static_cast<int>(unit.requestsTo(kDevice).size()), read + 1);
    }
}

ROW_TEST(DiagnosticReading, NeedsNoVersion)
{
    SimulatedUnit unit{"version.ss = 0.0.0.0"};
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    std::vector<int> values;

    EXPECT_EQ(row().call(*diagnostic, values), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("/dev/fpga-version"), IsEmpty());
}

TEST(Diagnostic, HandsTheTwoTemperaturesOutCrosswise)
{
    SimulatedUnit unit{{"diagnostics.lowest = 16", "diagnostics.highest = 80"}};
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    short first = 0;
    short second = 0;

    EXPECT_EQ(diagnostic->getMinMaxTemp(&first, &second), ERR_SUCCESS);

    EXPECT_EQ(first, 0x0050);  // register 13, the second word of the answer
    EXPECT_EQ(second, 0x0010); // register 14, the first word
}

TEST(Diagnostic, CountsTheFirstTimePastSixteenBitsOfMinutes)
{
    SimulatedUnit unit{{"diagnostics.time.0 = 3932220", "diagnostics.time.1 = 3932220"}}; // 65537 minutes
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    TimerType timers{};

    EXPECT_EQ(diagnostic->getTimer(&timers), ERR_SUCCESS);

    EXPECT_EQ(timers.seconds[0], 3932220U);
    EXPECT_EQ(timers.seconds[1], 60U);
}

TEST(Diagnostic, ShowsTheLargestTimeWithoutLosingABit)
{
    SimulatedUnit unit{"diagnostics.time.0 = 4294967295"}; // the library's field is 32 bits of seconds
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    TimerType timers{};

    EXPECT_EQ(diagnostic->getTimer(&timers), ERR_SUCCESS);

    EXPECT_EQ(timers.seconds[0], 4294967295U);
}

TEST(Diagnostic, SeesTheCountersRunWithTheUnit)
{
    SimulatedUnit unit;
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    TimerType before{};
    TimerType after{};
    EXPECT_EQ(diagnostic->getTimer(&before), ERR_SUCCESS);

    unit.sleepFor(3600000);
    EXPECT_EQ(diagnostic->getTimer(&after), ERR_SUCCESS);

    EXPECT_EQ(after.seconds[0] - before.seconds[0], 3600U);
    EXPECT_EQ(after.seconds[5], before.seconds[5]); // the fan is off
}

TEST(Diagnostic, ClearsTheHardwareError)
{
    SimulatedUnit unit{"diagnostics.error = 16"};
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    unsigned short error = 77;

    EXPECT_EQ(diagnostic->clearHwErrorStatus(), ERR_SUCCESS);
    EXPECT_EQ(diagnostic->getHwErrorStatus(&error), ERR_SUCCESS);

    EXPECT_EQ(error, 0);
    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 25 = 1", "get 4 -> 0"));
}

TEST(Diagnostic, CannotClearTheErrorWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/diag-id"};
    Released<Diagnostic> diagnostic{GetDiagnostic()};

    EXPECT_EQ(diagnostic->clearHwErrorStatus(), ERR_OPEN_FAILED);
}

TEST(Diagnostic, ReportsWhenTheErrorCouldNotBeCleared)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "put 25");
    Released<Diagnostic> diagnostic{GetDiagnostic()};

    EXPECT_EQ(diagnostic->clearHwErrorStatus(), ERR_IOCTRL_FAILED);
}

TEST(Diagnostic, OpensNothingBeforeItIsUsed)
{
    SimulatedUnit unit;

    GetDiagnostic()->Release();

    EXPECT_THAT(unit.callsTo(kDevice), IsEmpty());
}

TEST(Diagnostic, IsOneObjectForAllItsUsers)
{
    SimulatedUnit unit;
    Diagnostic* first = GetDiagnostic();
    Diagnostic* second = GetDiagnostic();
    EXPECT_EQ(first, second);

    first->Release();
    EXPECT_EQ(second->clearHwErrorStatus(), ERR_SUCCESS);
    second->Release();

    EXPECT_THAT(unit.callsTo(kDevice), Requests("open rdwr nonblock", "put 25 = 1", "close"));
}

// The processor module's sensors.

struct Sensor {
    eErr err;
    short temperature;
    int type;
};

Sensor readSensor(Diagnostic& diagnostic, unsigned char index)
{
    short temperature = kUntouched;
    auto type = static_cast<JidaSensorType>(kUntouched);
    const eErr err = diagnostic.getPMTemp(index, &temperature, &type);
    return {err, temperature, type};
}

Sensor readSensor(unsigned char index)
{
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    return readSensor(*diagnostic, index);
}

TEST(ModuleTemperature, WorksWithoutTheSupervisor)
{
    SimulatedUnit unit{{"absent = /dev/diag-id", "temperature.pm.0 = 45", "temperature.pm.0.type = 3"}};

    const Sensor sensor = readSensor(0);

    EXPECT_EQ(sensor.err, ERR_SUCCESS);
    EXPECT_EQ(sensor.temperature, 45);
    EXPECT_EQ(sensor.type, 3);
    EXPECT_THAT(unit.callsTo(kDevice), IsEmpty());
}

TEST(ModuleTemperature, CutsTheFractionOffTowardZero)
{
    const std::pair<const char*, int> rows[] = {
        {"45.999", 45}, {"-1.5", -1}, {"-0.999", 0}, {"0.999", 0}, {"-40", -40}};
    for (const auto& [celsius, whole] : rows) {
        SimulatedUnit unit;
        unit.set("temperature.pm.0", celsius);

        EXPECT_EQ(readSensor(0).temperature, whole) << celsius;
    }
}

TEST(ModuleTemperature, IsReadByTwoThreadsAtOnce)
{
    SimulatedUnit unit{"temperature.pm.0 = 45"};
    Released<Diagnostic> diagnostic{GetDiagnostic()}; // shared objects are created and released by one thread
    std::atomic<int> wrong{0};
    const auto readOften = [&] {
        for (int i = 0; i < 1000; ++i)
            if (const Sensor sensor = readSensor(*diagnostic, 0); sensor.err != ERR_SUCCESS || sensor.temperature != 45)
                ++wrong;
    };

    std::thread other{readOften};
    readOften();
    other.join();

    EXPECT_EQ(wrong, 0);
}

TEST(ModuleTemperature, TakesOnlyValuesOfStatusOneAndTwo)
{
    for (const int status : {0, 1, 2, 3, 4, 5}) {
        SimulatedUnit unit;
        unit.set("temperature.pm.0.status", status);

        const Sensor sensor = readSensor(0);

        const bool valid = status == 1 || status == 2;
        EXPECT_EQ(sensor.err, valid ? ERR_SUCCESS : ERR_JIDA_TEMP) << status;
        EXPECT_EQ(sensor.temperature == kUntouched, !valid);
        EXPECT_EQ(sensor.type == kUntouched, !valid);
    }
}

TEST(ModuleTemperature, FindsNoSensorBeyondTheBoards)
{
    SimulatedUnit unit{"jida.sensors = 2"};

    EXPECT_EQ(readSensor(1).err, ERR_SUCCESS);
    EXPECT_EQ(readSensor(2).err, ERR_JIDA_TEMP);
}

TEST(ModuleTemperature, FailsWithoutTheBoardLibrary)
{
    SimulatedUnit unit{"absent = libjida.so"};

    const Sensor sensor = readSensor(0);

    EXPECT_EQ(sensor.err, ERR_JIDA_TEMP);
    EXPECT_EQ(sensor.temperature, kUntouched);
}

TEST(ModuleTemperature, FailsWhenTheBoardLibraryRefusesAnyStep)
{
    for (const char* step : {"JidaTemperatureCount", "JidaTemperatureGetCurrent", "JidaTemperatureGetInfo"}) {
        SimulatedUnit unit;
        unit.fail("libjida.so", step);

        const Sensor sensor = readSensor(0);

        EXPECT_EQ(sensor.err, ERR_JIDA_TEMP) << step;
        EXPECT_EQ(sensor.temperature, kUntouched);
        EXPECT_EQ(sensor.type, kUntouched);
    }
}

TEST(ModuleTemperature, OpensTheBoardAgainAtEachCall)
{
    SimulatedUnit unit;
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    short temperature = 0;
    auto type = JidaSensorType0;

    EXPECT_EQ(diagnostic->getPMTemp(0, &temperature, &type), ERR_SUCCESS);
    EXPECT_EQ(diagnostic->getPMTemp(0, &temperature, &type), ERR_SUCCESS);

    const auto calls = unit.callsTo("libjida.so");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "dlopen"), 2);
}

} // namespace

} // namespace diagnostic_test
