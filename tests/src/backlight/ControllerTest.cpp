// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/backlight/Service.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

/// A thread that first looks for its unit after the unit has gone would end the program.
void waitUntilTheThreadWaits(SimulatedUnit& unit)
{
    unit.sleepFor(1); // time moves only when every thread waits
}

std::size_t startedThreads(SimulatedUnit& unit)
{
    return unit.callsTo("thread").size();
}

/// Descriptors of the light sensor that were opened and not closed.
std::size_t openSensors(SimulatedUnit& unit)
{
    const std::vector<std::string> calls = unit.callsTo("/dev/lightsensor");
    const auto closed = std::ranges::count(calls, "close");
    const auto opened = std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("open "); });
    return static_cast<std::size_t>(opened - closed);
}

bool averagingIsFree()
{
    Released<Lightsensor> sensor{GetLightsensor()};
    const bool isFree = sensor->startAverageCalc(1, 0, 1, SamplingModeAuto) == ERR_SUCCESS;
    if (isFree)
        sensor->stopAverageCalc();
    return isFree;
}

} // namespace

TEST(Controller, InitWaitsThenTakesTheSensorThenStartsItsThread)
{
    SimulatedUnit unit;
    BacklightController controller;
    unit.clearJournal();

    EXPECT_EQ(controller.init(), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), InOrder({"/hxSema.XXXXXX sem_trywait", "sleep 800 ms",
                                         "/dev/lightsensor open rdwr nonblock", "thread start"}));
    waitUntilTheThreadWaits(unit);
}

TEST(Controller, SecondInitIsRefusedAtOnceAndStartsNothing)
{
    SimulatedUnit unit;
    BacklightController controller;
    ASSERT_EQ(controller.init(), ERR_SUCCESS);
    const std::int64_t before = unit.now();

    EXPECT_EQ(controller.init(), ERR_INIT_FAILED);

    EXPECT_EQ(unit.now(), before);
    EXPECT_EQ(startedThreads(unit), 1U);
    waitUntilTheThreadWaits(unit);
}

TEST(Controller, InitWithoutAThreadMayBeRepeated)
{
    SimulatedUnit unit;
    BacklightController controller;
    unit.fail("thread", "start", EAGAIN, 1);

    EXPECT_EQ(controller.init(), ERR_CREATE_THREAD);
    EXPECT_EQ(controller.init(), ERR_SUCCESS);

    EXPECT_EQ(controller.init(), ERR_INIT_FAILED);
    waitUntilTheThreadWaits(unit);
}

TEST(Controller, InitThatIsRepeatedHoldsOneLightSensor)
{
    SimulatedUnit unit;
    BacklightController controller;
    unit.fail("thread", "start", EAGAIN, 2);
    EXPECT_EQ(controller.init(), ERR_CREATE_THREAD);
    const std::size_t afterOne = openSensors(unit);

    EXPECT_EQ(controller.init(), ERR_CREATE_THREAD);
    EXPECT_EQ(openSensors(unit), afterOne);
    EXPECT_EQ(controller.init(), ERR_SUCCESS);

    EXPECT_EQ(openSensors(unit), afterOne);
    waitUntilTheThreadWaits(unit);
}

TEST(Controller, WithoutItsThreadReleasesEverything)
{
    SimulatedUnit unit;
    {
        BacklightController controller;
        unit.fail("thread", "start", EAGAIN, 1);
        ASSERT_EQ(controller.init(), ERR_CREATE_THREAD);
        unit.clearJournal();
    }

    EXPECT_THAT(unit.journal(),
                Requests("/dev/lightsensor close", "sleep 70 ms", kAveragingLock + " sem_close",
                         "/dev/lightsensor close", "/hxSema.XXXXXX sem_close", kNewSettings + " sem_close",
                         "/hxSema.XXXXXX sem_close", "/dev/backlight close"));
}

TEST(Controller, ThatWasNeverInitialisedClosesItsSemaphoresAndItsDevice)
{
    SimulatedUnit unit;
    {
        BacklightController controller;
        unit.clearJournal();
    }

    EXPECT_THAT(unit.journal(),
                Requests(kNewSettings + " sem_close", "/hxSema.XXXXXX sem_close", "/dev/backlight close"));
}

