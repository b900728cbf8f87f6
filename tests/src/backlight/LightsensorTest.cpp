// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Lightsensor.h"

#include "backlight/Lightsensor_Imp.h"
#include "tests/src/backlight/Given.h"

using namespace Halvix;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

namespace {

eErr startDefault(Lightsensor* sensor)
{
    return sensor->startAverageCalc(5, 5, 50, SamplingModeAuto);
}

struct Outputs {
    unsigned short lux = 4711;
    unsigned char ch0 = 1;
    unsigned char ch1 = 2;

    eErr readFrom(const Released<Lightsensor>& sensor) { return sensor->getIlluminance(&lux, &ch0, &ch1); }
    bool operator==(const Outputs&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Outputs& outputs)
{
    return stream << outputs.lux << " lux, " << unsigned{outputs.ch0} << ", " << unsigned{outputs.ch1};
}

} // namespace

TEST(Lightsensor, ReadsTheChannelsThenTheRange)
{
    SimulatedUnit unit{"light.channels = 0xc5 0xa3"};
    Released<Lightsensor> sensor{GetLightsensor()};
    Outputs read;

    EXPECT_EQ(read.readFrom(sensor), ERR_SUCCESS);

    EXPECT_EQ(read, (Outputs{102, 0xC5, 0xA3}));
    EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests("0x80020048 -> c5 a3", "0x80010049 -> 00"));
}

TEST(Lightsensor, CountsFivefoldInTheExtendedRange)
{
    SimulatedUnit unit{"light.channels = 0xc5 0xa3", "light.range = 1"};
    Released<Lightsensor> sensor{GetLightsensor()};
    unsigned short lux = 0;

    EXPECT_EQ(sensor->getIlluminance(&lux), ERR_SUCCESS);

    EXPECT_EQ(lux, 510);
}

TEST(Lightsensor, OfAnUnfinishedConversionLeavesEverythingUntouched)
{
    SimulatedUnit unit{"light.channels = 0x45 0xa3"};
    Released<Lightsensor> sensor{GetLightsensor()};
    Outputs read;

    EXPECT_EQ(read.readFrom(sensor), ERR_INVALID_DATA);

    EXPECT_EQ(read, Outputs{});
    EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests("0x80020048 -> 45 a3"));
}

TEST(Lightsensor, WhoseReadingIsRefusedLeavesEverythingUntouched)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail(kSensorDevice, 0x80020048);
    Outputs read;

    EXPECT_EQ(read.readFrom(sensor), ERR_IOCTRL_FAILED);

    EXPECT_EQ(read, Outputs{});
}

TEST(Lightsensor, WhoseRangeIsRefusedReturnsTheReadingInTheStandardRangeAndTheCode)
{
    SimulatedUnit unit{"light.channels = 0xc5 0xa3", "light.range = 1"};
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail(kSensorDevice, 0x80010049);
    Outputs read;

    EXPECT_EQ(read.readFrom(sensor), ERR_IOCTRL_FAILED);

    EXPECT_EQ(read, (Outputs{102, 0xC5, 0xA3}));
}

TEST(Lightsensor, WhoseRangeIsSevenReturnsTheReadingAndInvalidData)
{
    SimulatedUnit unit{"light.channels = 0xc5 0xa3", "light.range = 7"};
    Released<Lightsensor> sensor{GetLightsensor()};
    Outputs read;

    EXPECT_EQ(read.readFrom(sensor), ERR_INVALID_DATA);

    EXPECT_EQ(read, (Outputs{102, 0xC5, 0xA3}));
}

TEST(Lightsensor, WithoutItsDeviceAnswersOpenFailedEverywhere)
{
    SimulatedUnit unit{"absent = /dev/lightsensor"};
    Released<Lightsensor> sensor{GetLightsensor()};
    Outputs read;
    LightSensorOperationRange range = RangeExtended;

    EXPECT_EQ(read.readFrom(sensor), ERR_OPEN_FAILED);
    EXPECT_EQ(sensor->getOperatingRange(&range), ERR_OPEN_FAILED);
    EXPECT_EQ(sensor->setOperatingRange(RangeStandard), ERR_OPEN_FAILED);

    EXPECT_EQ(read, Outputs{});
    EXPECT_EQ(range, RangeExtended);
}

