// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/backlight/Service.h"

#include <gtest/gtest.h>

#include <map>

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using Values = std::map<std::string, std::string>;

const char* const kKeys[] = {"ABL_averageWndSize",   "ABL_bSoftTransitions", "ABL_k",     "ABL_mode",
                             "ABL_rejectDeltaInLux", "ABL_rejectWndSize",    "ABL_status"};

Values defaults()
{
    return {{"ABL_averageWndSize", "5"},    {"ABL_bSoftTransitions", "1"}, {"ABL_k", "50"},    {"ABL_mode", "2"},
            {"ABL_rejectDeltaInLux", "50"}, {"ABL_rejectWndSize", "5"},    {"ABL_status", "0"}};
}

/// Valid settings that are not the defaults.
Values others()
{
    return {{"ABL_averageWndSize", "9"},    {"ABL_bSoftTransitions", "0"}, {"ABL_k", "33.5"},  {"ABL_mode", "1"},
            {"ABL_rejectDeltaInLux", "70"}, {"ABL_rejectWndSize", "3"},    {"ABL_status", "1"}};
}

std::string fileOf(const Values& values)
{
    std::string text;
    for (const auto& [key, value] : values)
        text += key + "=" + value + "\n";
    return text;
}

Values stored(SimulatedUnit& unit)
{
    Values values;
    for (const char* key : kKeys)
        values[key] = setting(unit, key);
    return values;
}

void serveShortly(SimulatedUnit& unit, const std::string& settings)
{
    Service service{unit, settings};
    unit.sleepFor(5000);
}

} // namespace

TEST(ControllerSettings, OfAFirstStartAreWrittenWithTheirDefaultsByteForByte)
{
    SimulatedUnit unit;

    serveShortly(unit, "");

    EXPECT_EQ(unit.settings(), "ABL_averageWndSize=5\nABL_bSoftTransitions=1\nABL_k=50\nABL_mode=2\n"
                               "ABL_rejectDeltaInLux=50\nABL_rejectWndSize=5\nABL_status = 0\n");
}

TEST(ControllerSettings, ThatAreGoodAreNotRewritten)
{
    SimulatedUnit unit;
    const std::string text = "; kept by hand\n" + fileOf(others());

    serveShortly(unit, text);

    EXPECT_EQ(unit.settings(), text);
}

TEST(ControllerSettings, OfWhichOneIsNotANumberAreRepairedWithItsDefaultAlone)
{
    for (const char* key : kKeys)
        for (const char* nonsense : {"", "x", "auto", "--1", "e5"}) {
            SimulatedUnit unit;
            Values given = others();
            given[key] = nonsense;
            Values expected = others();
            expected[key] = defaults()[key];

            serveShortly(unit, fileOf(given));

            EXPECT_EQ(stored(unit), expected) << key << " = '" << nonsense << "'";
        }
}

TEST(ControllerSettings, OfWhichOneIsMissingAreCompleted)
{
    for (const char* key : kKeys) {
        SimulatedUnit unit;
        Values given = others();
        given.erase(key);
        Values expected = others();
        expected[key] = defaults()[key];

        serveShortly(unit, fileOf(given));

        EXPECT_EQ(stored(unit), expected) << key;
    }
}

TEST(ControllerSettings, FullOfNonsenseBecomeTheDefaults)
{
    SimulatedUnit unit;
    Values given;
    for (const char* key : kKeys)
        given[key] = std::string(5000, '#');

    serveShortly(unit, fileOf(given));

    EXPECT_EQ(stored(unit), defaults());
}

TEST(ControllerSettings, AreRepairedInSevenWritesOfTheWholeFile)
{
    SimulatedUnit unit;

    serveShortly(unit, "");

    const std::vector<std::string> calls = unit.callsTo("/opt/etc/hxaux.ini");
    EXPECT_EQ(
        std::count_if(calls.begin(), calls.end(), [](const std::string& call) { return call.starts_with("fopen w"); }),
        7)
        << testing::PrintToString(calls);
}

TEST(ControllerSettings, AreHeldFromTheReadingToTheLastWriteOfARepair)
{
    SimulatedUnit unit;

    serveShortly(unit, "");

    std::vector<std::string> calls;
    for (const std::string& call : unit.journal())
        if (call.starts_with(kFileLock + " sem_wait") || call.starts_with(kFileLock + " sem_post") ||
            call.starts_with("/opt/etc/hxaux.ini fopen w"))
            calls.push_back(call);
    ASSERT_GE(calls.size(), 9U);
    EXPECT_EQ(calls[0], kFileLock + " sem_wait");
    EXPECT_THAT(std::vector<std::string>(calls.begin() + 1, calls.begin() + 8),
                testing::Each(testing::StartsWith("/opt/etc/hxaux.ini fopen w")));
    EXPECT_EQ(calls[8], kFileLock + " sem_post");
}

TEST(ControllerSettings, WithANonsenseSlopeTakeTheDefaultSlope)
{
    for (const char* slope : {"nan", "inf", "-inf", "1e999", "steep"}) {
        SimulatedUnit unit;
        shine(unit, 100);
        Values given = others();
        given["ABL_k"] = slope;

        serveShortly(unit, fileOf(given));

        EXPECT_EQ(setting(unit, "ABL_k"), "50") << slope;
    }
}

