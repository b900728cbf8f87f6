// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/sampler.h"

#include "backlight/Lightsensor_Imp.h"
#include "hx-aux/Lightsensor.h"
#include "tests/src/backlight/Given.h"
#include "tests/src/backlight/LogCapture.h"

#include <optional>

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

constexpr std::int64_t kPeriodMs = 800;

/// A running averaging whose samples are taken one by one.
class Averaging {
public:
    Averaging(SimulatedUnit& unit, unsigned long average, unsigned long reject, unsigned long delta,
              LightSensorSamplingMode mode = SamplingModeAuto)
        : unit_{unit}
    {
        forgetLogs();
        EXPECT_EQ(sensor_->startAverageCalc(average, reject, delta, mode), ERR_SUCCESS);
    }
    ~Averaging() { sensor_->stopAverageCalc(); }

    /// The average after a sample of this light.
    std::optional<unsigned> sample(unsigned lux)
    {
        shine(unit_, lux);
        return next();
    }
    std::optional<unsigned> sampleChannels(unsigned ch0, unsigned ch1)
    {
        putChannels(unit_, ch0, ch1);
        return next();
    }
    std::optional<unsigned> next()
    {
        unit_.sleepFor(kPeriodMs);
        unsigned short lux = 0;
        if (sensor_->getAverageIlluminance(&lux) != ERR_SUCCESS)
            return std::nullopt;
        return lux;
    }
    Lightsensor* operator->() { return sensor_.operator->(); }

private:
    SimulatedUnit& unit_;
    Released<Lightsensor> sensor_{GetLightsensor()};
};

std::size_t occurrences(const std::vector<std::string>& lines, const std::string& line)
{
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

constexpr unsigned kTop = 0xFF;    // channel 0 at the top of the converter
constexpr unsigned kDimmer = 0x80; // channel 1 at nothing

} // namespace

TEST(Sampler, FirstSampleFillsTheWindows)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 5, 5, 50};

    EXPECT_EQ(averaging.sample(100), 100U);
}

TEST(Sampler, WithoutRejectionAveragesEverySample)
{
    SimulatedUnit unit;
    for (const unsigned long reject : {0UL, 1UL}) {
        Averaging averaging{unit, 5, reject, 50};

        EXPECT_EQ(averaging.sample(100), 100U);
        EXPECT_EQ(averaging.sample(100), 100U);
        EXPECT_EQ(averaging.sample(100), 100U);
        EXPECT_EQ(averaging.sample(600), 200U);
    }
}

TEST(Sampler, RejectsASampleFarFromItsNeighbours)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 5, 5, 50};
    for (int i = 0; i < 3; ++i)
        averaging.sample(100);

    EXPECT_EQ(averaging.sample(600), 100U);

    EXPECT_EQ(occurrences(samplerLog(), "Sample rejected\n"), 1U);
}

TEST(Sampler, StaysUnchangedAfterAStepUntilTheRejectWindowHoldsTheNewLight)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 3, 50};
    averaging.sample(100);

    EXPECT_EQ(averaging.sample(600), 100U);
    EXPECT_EQ(averaging.sample(600), 100U);
    EXPECT_EQ(averaging.sample(600), 600U);
}

TEST(Sampler, ARejectedFlashCountsAgainstLaterSamplesUntilItLeavesTheWindow)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 3, 10};
    averaging.sample(100);
    averaging.sample(600);

    EXPECT_EQ(averaging.sample(105), 100U);
    EXPECT_EQ(averaging.sample(105), 100U);
    EXPECT_EQ(averaging.sample(105), 105U);
}

TEST(Sampler, AcceptsASpreadEqualToTheLimit)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 2, 50};
    averaging.sample(100);

    EXPECT_EQ(averaging.sample(150), 150U);
    EXPECT_EQ(averaging.sample(201), 150U);
}

TEST(Sampler, TruncatesTheAverage)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 3, 0, 50};
    averaging.sample(100);

    EXPECT_EQ(averaging.sample(102), 100U); // 302 / 3
    EXPECT_EQ(averaging.sample(102), 101U); // 304 / 3
    EXPECT_EQ(averaging.sample(102), 102U);
}