TEST(Lightsensor, OneValueIsReadThroughTheSlotOfThree)
{
    struct Fake : Lightsensor_Imp {
        eErr getIlluminance(unsigned short* lux, unsigned char* /*ch0*/, unsigned char* /*ch1*/) override
        {
            *lux = 99;
            return ERR_COMMAND_FAILED;
        }
    };
    SimulatedUnit unit;
    Fake fake;
    unsigned short lux = 0;

    EXPECT_EQ(static_cast<Lightsensor&>(fake).getIlluminance(&lux), ERR_COMMAND_FAILED);

    EXPECT_EQ(lux, 99);
}

TEST(Lightsensor, OpensTheDeviceTwiceBetweenItsTwoSemaphores)
{
    SimulatedUnit unit;

    Released<Lightsensor> sensor{GetLightsensor()};

    EXPECT_THAT(unit.journal(), InOrder({"/hxSema.XXXXXX sem_open creat excl 1", "/hxSema.XXXXXX sem_unlink",
                                         "/dev/lightsensor open rdwr nonblock", "/dev/lightsensor open rdwr nonblock",
                                         kAveragingLock + " sem_open creat excl 1"}));
}

TEST(Lightsensor, ReleaseClosesItsHandleWaitsAndClosesTheRest)
{
    SimulatedUnit unit;
    Lightsensor* const sensor = GetLightsensor();
    unit.clearJournal();

    sensor->Release();

    EXPECT_THAT(unit.journal(), Requests("/dev/lightsensor close", "sleep 70 ms", kAveragingLock + " sem_close",
                                         "/dev/lightsensor close", "/hxSema.XXXXXX sem_close"));
}

TEST(OperatingRange, IsReadAsTheSensorHasIt)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    for (const LightSensorOperationRange expected : {RangeExtended, RangeStandard}) {
        unit.set("light.range", expected);
        auto range = static_cast<LightSensorOperationRange>(77);

        EXPECT_EQ(sensor->getOperatingRange(&range), ERR_SUCCESS);

        EXPECT_EQ(range, expected);
    }
}

TEST(OperatingRange, OfSevenIsInvalidAndNotReturned)
{
    SimulatedUnit unit{"light.range = 7"};
    Released<Lightsensor> sensor{GetLightsensor()};
    LightSensorOperationRange range = RangeExtended;

    EXPECT_EQ(sensor->getOperatingRange(&range), ERR_INVALID_DATA);

    EXPECT_EQ(range, RangeExtended);
}

TEST(OperatingRange, OfAnyByteAboveOneIsInvalid)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    for (const int byte : {2, 3, 128, 255}) {
        unit.set("light.range", byte);
        LightSensorOperationRange range = RangeExtended;

        EXPECT_EQ(sensor->getOperatingRange(&range), ERR_INVALID_DATA) << byte;

        EXPECT_EQ(range, RangeExtended);
    }
}

TEST(OperatingRange, IsSentAsOneByteAfterALookAtTheAveragingLock)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.clearJournal();

    EXPECT_EQ(sensor->setOperatingRange(RangeExtended), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), Requests(kAveragingLock + " sem_trywait", kAveragingLock + " sem_post",
                                         "/dev/lightsensor 0x4001004a: 00 01"));
}

TEST(OperatingRange, OutsideTheTwoIsAnInvalidParameterAndSendsNothing)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    for (const int range : {2, -1, 256, 257}) {
        EXPECT_EQ(sensor->setOperatingRange(static_cast<LightSensorOperationRange>(range)), ERR_INVALID_PARAMETER);
    }

    EXPECT_THAT(unit.requestsTo(kSensorDevice), IsEmpty());
}

TEST(OperatingRange, OutsideTheTwoIsCheckedAfterTheDevice)
{
    SimulatedUnit unit{"absent = /dev/lightsensor"};
    Released<Lightsensor> sensor{GetLightsensor()};

    EXPECT_EQ(sensor->setOperatingRange(static_cast<LightSensorOperationRange>(2)), ERR_OPEN_FAILED);
}

