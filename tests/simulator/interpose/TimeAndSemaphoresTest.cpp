// SPDX-License-Identifier: LicenseRef-HXAux
// Sleeps and semaphores of a program on a unit, call by call: how much of the unit's time passes, and what is answered.
#include "testing/SimulatedUnit.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <semaphore.h>
#include <thread>
#include <unistd.h>

using testing::ElementsAre;

namespace {

class TimeCalls : public testing::Test {
protected:
    SimulatedUnit unit{};
};

TEST_F(TimeCalls, PassTheUnitsTime)
{
    EXPECT_EQ(sleep(2), 0U);
    EXPECT_EQ(unit.now(), 2000);
    EXPECT_EQ(usleep(1500), 0);
    EXPECT_EQ(usleep(500), 0);
    EXPECT_EQ(unit.now(), 2002);
    const timespec wanted{1, 998'000'000};
    EXPECT_EQ(nanosleep(&wanted, nullptr), 0);
    EXPECT_EQ(unit.now(), 4000);
    EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, &wanted, nullptr), 0);
    EXPECT_EQ(unit.now(), 5998);
}

TEST_F(TimeCalls, UntilAMomentThatIsOverPassNoTime)
{
    const timespec past{1, 0};

    EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &past, nullptr), 0);

    EXPECT_EQ(unit.now(), 0);
}

TEST_F(TimeCalls, RefuseTimesThatAreNone)
{
    for (const timespec bad : {timespec{-1, 0}, timespec{0, -1}, timespec{0, 1'000'000'000}}) {
        errno = 0;
        EXPECT_EQ(nanosleep(&bad, nullptr), -1);
        EXPECT_EQ(errno, EINVAL);
        errno = 0;
        EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, &bad, nullptr), EINVAL);
        EXPECT_EQ(errno, 0) << "it returns its error";
    }
    EXPECT_EQ(unit.now(), 0);
}

