// SPDX-License-Identifier: LicenseRef-HXAux
// Timed beeps: one at a time on the whole unit, with and without waiting.
#include "devices/Buzzer_Imp.h"
#include "platform/LinuxWrapper.h"
#include "simulator/model/Buzzer.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

#include <limits>
#include <thread>

using namespace Halvix;

namespace {

constexpr const char* kDevice = "/dev/buzzer";
constexpr const char* kLock = "/HXAUX_BUZZING_IN_PROGRESS";

bool isFree(Buzzer& buzzer)
{
    return buzzer.buzze(0, true) == ERR_SUCCESS;
}

TEST(Beep, SoundsForItsTimeBeforeItReturns)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};
    unit.clearJournal();

    EXPECT_EQ(buzzer->buzze(250, true), ERR_SUCCESS);

    EXPECT_EQ(unit.now(), 250);
    EXPECT_EQ(unit.get("buzzer.last"), "250 ms at 2000 Hz, volume 25");
    EXPECT_THAT(unit.journal(),
                testing::ElementsAre(std::string{kLock} + " sem_trywait", "/dev/buzzer 0x8004003e -> d0 07 19 00",
                                     "/dev/buzzer 0x40010041: 01 00 00 00", testing::StartsWith("sleep"),
                                     "/dev/buzzer 0x8004003e -> d0 07 19 00", "/dev/buzzer 0x40010041: 00 00 00 00",
                                     std::string{kLock} + " sem_post"));
}

TEST(Beep, OfNoTimeSwitchesOnAndOffAgain)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(0, true), ERR_SUCCESS);

    EXPECT_EQ(unit.get("buzzer.beeps"), "1");
    EXPECT_EQ(unit.get("buzzer.sounding"), "off");
}

TEST(Beep, OfANegativeTimeSwitchesOnAndOffAtOnce)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(-1, true), ERR_SUCCESS);
    EXPECT_EQ(buzzer->buzze(std::numeric_limits<int>::min(), false), ERR_SUCCESS);
    unit.settle();

    EXPECT_EQ(unit.now(), 0);
    EXPECT_EQ(unit.get("buzzer.beeps"), "2");
    EXPECT_EQ(unit.get("buzzer.sounding"), "off");
}

TEST(Beep, ReleasesTheLockWhenItCannotSound)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x40010041, EIO, 1);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, true), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.now(), 0);
    EXPECT_TRUE(isFree(*buzzer));
}

TEST(Beep, AnswersOpenFailedWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/buzzer"};
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, true), ERR_OPEN_FAILED);
    EXPECT_EQ(buzzer->buzze(250, true), ERR_OPEN_FAILED); // not ERR_IN_PROGRESS
}

TEST(Beep, IgnoresThatItCannotBeSwitchedOff)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x40010041, EIO, 1, 1); // the second switch
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, true), ERR_SUCCESS);

    EXPECT_EQ(unit.get("buzzer.sounding"), "on");
    EXPECT_TRUE(isFree(*buzzer));
}

TEST(Beep, EndsEarlyWhenItsSleepIsInterrupted)
{
    SimulatedUnit unit;
    unit.fail("sleep", "*", EINTR, 1);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, true), ERR_SUCCESS);

    EXPECT_EQ(unit.get("buzzer.last"), "0 ms at 2000 Hz, volume 25");
}

TEST(Beep, ContinuesAfterTheCallThatDoesNotWait)
{
    SimulatedUnit unit;
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, false), ERR_SUCCESS);
    EXPECT_EQ(unit.now(), 0);
    unit.sleepFor(249);
    EXPECT_EQ(unit.get("buzzer.sounding"), "on");
    unit.sleepFor(2);

    EXPECT_EQ(unit.get("buzzer.last"), "250 ms at 2000 Hz, volume 25");
}

TEST(Beep, ContinuesAndClosesWhenItsObjectIsReleased)
{
    SimulatedUnit unit;
    Buzzer* const buzzer = GetBuzzer();
    ASSERT_EQ(buzzer->buzze(250, false), ERR_SUCCESS);
    unit.clearJournal();

    buzzer->Release();

    EXPECT_THAT(unit.callsTo(kDevice), testing::Not(testing::Contains("close")));
    unit.sleepFor(300);
    EXPECT_EQ(unit.get("buzzer.last"), "250 ms at 2000 Hz, volume 25");
    EXPECT_EQ(unit.callsTo(kDevice).back(), "close");
    EXPECT_EQ(unit.callsTo(kLock).back(), "sem_close");
    Released<Buzzer> next{GetBuzzer()};
    EXPECT_TRUE(isFree(*next));
}

TEST(Beep, IsRefusedWhileAnotherRuns)
{
    SimulatedUnit unit;
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};
    EXPECT_EQ(first->buzze(250, false), ERR_SUCCESS);

    EXPECT_EQ(second->buzze(10, true), ERR_IN_PROGRESS);
    EXPECT_EQ(second->buzze(10, false), ERR_IN_PROGRESS);
    EXPECT_EQ(first->buzze(10, true), ERR_IN_PROGRESS);
    EXPECT_EQ(unit.now(), 0);

    unit.sleepFor(300);
    EXPECT_TRUE(isFree(*second));
}

TEST(Beep, IsRefusedWhileABlockingOneRuns)
{
    SimulatedUnit unit;
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};
    std::thread beeper{[&] { EXPECT_EQ(first->buzze(250, true), ERR_SUCCESS); }};
    unit.sleepFor(100);

    EXPECT_EQ(second->buzze(10, true), ERR_IN_PROGRESS);

    beeper.join();
    EXPECT_TRUE(isFree(*second));
}