TEST(ControllerSettings, WithAnUnreadableStatusLeaveTheBacklightAlone)
{
    SimulatedUnit unit;

    serveShortly(unit, abl({}) + "ABL_status=on\n");

    EXPECT_THAT(unit.requestsTo(kSensorDevice), IsEmpty());
    EXPECT_EQ(setting(unit, "ABL_status"), "0");
}

TEST(ControllerSettings, WithAModeOfSevenKeepTheSensorsRangeAndRun)
{
    SimulatedUnit unit;
    shine(unit, 100);

    serveShortly(unit, abl({.soft = false, .mode = 7}));

    EXPECT_EQ(unit.get("backlight.level"), "220");
    EXPECT_EQ(setting(unit, "ABL_mode"), "7");
}

TEST(ControllerSettings, WithAWindowOrSpreadOfZeroDoNotStartAndReserveNothing)
{
    for (const Abl& settings : {Abl{.average = 0}, Abl{.delta = 0}}) {
        SimulatedUnit unit;
        forgetLogs();
        Service service{unit, abl(settings)};
        unit.sleepFor(5000);
        EXPECT_THAT(controllerLog(), Contains("Error startAverageCalc\n"));
        EXPECT_THAT(controllerLog(), Not(Contains("Error ERR_AVERAGE_CALC_STARTED, sleep(1000)\n")));

        shine(unit, 100);
        service.backlight->setAutomaticBLFilter(1, 0, 50, SamplingModeAuto);
        service.backlight->setAutomaticBLParams(false);
        unit.sleepFor(8000);

        EXPECT_EQ(unit.get("backlight.level"), "220");
    }
}

TEST(ControllerSettings, WithAWindowBeyondMemoryLeaveTheThreadAliveAndTheAveragingReserved)
{
    SimulatedUnit unit;
    forgetLogs();
    Service service{unit, abl({.average = 4294967295U})};

    unit.sleepFor(5000);

    EXPECT_THAT(controllerLog(), Contains("Error startAverageCalc\n"));
    EXPECT_THAT(controllerLog(), Contains("Error ERR_AVERAGE_CALC_STARTED, sleep(1000)\n"));
    Released<Lightsensor> sensor{GetLightsensor()};
    EXPECT_EQ(sensor->startAverageCalc(1, 0, 1, SamplingModeAuto), ERR_AVERAGE_CALC_STARTED);
}

TEST(ControllerSettings, WithWindowsOfOneFollowEverySample)
{
    SimulatedUnit unit;
    Service service{unit, abl({.soft = false, .average = 1, .reject = 1})};
    shine(unit, 100);
    unit.sleepFor(4000);
    EXPECT_EQ(unit.get("backlight.level"), "220");

    shine(unit, 20);
    unit.sleepFor(1600);

    EXPECT_EQ(unit.get("backlight.level"), "139");
}

TEST(ControllerSettings, AreLoggedInTheOrderOfTheirConversion)
{
    SimulatedUnit unit;
    forgetLogs();

    serveShortly(unit, "");

    const std::vector<std::string> log = controllerLog();
    ASSERT_GE(log.size(), 13U);
    EXPECT_THAT(std::vector<std::string>(log.begin(), log.begin() + 13),
                ElementsAre("Sema create ok\n", "startThread\n", "Main started\n", "Read settings\n",
                            "Error s_mode 4\n", "Error s_averageWndSize 4\n", "Error s_rejectWndSize 4\n",
                            "Error s_rejectDeltaInLux 4\n", "Error s_k 4\n", "Error s_enabled 4\n",
                            "Error s_bSoftTransitions 4\n", "Mode 2\n", "Execute 0\n"));
}

TEST(ControllerLog, OfARunWithAStepAndALessonIsExact)
{
    SimulatedUnit unit;
    shine(unit, 100);
    forgetLogs();
    Service service{unit, abl({.soft = false})};
    unit.sleepFor(1600); // measures with the sampler's first sample still to come, then with it
    unit.set("backlight.level", 100);
    unit.sleepFor(800);
    service.backlight->stopAutomaticBL();
    unit.sleepFor(800 + 70);

    EXPECT_THAT(controllerLog(),
                ElementsAre("Sema create ok\n", "startThread\n", "Main started\n", "Read settings\n", "Mode 2\n",
                            "Execute 1\n", "executeABL started\n", "Time pasted 800\n", "Read settings\n", "Mode 2\n",
                            "Execute 1\n", "firstTime: 128, 128\n", "Calculated y: 24.6574, x: 2.0000, k: 50.0000,\n",
                            "Used y: 24.6574\n", "Change level from 128 to 24\n", "Time pasted 800\n",
                            "Calculated y: 220.2585, x: 100.0000, k: 50.0000,\n", "Used y: 220.2585\n",
                            "Change level from 24 to 220\n", "Time pasted 800\n",
                            "Adaption, dev level 100 current: 220\n", "New y: 100.0000, x: 100.0000, k: 23.8862,\n",
                            "Used y: 100.0000\n", "Time pasted 800\n", "Read settings\n", "Mode 2\n", "Execute 0\n",
                            "Exit the thread\n", "Stop ABL loop\n"));
}

TEST(ControllerLog, CutsALineThatIsLongerThanItsBuffer)
{
    SimulatedUnit unit;
    BacklightController controller;
    unit.writeSettings(abl({.k = "1e308"}));
    forgetLogs();
    ASSERT_EQ(controller.init(), ERR_SUCCESS);

    unit.sleepFor(2400);

    std::size_t longest = 0;
    for (const std::string& line : controllerLog())
        longest = std::max(longest, line.size());
    EXPECT_EQ(longest, 120U);
}