TEST(Sampler, DropsAReadingThatIsNotReadyAndContinues)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);

    EXPECT_EQ(averaging.sampleChannels(0x45, 0xA3), 100U);
    EXPECT_EQ(averaging.sample(150), 150U);

    EXPECT_EQ(occurrences(samplerLog(), "Measure not ready!\n"), 1U);
}

TEST(Sampler, TakesARangeThatIsNeitherOfTheTwoAsNotReady)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);
    unit.set("light.range", 7);

    EXPECT_EQ(averaging.sample(150), 100U);

    EXPECT_EQ(occurrences(samplerLog(), "Measure not ready!\n"), 1U);
}

TEST(SamplerRange, SwitchesToExtendedOnceAndDropsThatReading)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);
    unit.clearJournal();

    EXPECT_EQ(averaging.sampleChannels(kTop, kDimmer), 100U);
    EXPECT_EQ(averaging.next(), 100U); // still at the maximum: saturation, and no second switch

    EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests("0x80020048 -> ff 80", "0x80010049 -> 00", "0x4001004a: 00 01",
                                                         "0x80020048 -> ff 80", "0x80010049 -> 01"));
    EXPECT_EQ(occurrences(samplerLog(), "Error light sensor saturation\n"), 1U);
}

TEST(SamplerRange, InAFixedModeNeverSwitchesAndReportsSaturationEachTime)
{
    SimulatedUnit unit;
    for (const LightSensorSamplingMode mode : {SamplingModeStandard, SamplingModeExtended}) {
        Averaging averaging{unit, 1, 0, 50, mode};
        unit.clearJournal();

        averaging.sampleChannels(kTop, kDimmer);
        averaging.next();

        EXPECT_THAT(unit.requestsTo(kSensorDevice), Not(Contains(testing::StartsWith("0x4001004a"))));
        EXPECT_EQ(occurrences(samplerLog(), "Error light sensor saturation\n"), 2U);
    }
}

TEST(SamplerRange, ComesBackBelowEightyFiveAndNotAtIt)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sampleChannels(kTop, kDimmer);
    unit.clearJournal();

    const std::optional<unsigned> atEightyFive = averaging.sampleChannels(0x80 | 85, kDimmer);
    EXPECT_THAT(unit.requestsTo(kSensorDevice), Not(Contains("0x4001004a: 00 00")));
    const std::optional<unsigned> atEightyFour = averaging.sampleChannels(0x80 | 84, kDimmer);

    EXPECT_THAT(unit.requestsTo(kSensorDevice), Contains("0x4001004a: 00 00"));
    EXPECT_EQ(atEightyFour, atEightyFive); // the reading that switched it back is dropped
    EXPECT_EQ(occurrences(samplerLog(), "Set range standard\n"), 1U);
}

TEST(SamplerRange, InTheExtendedModeDoesNotComeBack)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50, SamplingModeExtended};
    unit.clearJournal();

    averaging.sampleChannels(0x80 | 20, kDimmer);

    EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests("0x80020048 -> 94 80", "0x80010049 -> 01"));
}

TEST(SamplerRange, FollowsTheRangeOfTheSensorAndNotTheRangeSet)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    unit.set("light.range", 1);

    EXPECT_EQ(averaging.sampleChannels(0x80 | 90, 0x80), 5 * 324U); // 831 counts
}

TEST(SamplerEnd, ByStopComesWithinTenMillisecondsAndReleasesTheAveraging)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    ASSERT_EQ(sensor->startAverageCalc(5, 5, 50, SamplingModeAuto), ERR_SUCCESS);
    unit.sleepFor(1000);
    unit.clearJournal();

    sensor->stopAverageCalc();

    EXPECT_THAT(unit.journal(),
                InOrder({"/hxSema.XXXXXX sem_wait", "/hxSema.XXXXXX sem_post", "sleep 70 ms", "/hxSema.XXXXXX sem_wait",
                         "/hxSema.XXXXXX sem_post", kAveragingLock + " sem_post"}));
    unsigned short lux = 4711;
    EXPECT_EQ(sensor->getAverageIlluminance(&lux), ERR_NOT_RUNNING);
    EXPECT_EQ(lux, 4711);
}

TEST(SamplerEnd, ByAFailedReadingStopsTheAverage)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);
    unit.fail(kSensorDevice, 0x80020048);

    EXPECT_EQ(averaging.sample(150), std::nullopt);

    EXPECT_EQ(occurrences(samplerLog(), "Error getIlluminance\n"), 1U);
}