TEST(Beep, OnAThreadSleepsAndReleasesTheLockEvenIfItCannotSound)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x40010041, EIO, 2);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, false), ERR_SUCCESS);
    unit.sleepFor(249);
    EXPECT_EQ(buzzer->buzze(0, true), ERR_IN_PROGRESS);
    unit.sleepFor(2);

    EXPECT_TRUE(isFree(*buzzer));
}

TEST(Beep, KeepsTheLockWhenItsThreadCannotBeStarted)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN, 1);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(250, false), ERR_CREATE_THREAD);

    EXPECT_EQ(buzzer->buzze(250, false), ERR_IN_PROGRESS);
    EXPECT_EQ(buzzer->buzze(250, true), ERR_IN_PROGRESS);
    EXPECT_EQ(unit.get("buzzer.beeps"), "0");
}

TEST(Beep, WithoutAThreadLeavesNothingOpenAfterItsRelease)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN, 1);
    {
        Released<Buzzer> buzzer{GetBuzzer()};
        ASSERT_EQ(buzzer->buzze(250, false), ERR_CREATE_THREAD);
    }

    EXPECT_EQ(unit.callsTo(kDevice).back(), "close");
    EXPECT_EQ(unit.callsTo(kLock).back(), "sem_close");
}

TEST(Beep, DoesNotHoldBackTheUntimedTrigger)
{
    SimulatedUnit unit;
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};
    EXPECT_EQ(first->buzze(250, false), ERR_SUCCESS);
    unit.sleepFor(100);

    EXPECT_EQ(second->setTrigger(false), ERR_SUCCESS);
    EXPECT_EQ(second->setFrequency(1000), ERR_SUCCESS);
    EXPECT_EQ(second->setVolume(5), ERR_SUCCESS);

    EXPECT_EQ(unit.get("buzzer.last"), "100 ms at 2000 Hz, volume 25");
    unit.sleepFor(200);
}

TEST(Beep, AnswersInProgressWhenItsLockCannotBeOpened)
{
    SimulatedUnit unit;
    unit.fail(kLock, "sem_open", EACCES);
    testing::internal::CaptureStdout();
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->buzze(0, true), ERR_IN_PROGRESS);

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "sem_open failed with error: Permission denied\nsem_trywait failed\n");
}

/// The count of the lock, left unchanged.
int valueOfTheLock()
{
    int lock = 0;
    EXPECT_TRUE(LinuxWrapper::CreateSema(lock, "HXAUX_BUZZING_IN_PROGRESS"));
    int value = 0;
    while (value < 9 && LinuxWrapper::WaitForSema(lock, false))
        ++value;
    for (int i = 0; i < value; ++i)
        LinuxWrapper::ReleaseSema(lock);
    LinuxWrapper::CloseSema(lock);
    return value;
}

TEST(Beep, PostsItsLockOnceHoweverItEnds)
{
    for (const bool blocking : {true, false})
        for (const int refusals : {0, 1, 2}) { // of the request that switches on and of the one that switches off
            SimulatedUnit unit;
            Released<Buzzer> buzzer{GetBuzzer()};
            if (refusals != 0)
                unit.fail(kDevice, 0x40010041, EIO, refusals);

            (void)buzzer->buzze(250, blocking);
            unit.sleepFor(300);

            EXPECT_EQ(valueOfTheLock(), 1) << "blocking " << blocking << ", refusals " << refusals;
        }
}

TEST(Beep, ThatIsRefusedPostsNothing)
{
    SimulatedUnit unit;
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};
    ASSERT_EQ(first->buzze(250, false), ERR_SUCCESS);

    EXPECT_EQ(second->buzze(10, true), ERR_IN_PROGRESS);
    EXPECT_EQ(second->buzze(10, false), ERR_IN_PROGRESS);

    EXPECT_EQ(valueOfTheLock(), 0);
    unit.sleepFor(300);
    EXPECT_EQ(valueOfTheLock(), 1);
}

/// A buzzer whose trigger is elsewhere.
class PaperBuzzer : public Buzzer_Imp {
public:
    eErr setTrigger(bool on) override
    {
        triggers.push_back(on);
        return on ? result : ERR_SUCCESS;
    }
    std::vector<bool> triggers;
    eErr result = ERR_SUCCESS;
};

TEST(Beep, GoesThroughTheVirtualTrigger)
{
    SimulatedUnit unit;
    PaperBuzzer buzzer;

    EXPECT_EQ(buzzer.buzze(10, true), ERR_SUCCESS);
    EXPECT_EQ(buzzer.buzze(10, false), ERR_SUCCESS);
    unit.sleepFor(20);

    EXPECT_THAT(buzzer.triggers, testing::ElementsAre(true, false, true, false));
    EXPECT_THAT(unit.requestsTo(kDevice), testing::IsEmpty());
}

TEST(Beep, AnswersWhatItsTriggerAnswers)
{
    SimulatedUnit unit;
    PaperBuzzer buzzer;
    buzzer.result = ERR_VERIFY_FAILED;

    EXPECT_EQ(buzzer.buzze(10, true), ERR_VERIFY_FAILED);

    EXPECT_THAT(buzzer.triggers, testing::ElementsAre(true)); // nothing to switch off
}

} // namespace