TEST(Controller, DestroyedWhileItsThreadRunsLeavesTheThreadWhatItUses)
{
    SimulatedUnit unit;
    unit.writeSettings(abl({.soft = false}));
    {
        BacklightController controller;
        ASSERT_EQ(controller.init(), ERR_SUCCESS);
    }
    shine(unit, 100);

    unit.sleepFor(8000);

    EXPECT_EQ(unit.get("backlight.level"), "220");
    EXPECT_THAT(unit.callsTo(kBacklightDevice), Not(Contains("close")));
}

TEST(ControllerLoop, SetsTheLevelOfTheCurve)
{
    const std::pair<unsigned, const char*> kRows[] = {{0, "24"},   {1, "24"},    {2, "24"},    {10, "105"},
                                                      {50, "185"}, {100, "220"}, {200, "254"}, {1000, "254"}};
    for (const auto& [lux, level] : kRows) {
        SimulatedUnit unit;
        shine(unit, lux);
        Service service{unit, abl({.soft = false})};

        unit.sleepFor(8000);

        EXPECT_EQ(unit.get("backlight.level"), level) << lux << " lux";
    }
}

TEST(ControllerLoop, WithANegativeSlopeSetsZero)
{
    SimulatedUnit unit;
    shine(unit, 200);
    Service service{unit, abl({.k = "-50", .soft = false})};

    unit.sleepFor(8000);

    EXPECT_EQ(unit.get("backlight.level"), "0");
}

TEST(ControllerLoop, MeasuresEveryEightHundredMilliseconds)
{
    SimulatedUnit unit;
    Service service{unit, abl({.soft = false})};
    unit.sleepFor(4000);
    unit.clearJournal();

    unit.sleepFor(8000);

    EXPECT_THAT(timesOf(unit, "0x80010002"), AreApart(800, 10U));
}

TEST(ControllerLoop, WritesNothingWhenTheLevelIsRight)
{
    SimulatedUnit unit;
    Service service{unit, abl({.soft = false})};
    unit.sleepFor(8000);
    unit.clearJournal();

    unit.sleepFor(8000);

    EXPECT_THAT(levelsWritten(unit), IsEmpty());
}

TEST(ControllerSoftTransition, FromOneHundredToOneHundredAndTenIsTenWritesFiftyMillisecondsApart)
{
    SimulatedUnit unit;
    Service service{unit, abl({.k = "20"})};
    shineForLevel(unit, 20, 100);
    unit.sleepFor(30000);
    ASSERT_EQ(unit.get("backlight.level"), "100");
    unit.clearJournal();

    shineForLevel(unit, 20, 110);
    unit.sleepFor(5000);

    EXPECT_THAT(levelsWritten(unit), ElementsAre(101, 102, 103, 104, 105, 106, 107, 108, 109, 110));
    EXPECT_THAT(timesOf(unit, "0x40010003"), AreApart(50, 10U));
}

TEST(ControllerSoftTransition, ThatIsReachedSleepsOutThePeriod)
{
    SimulatedUnit unit;
    Service service{unit, abl({.k = "20"})};
    shineForLevel(unit, 20, 100);
    unit.sleepFor(30000);
    unit.clearJournal();

    shineForLevel(unit, 20, 103);
    unit.sleepFor(5000);

    EXPECT_THAT(timesOf(unit, "0x80010002"), AreApart(800));
    EXPECT_THAT(unit.callsTo("sleep"), Contains("700 ms"));
}

TEST(ControllerSoftTransition, AcrossTheWholeRangeTakesTwelveSecondsAndSevenTenths)
{
    SimulatedUnit unit{"backlight.level = 0"};
    shine(unit, 1000);
    Service service{unit, abl({.k = "-50"})};
    unit.sleepFor(8000);
    ASSERT_EQ(unit.get("backlight.level"), "0");
    unit.clearJournal();

    service.learns("50");
    unit.sleepFor(20000);

    const std::vector<std::int64_t> times = timesOf(unit, "0x40010003");
    ASSERT_EQ(times.size(), 254U);
    EXPECT_EQ(times.back() - times.front(), 253 * 50);
    EXPECT_THAT(timesOf(unit, "0x80010002"), AreApart(800));
}