TEST(SamplerEnd, ByAFailedRangeStopsTheAverage)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);
    unit.fail(kSensorDevice, 0x80010049);

    EXPECT_EQ(averaging.sample(150), std::nullopt);
}

TEST(SamplerEnd, ByAFailedSwitchToExtendedStopsTheAverage)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sample(100);
    unit.fail(kSensorDevice, 0x4001004A);

    EXPECT_EQ(averaging.sampleChannels(kTop, kDimmer), std::nullopt);

    EXPECT_EQ(occurrences(samplerLog(), "Error setOperatingRange\n"), 1U);
}

TEST(SamplerEnd, ByAFailedSwitchToStandardStopsTheAverage)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    averaging.sampleChannels(kTop, kDimmer);
    unit.fail(kSensorDevice, 0x4001004A);

    EXPECT_EQ(averaging.sampleChannels(0x80 | 84, kDimmer), std::nullopt);

    EXPECT_EQ(occurrences(samplerLog(), "Error setOperatingRange\n"), 1U);
}

TEST(SamplerEnd, ByAFailedSwitchDoesNotTakeOverTheRange)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    unit.fail(kSensorDevice, 0x4001004A, EIO, 1);
    averaging.sampleChannels(kTop, kDimmer);
    averaging->stopAverageCalc();
    unit.clearJournal();

    EXPECT_EQ(averaging->startAverageCalc(1, 0, 50, static_cast<LightSensorSamplingMode>(7)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests("0x4001004a: 00 00")) << "a mode of 7 keeps the range";
}

TEST(SamplerEnd, ByAnErrorPostsThePrivateLockTwiceThenTheAveraging)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    unit.fail(kSensorDevice, 0x80020048, EIO, 1);
    unit.clearJournal();

    unit.sleepFor(kPeriodMs);

    const std::vector<std::string> journal = unit.journal();
    EXPECT_THAT(std::vector<std::string>(journal.end() - 5, journal.end()),
                Requests("/hxSema.XXXXXX sem_wait", "/dev/lightsensor 0x80020048 !EIO", "/hxSema.XXXXXX sem_post",
                         "/hxSema.XXXXXX sem_post", kAveragingLock + " sem_post"));
}

TEST(SamplerEnd, ByAnErrorLeavesThePrivateLockWithACountOfTwo)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    unit.fail(kSensorDevice, 0x80020048, EIO, 1);

    unit.sleepFor(kPeriodMs);

    const std::vector<std::string> calls = unit.callsTo("/hxSema.XXXXXX");
    const std::size_t count = 1 + occurrences(calls, "sem_post") - occurrences(calls, "sem_wait");
    EXPECT_EQ(count, 2U);
}

TEST(SamplerEnd, ByAnErrorLeavesTheAveragingFreeForTheNextStart)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail(kSensorDevice, 0x80020048, EIO, 1);
    ASSERT_EQ(sensor->startAverageCalc(1, 0, 50, SamplingModeAuto), ERR_SUCCESS);
    unit.sleepFor(kPeriodMs);

    EXPECT_EQ(sensor->startAverageCalc(1, 0, 50, SamplingModeAuto), ERR_SUCCESS);

    sensor->stopAverageCalc();
}

TEST(SamplerStart, ReturnsNoAverageUntilItsThreadRuns)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    ASSERT_EQ(sensor->startAverageCalc(1, 0, 50, SamplingModeAuto), ERR_SUCCESS);
    unsigned short lux = 4711;

    unit.settle();

    EXPECT_EQ(sensor->getAverageIlluminance(&lux), ERR_SUCCESS);
    EXPECT_EQ(lux, 0); // the thread is running, and no sample has been taken
    sensor->stopAverageCalc();
}

TEST(SamplerStart, WaitsEightyTimesTenMillisecondsBeforeEachSample)
{
    SimulatedUnit unit;
    Averaging averaging{unit, 1, 0, 50};
    unit.settle();
    unit.clearJournal();

    unit.sleepFor(3 * kPeriodMs);

    EXPECT_EQ(occurrences(unit.callsTo("sleep"), "10 ms"), 3 * 80U);
    EXPECT_EQ(occurrences(unit.journal(), "/dev/lightsensor 0x80010049 -> 00"), 3U);
}