TEST_F(TimeCalls, LeaveTheRestWhenASignalEndsThem)
{
    unit.fail("sleep", "*", EINTR);
    const timespec wanted{5, 250};
    timespec rest{};

    EXPECT_EQ(nanosleep(&wanted, &rest), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(rest.tv_sec, 5);
    EXPECT_EQ(rest.tv_nsec, 250);
    EXPECT_EQ(sleep(7), 7U);
    EXPECT_EQ(clock_nanosleep(CLOCK_MONOTONIC, 0, &wanted, nullptr), EINTR);
    EXPECT_EQ(unit.now(), 0);
}

TEST_F(TimeCalls, LeaveErrnoAloneOnSuccess)
{
    errno = EXDEV;
    EXPECT_EQ(usleep(10), 0);
    EXPECT_EQ(sleep(1), 0U);
    EXPECT_EQ(errno, EXDEV);
}

class SemaphoreCalls : public testing::Test {
protected:
    ~SemaphoreCalls() override { sem_unlink("/hxTest"); }
    static timespec afterNow(std::int64_t seconds)
    {
        timespec moment{};
        clock_gettime(CLOCK_REALTIME, &moment);
        moment.tv_sec += static_cast<time_t>(seconds);
        return moment;
    }
    static sem_t* make(unsigned value) { return sem_open("/hxTest", O_CREAT | O_EXCL, 0600, value); }

    SimulatedUnit unit{};
};

TEST_F(SemaphoreCalls, CountDownAndUp)
{
    sem_t* const semaphore = make(2);
    ASSERT_NE(semaphore, SEM_FAILED);

    EXPECT_EQ(sem_trywait(semaphore), 0);
    EXPECT_EQ(sem_wait(semaphore), 0);
    errno = 0;
    EXPECT_EQ(sem_trywait(semaphore), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(sem_post(semaphore), 0);
    EXPECT_EQ(sem_trywait(semaphore), 0);
    EXPECT_EQ(sem_close(semaphore), 0);
    EXPECT_THAT(unit.callsTo("/hxTest"), ElementsAre("sem_open creat excl 2", "sem_trywait", "sem_wait",
                                                     "sem_trywait !EAGAIN", "sem_post", "sem_trywait", "sem_close"));
}

TEST_F(SemaphoreCalls, OpenOneThatIsThereAndRefuseToMakeItAgain)
{
    EXPECT_EQ(sem_open("/hxTest", 0), SEM_FAILED);
    EXPECT_EQ(errno, ENOENT);
    sem_t* const semaphore = make(1);
    EXPECT_EQ(make(1), SEM_FAILED);
    EXPECT_EQ(errno, EEXIST);
    sem_t* const again = sem_open("/hxTest", 0);
    EXPECT_EQ(again, semaphore);

    EXPECT_EQ(sem_close(again), 0);
    EXPECT_EQ(sem_trywait(semaphore), 0) << "it is open once more";
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, WaitNoLongerThanUntilTheirMoment)
{
    sem_t* const semaphore = make(0);
    const timespec moment = afterNow(3600);

    EXPECT_EQ(sem_timedwait(semaphore, &moment), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_GT(unit.now(), 3'000'000) << "an hour of the unit's time";
    EXPECT_LE(unit.now(), 3'600'000);
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, TakeWhatIsThereAtAMomentThatIsOver)
{
    sem_t* const semaphore = make(1);
    const timespec past{1, 0};

    EXPECT_EQ(sem_timedwait(semaphore, &past), 0);
    EXPECT_EQ(sem_timedwait(semaphore, &past), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(unit.now(), 0);
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, RefuseAMomentThatIsNoneAndAnUnknownClock)
{
    sem_t* const semaphore = make(1);
    const timespec good = afterNow(1);

    for (const timespec bad : {timespec{1, -1}, timespec{1, 1'000'000'000}}) {
        errno = 0;
        EXPECT_EQ(sem_timedwait(semaphore, &bad), -1);
        EXPECT_EQ(errno, EINVAL);
        errno = 0;
        EXPECT_EQ(sem_clockwait(semaphore, CLOCK_MONOTONIC, &bad), -1);
        EXPECT_EQ(errno, EINVAL);
    }
    errno = 0;
    EXPECT_EQ(sem_clockwait(semaphore, CLOCK_BOOTTIME, &good), -1);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(sem_trywait(semaphore), 0) << "it has not been taken";
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, WaitUntilAMomentOfEitherClock)
{
    sem_t* const semaphore = make(0);
    timespec moment{};
    clock_gettime(CLOCK_MONOTONIC, &moment);
    moment.tv_sec += 60;

    EXPECT_EQ(sem_clockwait(semaphore, CLOCK_MONOTONIC, &moment), -1);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_GT(unit.now(), 50'000);
    EXPECT_LE(unit.now(), 60'000);
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, AreWokenByAPostBeforeTheirMoment)
{
    sem_t* const semaphore = make(0);
    std::thread poster{[semaphore] {
        sleep(5);
        sem_post(semaphore);
    }};
    const timespec moment = afterNow(3600);

    EXPECT_EQ(sem_timedwait(semaphore, &moment), 0);
    EXPECT_EQ(unit.now(), 5000);
    poster.join();
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, FailAsTheyAreAskedTo)
{
    unit.fail("/hxTest", "sem_open", EMFILE, 1);
    EXPECT_EQ(make(1), SEM_FAILED);
    EXPECT_EQ(errno, EMFILE);
    sem_t* const semaphore = make(1);
    unit.fail("/hxTest", "sem_wait", EINTR, 1);
    unit.fail("/hxTest", "sem_post", EOVERFLOW, 1);

    EXPECT_EQ(sem_wait(semaphore), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(sem_wait(semaphore), 0);
    EXPECT_EQ(sem_post(semaphore), -1);
    EXPECT_EQ(errno, EOVERFLOW);
    EXPECT_EQ(sem_trywait(semaphore), -1) << "nothing was posted";
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, BelongToTheirUnit)
{
    sem_t* const semaphore = make(1);
    {
        SimulatedUnit other;
        EXPECT_EQ(sem_open("/hxTest", 0), SEM_FAILED);
        EXPECT_EQ(errno, ENOENT);
    }
    EXPECT_EQ(sem_close(semaphore), 0);
}

TEST_F(SemaphoreCalls, AreGoneWhenTheyAreUnlinked)
{
    sem_t* const semaphore = make(1);

    EXPECT_EQ(sem_unlink("/hxTest"), 0);
    EXPECT_EQ(sem_unlink("/hxTest"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(sem_open("/hxTest", 0), SEM_FAILED);
    EXPECT_EQ(sem_trywait(semaphore), 0) << "who has it open keeps it";
    EXPECT_EQ(sem_close(semaphore), 0);
}

} // namespace