TEST(OperatingRange, ThatTheDriverRefusesAnswersSo)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail(kSensorDevice, 0x4001004A);

    EXPECT_EQ(sensor->setOperatingRange(RangeExtended), ERR_IOCTRL_FAILED);
}

TEST(OperatingRange, CannotBeSetWhileOnesOwnOrAnothersAveragingRuns)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    Released<Lightsensor> other{GetLightsensor()};
    ASSERT_EQ(startDefault(sensor.operator->()), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(sensor->setOperatingRange(RangeExtended), ERR_AVERAGE_CALC_STARTED);
    EXPECT_EQ(other->setOperatingRange(static_cast<LightSensorOperationRange>(2)), ERR_AVERAGE_CALC_STARTED);

    EXPECT_THAT(unit.requestsTo(kSensorDevice), IsEmpty());
    sensor->stopAverageCalc();
}

TEST(Averaging, RefusesAWindowOrASpreadOfZeroBeforeItTouchesTheLock)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.clearJournal();

    EXPECT_EQ(sensor->startAverageCalc(0, 5, 50, SamplingModeAuto), ERR_INVALID_DATA);
    EXPECT_EQ(sensor->startAverageCalc(5, 5, 0, SamplingModeAuto), ERR_INVALID_DATA);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Averaging, TakesARejectWindowOfZeroOrOne)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    for (const unsigned long window : {0UL, 1UL}) {
        EXPECT_EQ(sensor->startAverageCalc(5, window, 50, SamplingModeAuto), ERR_SUCCESS);
        sensor->stopAverageCalc();
    }
}

TEST(Averaging, IsExclusiveAcrossObjectsAndSeenByAll)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    Released<Lightsensor> other{GetLightsensor()};
    ASSERT_EQ(startDefault(sensor.operator->()), ERR_SUCCESS);

    EXPECT_EQ(startDefault(other.operator->()), ERR_AVERAGE_CALC_STARTED);
    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
    EXPECT_TRUE(dynamic_cast<Lightsensor_Imp*>(other.operator->())->isAverageStarted());

    sensor->stopAverageCalc();
    EXPECT_FALSE(dynamic_cast<Lightsensor_Imp*>(other.operator->())->isAverageStarted());
    EXPECT_EQ(startDefault(other.operator->()), ERR_SUCCESS);
    other->stopAverageCalc();
}

TEST(Averaging, ThatWasNeverStartedDoesNotRun)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unsigned short lux = 4711;

    EXPECT_EQ(sensor->getAverageIlluminance(&lux), ERR_NOT_RUNNING);

    EXPECT_EQ(lux, 4711);
}

TEST(Averaging, StopTakesSeventyMillisecondsAlsoWhenNothingRuns)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.clearJournal();

    EXPECT_EQ(sensor->stopAverageCalc(), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), Requests("/hxSema.XXXXXX sem_wait", "/hxSema.XXXXXX sem_post", "sleep 70 ms"));
}

TEST(Averaging, StartSendsTheRangeUnderTheLockThenStartsTheThread)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.clearJournal();

    ASSERT_EQ(startDefault(sensor.operator->()), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(),
                InOrder({kAveragingLock + " sem_trywait", "/hxSema.XXXXXX sem_wait",
                         "/dev/lightsensor 0x4001004a: 00 00", "/hxSema.XXXXXX sem_post", "thread start"}));
    sensor->stopAverageCalc();
}

TEST(Averaging, StartInEachModeSendsItsRange)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    const std::pair<int, const char*> kRows[] = {{SamplingModeExtended, "0x4001004a: 00 01"},
                                                 {7, "0x4001004a: 00 01"}, // another mode keeps the range
                                                 {SamplingModeStandard, "0x4001004a: 00 00"},
                                                 {SamplingModeAuto, "0x4001004a: 00 00"}};
    for (const auto& [mode, expected] : kRows) {
        unit.clearJournal();

        ASSERT_EQ(sensor->startAverageCalc(5, 5, 50, static_cast<LightSensorSamplingMode>(mode)), ERR_SUCCESS);
        sensor->stopAverageCalc();

        EXPECT_THAT(unit.requestsTo(kSensorDevice), Requests(expected));
    }
}