TEST(ControllerSoftTransition, IsAimedAgainAtEachMeasurementOnTheWay)
{
    SimulatedUnit unit;
    Service service{unit, abl({.k = "20"})};
    shineForLevel(unit, 20, 60);
    unit.sleepFor(30000);
    ASSERT_EQ(unit.get("backlight.level"), "60");
    unit.clearJournal();

    shineForLevel(unit, 20, 120);
    unit.sleepFor(1700); // one sample, and more than one period of sixteen steps
    shineForLevel(unit, 20, 60);
    unit.sleepFor(10000);

    const std::vector<int> levels = levelsWritten(unit);
    const int highest = *std::max_element(levels.begin(), levels.end());
    EXPECT_GT(highest, 60 + 15);
    EXPECT_LT(highest, 120);
    EXPECT_EQ(levels.back(), 60);
    EXPECT_THAT(timesOf(unit, "0x40010003"), testing::Each(testing::Ge(0)));
}

TEST(ControllerTransitionAtOnce, IsOneWrite)
{
    SimulatedUnit unit;
    Service service{unit, abl({.k = "20", .soft = false})};
    shineForLevel(unit, 20, 100);
    unit.sleepFor(8000);
    unit.clearJournal();

    shineForLevel(unit, 20, 110);
    unit.sleepFor(5000);

    EXPECT_THAT(levelsWritten(unit), ElementsAre(110));
}

TEST(ControllerLearning, OfLevelOneHundredAtFiftyLuxStoresTheSlopeAndHolds)
{
    SimulatedUnit unit;
    shine(unit, 50);
    Service service{unit, abl({})};
    unit.sleepFor(30000);
    ASSERT_EQ(unit.get("backlight.level"), "185");
    unit.clearJournal();

    unit.set("backlight.level", 100);
    unit.sleepFor(8000);

    EXPECT_EQ(setting(unit, "ABL_k"), "28.1184");
    EXPECT_EQ(unit.get("backlight.level"), "100");
    EXPECT_THAT(levelsWritten(unit), IsEmpty());
}

TEST(ControllerLearning, FallsOneShortOnceTheStoredSlopeIsReadAgain)
{
    SimulatedUnit unit;
    shine(unit, 50);
    Service service{unit, abl({})};
    unit.sleepFor(30000);
    unit.set("backlight.level", 100);
    unit.sleepFor(8000);

    service.backlight->setAutomaticBLParams(true); // any notification makes it read the six digits of the file
    unit.sleepFor(8000);

    EXPECT_EQ(unit.get("backlight.level"), "99");
}

TEST(ControllerLearning, DoesNotNotify)
{
    SimulatedUnit unit;
    shine(unit, 50);
    Service service{unit, abl({})};
    unit.sleepFor(30000);
    unit.clearJournal();

    unit.set("backlight.level", 100);
    unit.sleepFor(8000);

    EXPECT_THAT(unit.callsTo(kNewSettings), Not(Contains("sem_post")));
}

TEST(ControllerLearning, MissesALevelThatTheNextStepOfASoftTransitionOverwrites)
{
    SimulatedUnit unit;
    shine(unit, 50);
    Service service{unit, abl({})};
    unit.sleepFor(30000);
    shine(unit, 1000);
    unit.sleepFor(2000);

    unit.set("backlight.level", 10);
    unit.sleepFor(8000);

    EXPECT_EQ(setting(unit, "ABL_k"), "50");
    EXPECT_EQ(unit.get("backlight.level"), "254");
}

TEST(ControllerLearning, OfTheBrightestLevelIsHeldAtTheCeiling)
{
    SimulatedUnit unit;
    shine(unit, 50);
    Service service{unit, abl({.soft = false})};
    unit.sleepFor(8000);

    unit.set("backlight.level", 255);
    unit.sleepFor(8000);

    EXPECT_EQ(unit.get("backlight.level"), "254");
}