TEST(SamplerStart, OnARunningSamplerTakesTheNewWindowsAndStartsNoThread)
{
    SimulatedUnit unit;
    LightsensorIDrv driver;
    Semaphore averagingLock{"HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};
    sampler sampling;
    sampling.attach(driver, averagingLock);
    ASSERT_EQ(sampling.startAverageCalc(5, 0, 50, SamplingModeAuto), ERR_SUCCESS);
    shine(unit, 100);
    unit.sleepFor(kPeriodMs);
    unit.clearJournal();

    EXPECT_EQ(sampling.startAverageCalc(1, 0, 50, SamplingModeAuto), ERR_SUCCESS);
    shine(unit, 600);
    unit.sleepFor(kPeriodMs);

    unsigned short lux = 0;
    EXPECT_EQ(sampling.getAverageIlluminance(&lux), ERR_SUCCESS);
    EXPECT_EQ(lux, 600);
    EXPECT_THAT(unit.callsTo("thread"), testing::IsEmpty());
    sampling.stopAverageCalc();
    unit.sleepFor(70);
}

TEST(SamplerStart, WithAWindowOfZeroEndsAtItsFirstSample)
{
    SimulatedUnit unit;
    LightsensorIDrv driver;
    Semaphore averagingLock{"HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"};
    sampler sampling;
    sampling.attach(driver, averagingLock);
    forgetLogs();

    ASSERT_EQ(sampling.startAverageCalc(0, 0, 50, SamplingModeAuto), ERR_SUCCESS);
    unit.sleepFor(kPeriodMs);

    unsigned short lux = 0;
    EXPECT_EQ(sampling.getAverageIlluminance(&lux), ERR_NOT_RUNNING);
    EXPECT_THAT(samplerLog(), Contains("Error sCtrlData.averageWndSize = 0\n"));
}

TEST(SamplerLog, OfARunFromStartToStopIsExact)
{
    SimulatedUnit unit;
    {
        Averaging averaging{unit, 2, 2, 50};
        averaging.sampleChannels(0xC5, 0xA3);
        averaging.sampleChannels(0xC5, 0x23);
    }

    EXPECT_THAT(samplerLog(), ElementsAre("startThread\n", "Thread started.\n", "brightness[102], ch1 [197] ch2[163]\n",
                                          "First sample\n", "pReject->brightnessInLux[0]\n",
                                          "pReject->brightnessInLux[1]\n", "pReject->brightnessInLux[2]\n",
                                          "pAverage->brightnessInLux[0]\n", "pAverage->brightnessInLux[1]\n",
                                          "pAverage->brightnessInLux[2]\n", "Brightness in Lux: 102\n",
                                          "brightness[0], ch1 [0] ch2[0]\n", "Measure not ready!\n", "Exit Loop\n"));
}

TEST(SamplerLog, OfTheRangeSwitchesIsExact)
{
    SimulatedUnit unit;
    {
        Averaging averaging{unit, 1, 0, 50};
        averaging.sampleChannels(0xFF, 0x80);
        averaging.next();
        averaging.sampleChannels(0x80 | 84, 0x80);
    }

    EXPECT_THAT(samplerLog(),
                ElementsAre("startThread\n", "Thread started.\n", "brightness[1565], ch1 [255] ch2[128]\n",
                            "Set range extended\n", "brightness[7825], ch1 [255] ch2[128]\n",
                            "Error light sensor saturation\n", "brightness[1245], ch1 [212] ch2[128]\n",
                            "Set range standard\n", "Exit Loop\n"));
}

TEST(SamplerLog, OfARejectWindowOfOneNamesNoSuchWindow)
{
    SimulatedUnit unit;
    {
        Averaging averaging{unit, 1, 1, 50};
        averaging.sample(100);
    }

    EXPECT_THAT(samplerLog(), Contains("First sample\n"));
    EXPECT_THAT(samplerLog(), Not(Contains(testing::StartsWith("pReject"))));
}

TEST(SamplerLog, LogsOutOfMemory)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    forgetLogs();

    EXPECT_EQ(sensor->startAverageCalc(4294967295, 0, 50, SamplingModeAuto), ERR_INIT_FAILED);

    EXPECT_THAT(samplerLog(), ElementsAre("Memory alocation faild\n"));
}