TEST(Averaging, StartWithoutTheDeviceLeavesTheAveragingTaken)
{
    SimulatedUnit unit{"absent = /dev/lightsensor"};
    Released<Lightsensor> sensor{GetLightsensor()};

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_OPEN_FAILED);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
}

TEST(Averaging, StartThatTheDriverRefusesLeavesTheAveragingTaken)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail(kSensorDevice, 0x4001004A, EIO, 1);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_IOCTRL_FAILED);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
}

TEST(Averaging, StartWithoutMemoryForItsWindowsLeavesTheAveragingTaken)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};

    EXPECT_EQ(sensor->startAverageCalc(4294967295, 5, 50, SamplingModeAuto), ERR_INIT_FAILED);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
    EXPECT_THAT(unit.requestsTo(kSensorDevice), IsEmpty());
}

TEST(Averaging, StartWithoutMemoryForTheRejectWindowLeavesTheAveragingTaken)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};

    EXPECT_EQ(sensor->startAverageCalc(5, 4294967295, 50, SamplingModeAuto), ERR_INIT_FAILED);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
}

TEST(Averaging, StartWithoutAThreadLeavesTheAveragingTaken)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    unit.fail("thread", "start", EAGAIN, 1);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_CREATE_THREAD);

    EXPECT_EQ(startDefault(sensor.operator->()), ERR_AVERAGE_CALC_STARTED);
}

TEST(Averaging, StartWithoutAThreadLeavesNothingOpenAfterTheRelease)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN, 1);
    {
        Released<Lightsensor> sensor{GetLightsensor()};
        ASSERT_EQ(startDefault(sensor.operator->()), ERR_CREATE_THREAD);
    }

    EXPECT_EQ(unit.callsTo(kAveragingLock).back(), "sem_close");
    EXPECT_EQ(unit.callsTo(kSensorDevice).back(), "close");
}

TEST(Averaging, ThatRunsWhenItsObjectIsReleasedContinues)
{
    SimulatedUnit unit;
    Lightsensor* const sensor = GetLightsensor();
    ASSERT_EQ(startDefault(sensor), ERR_SUCCESS);
    sensor->Release();
    unit.clearJournal();

    unit.sleepFor(8000);

    const std::vector<std::string> requests = unit.requestsTo(kSensorDevice);
    EXPECT_EQ(requests.size(), 20U); // ten samples, two requests each
    EXPECT_THAT(unit.callsTo(kAveragingLock), Not(Contains("sem_close")));
}

TEST(Averaging, ThatEndsAfterItsObjectIsReleasedClosesEverything)
{
    SimulatedUnit unit;
    Lightsensor* const sensor = GetLightsensor();
    ASSERT_EQ(startDefault(sensor), ERR_SUCCESS);
    sensor->Release();
    unit.fail(kSensorDevice, 0x80020048);
    unit.clearJournal();

    unit.sleepFor(1000);

    const std::vector<std::string> journal = unit.journal();
    ASSERT_GE(journal.size(), 4U);
    EXPECT_THAT(std::vector<std::string>(journal.end() - 4, journal.end()),
                Requests(kAveragingLock + " sem_post", kAveragingLock + " sem_close", "/dev/lightsensor close",
                         "/hxSema.XXXXXX sem_close"));
}

TEST(Averaging, StartsAgainAtTheVeryMomentWhenItsThreadEnds)
{
    SimulatedUnit unit;
    Released<Lightsensor> sensor{GetLightsensor()};
    for (int round = 0; round < 200; ++round) {
        ASSERT_EQ(startDefault(sensor.operator->()), ERR_SUCCESS) << round;
        unit.fail(kSensorDevice, 0x80020048, EIO, 1); // the thread ends at its first reading
        eErr err = ERR_AVERAGE_CALC_STARTED;
        while (err == ERR_AVERAGE_CALC_STARTED) { // until it has released the unit's lock
            unit.sleepFor(10);
            err = startDefault(sensor.operator->());
        }
        ASSERT_EQ(err, ERR_SUCCESS) << round;
        unit.sleepFor(1000);
        unsigned short lux = 0;
        ASSERT_EQ(sensor->getAverageIlluminance(&lux), ERR_SUCCESS) << "no thread runs in round " << round;
        sensor->stopAverageCalc();
    }
}