TEST(ControllerLearning, DoesNotHappenAtTheFirstMeasurement)
{
    SimulatedUnit unit{"backlight.level = 3"};
    shine(unit, 50);
    Service service{unit, abl({.soft = false})};

    unit.sleepFor(8000);

    EXPECT_EQ(setting(unit, "ABL_k"), "50");
    EXPECT_EQ(unit.get("backlight.level"), "185");
}

TEST(ControllerSwitch, OnStartsTheLoopAndOffEndsItWithinOnePass)
{
    SimulatedUnit unit;
    shine(unit, 100);
    Service service{unit, abl({.on = false, .soft = false})};
    unit.sleepFor(8000);
    EXPECT_THAT(unit.requestsTo(kSensorDevice), IsEmpty());

    service.backlight->startAutomaticBL();
    unit.sleepFor(4000);
    EXPECT_EQ(unit.get("backlight.level"), "220");
    service.backlight->stopAutomaticBL();
    unit.sleepFor(800 + 70);

    EXPECT_TRUE(averagingIsFree());
}

TEST(ControllerSwitch, ReadsTheSettingsOnceMoreForTheCountOfAFreshSemaphore)
{
    SimulatedUnit unit;
    Service service{unit, abl({.on = false})};

    unit.settle();

    EXPECT_EQ(settingsReads(unit), 2U);
}

TEST(ControllerSwitch, KeepsWaitingWhenASignalEndsItsWait)
{
    SimulatedUnit unit;
    unit.fail(kNewSettings, "sem_wait", EINTR, 2);
    Service service{unit, abl({.on = false})};

    unit.settle();
    EXPECT_THAT(unit.journal(), Contains(HasSubstr("sem_wait !EINTR")));
    EXPECT_EQ(settingsReads(unit), 2U);
    forgetLogs();
    service.backlight->setAutomaticBLParams(true);
    unit.settle();

    EXPECT_THAT(controllerLog(), Contains("Read settings\n").Times(1));
}

TEST(ControllerSwitch, ReadsTheSettingsOnceForEachNotice)
{
    SimulatedUnit unit;
    Service service{unit, abl({.on = false})};
    unit.settle();
    forgetLogs();

    for (int i = 0; i < 3; ++i)
        service.backlight->setAutomaticBLParams(true);
    unit.settle();

    const std::vector<std::string> log = controllerLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "Read settings\n"), 3);
}

TEST(ControllerSwitch, TakesANewTransitionInMidRunAndANewFilterOnlyAtTheNextStart)
{
    SimulatedUnit unit;
    shine(unit, 100);
    Service service{unit, abl({.average = 1, .reject = 0, .delta = 1000})};
    unit.sleepFor(30000);
    service.backlight->setAutomaticBLParams(false);
    service.backlight->setAutomaticBLFilter(2, 0, 1000, SamplingModeAuto);
    unit.sleepFor(800);
    unit.clearJournal();

    shine(unit, 20);
    unit.sleepFor(1600);
    EXPECT_THAT(levelsWritten(unit), ElementsAre(139)); // at once, not averaged with the previous light
    service.backlight->stopAutomaticBL();
    unit.sleepFor(1600);
    service.backlight->startAutomaticBL();
    unit.sleepFor(4000);
    unit.clearJournal();
    shine(unit, 100);
    unit.sleepFor(3200);

    EXPECT_THAT(levelsWritten(unit), ElementsAre(194, 220)); // 60 lux in between
}

TEST(ControllerBusy, TriesAgainEverySecondWhileAnotherAverages)
{
    SimulatedUnit unit;
    shine(unit, 100);
    Released<Lightsensor> other{GetLightsensor()};
    ASSERT_EQ(other->startAverageCalc(1, 0, 1, SamplingModeAuto), ERR_SUCCESS);
    Service service{unit, abl({.soft = false})};
    unit.clearJournal();
    unit.sleepFor(9500);
    const std::vector<std::string> sleeps = unit.callsTo("sleep");
    EXPECT_EQ(std::count(sleeps.begin(), sleeps.end(), "1000 ms"), 10);
    EXPECT_THAT(levelsWritten(unit), IsEmpty());

    other->stopAverageCalc();
    unit.sleepFor(4000);

    EXPECT_EQ(unit.get("backlight.level"), "220");
}

TEST(ControllerFault, OfAnyRequestEndsTheLoopUntilTheNextNotification)
{
    const std::pair<std::string, std::uint32_t> kRows[] = {{kBacklightDevice, 0x80010002},
                                                           {kBacklightDevice, 0x40010003},
                                                           {kSensorDevice, 0x80020048},
                                                           {kSensorDevice, 0x80010049}};
    for (const auto& [node, request] : kRows) {
        SimulatedUnit unit;
        shine(unit, 100);
        Service service{unit, abl({.soft = false, .average = 1, .reject = 0})};
        unit.sleepFor(8000);
        unit.fail(node, request, EIO, 1);
        shine(unit, 20);
        unit.sleepFor(8000);
        EXPECT_EQ(unit.get("backlight.level"), "220") << node << ' ' << request;
        EXPECT_EQ(setting(unit, "ABL_status"), "1");
        EXPECT_TRUE(averagingIsFree());

        service.backlight->startAutomaticBL();
        unit.sleepFor(8000);

        EXPECT_EQ(unit.get("backlight.level"), "139") << node << ' ' << request;
    }
}

TEST(ControllerFault, OfTheStartLeavesTheAveragingTakenForever)
{
    SimulatedUnit unit;
    Service service{unit, abl({})};
    unit.sleepFor(8000);
    service.backlight->stopAutomaticBL();
    unit.sleepFor(1600);
    unit.fail(kSensorDevice, 0x4001004A, EIO, 1);
    forgetLogs();

    service.backlight->startAutomaticBL();
    unit.sleepFor(1000);
    EXPECT_THAT(controllerLog(), Contains("Error startAverageCalc\n"));
    service.backlight->startAutomaticBL();
    unit.sleepFor(60000);

    EXPECT_FALSE(averagingIsFree());
    const std::vector<std::string> log = controllerLog();
    EXPECT_GE(std::count(log.begin(), log.end(), "Error ERR_AVERAGE_CALC_STARTED, sleep(1000)\n"), 60);
}

TEST(ControllerFault, WithoutTheBacklightDeviceEndsAtTheFirstMeasurement)
{
    SimulatedUnit unit{"absent = /dev/backlight"};
    forgetLogs();
    Service service{unit, abl({})};

    unit.sleepFor(8000);

    EXPECT_THAT(controllerLog(), Contains("Error getIntensity\n"));
    EXPECT_TRUE(averagingIsFree());
}

TEST(ControllerFault, WithoutTheSensorIsLoggedAndTheThreadLives)
{
    SimulatedUnit unit{"absent = /dev/lightsensor"};
    forgetLogs();
    Service service{unit, abl({})};
    unit.sleepFor(8000);
    EXPECT_THAT(controllerLog(), Contains("Error startAverageCalc\n"));
    forgetLogs();

    service.backlight->stopAutomaticBL();
    unit.sleepFor(2000);

    // It waits for the averaging lock of its own failed start.
    EXPECT_THAT(controllerLog(), testing::Each("Error ERR_AVERAGE_CALC_STARTED, sleep(1000)\n"));
    EXPECT_THAT(controllerLog(), testing::SizeIs(2));
}

TEST(ControllerFault, OfTheSemaphoreIsLoggedAndTheFileIsPolled)
{
    SimulatedUnit unit;
    unit.fail(kNewSettings, "sem_open");
    forgetLogs();
    Service service{unit, abl({.on = false})};
    EXPECT_THAT(controllerLog(), Contains("Sema create error\n"));
    forgetLogs();

    unit.sleepFor(10000);

    const std::vector<std::string> log = controllerLog();
    EXPECT_NEAR(static_cast<double>(std::count(log.begin(), log.end(), "Read settings\n")), 10, 1);
}
