// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/CreationMask.h"
#include "platform/LinuxWrapper.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace Halvix;
using testing::ElementsAre;

namespace {

std::atomic<const void*> seen{nullptr};

void remember(const void* argument)
{
    seen = argument;
}

TEST(Thread, RunsTheFunctionWithItsArgument)
{
    SimulatedUnit unit;
    const int argument = 0;

    EXPECT_EQ(LinuxWrapper::startThread(remember, &argument), ERR_SUCCESS);
    unit.settle();

    EXPECT_EQ(seen, &argument);
}

TEST(Thread, ThatCannotBeCreatedIsAnError)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN);
    seen = nullptr;

    EXPECT_EQ(LinuxWrapper::startThread(remember, &unit), ERR_CREATE_THREAD);
    unit.settle();

    EXPECT_EQ(seen, nullptr);
}

/// Properties of a new thread.
struct Found {
    int detachState = -1;
    sigset_t blocked{};
};
Found found;

void lookAtItself(const void*)
{
    pthread_attr_t attributes;
    ASSERT_EQ(::pthread_getattr_np(::pthread_self(), &attributes), 0);
    ASSERT_EQ(::pthread_attr_getdetachstate(&attributes, &found.detachState), 0);
    ASSERT_EQ(::pthread_attr_destroy(&attributes), 0);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, nullptr, &found.blocked), 0);
}

TEST(Thread, DetachesItself)
{
    SimulatedUnit unit;
    found = {};

    ASSERT_EQ(LinuxWrapper::startThread(lookAtItself, nullptr), ERR_SUCCESS);
    unit.settle();

    EXPECT_EQ(found.detachState, PTHREAD_CREATE_DETACHED);
}

TEST(Thread, BlocksAllSignalsExceptThoseOfItsOwnFaults)
{
    SimulatedUnit unit;
    found = {};

    ASSERT_EQ(LinuxWrapper::startThread(lookAtItself, nullptr), ERR_SUCCESS);
    unit.settle();

    for (const int blocked : {SIGALRM, SIGINT, SIGTERM, SIGHUP, SIGUSR1, SIGCHLD, SIGPIPE, SIGRTMIN, SIGRTMAX})
        EXPECT_EQ(::sigismember(&found.blocked, blocked), 1) << ::strsignal(blocked);
    for (const int open : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT, SIGPROF})
        EXPECT_EQ(::sigismember(&found.blocked, open), 0) << ::strsignal(open);
}

TEST(Thread, LeavesTheSignalsOfItsStarterAsTheyWere)
{
    SimulatedUnit unit;
    sigset_t before;
    sigset_t after;
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, nullptr, &before), 0);

    ASSERT_EQ(LinuxWrapper::startThread(lookAtItself, nullptr), ERR_SUCCESS);
    unit.settle();

    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, nullptr, &after), 0);
    for (int number = 1; number <= SIGRTMAX; ++number)
        EXPECT_EQ(::sigismember(&after, number), ::sigismember(&before, number)) << number;
}

TEST(SleepFully, SleepsTheRestAfterAnInterruption)
{
    SimulatedUnit unit;
    unit.fail("sleep", "1500 ms", EINTR, 1);

    LinuxWrapper::SleepFully(1500);

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms !EINTR", "sleep 1500 ms")); // no time had passed
}

TEST(SleepFully, EndsAlthoughSignalsContinue)
{
    struct sigaction action {};
    struct sigaction before {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
    std::atomic<bool> slept{false};
    std::atomic<bool> inTime{true};
    std::thread interrupter{[&, sleeper = ::pthread_self()] {
        for (int signals = 0; !slept; ++signals) {
            if (signals == 200) // 20 s: each signal restarted the sleep
                inTime = false;
            if (inTime)
                ::pthread_kill(sleeper, SIGUSR1);
            ::usleep(100000);
        }
    }};

    LinuxWrapper::SleepFully(500);
    slept = true;
    interrupter.join();
    ::sigaction(SIGUSR1, &before, nullptr);

    EXPECT_TRUE(inTime);
}

TEST(SleepFully, CallsOnceWhenNothingInterrupts)
{
    SimulatedUnit unit;

    LinuxWrapper::SleepFully(1100);

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1100 ms"));
}

TEST(Sleep, LastsAsLongAsRequested)
{
    SimulatedUnit unit;

    EXPECT_TRUE(LinuxWrapper::Sleep(1500));

    EXPECT_EQ(unit.now(), 1500);
    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms"));
}

TEST(Sleep, CallsTheSystemForZeroToo)
{
    SimulatedUnit unit;

    EXPECT_TRUE(LinuxWrapper::Sleep(0));

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 0 ms"));
}

TEST(Sleep, IsNotResumedAfterAnInterruption)
{
    SimulatedUnit unit;
    unit.fail("sleep", "1500 ms", EINTR);

    EXPECT_FALSE(LinuxWrapper::Sleep(1500));

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms !EINTR"));
}

TEST(CreationMask, IsChangedByOneThreadAtATime)
{
    std::atomic<bool> inside{false};
    bool overlapped = true;
    std::thread second{[&] {
        while (!inside)
            ::sched_yield();
        const CreationMask scope{0};
        overlapped = inside;
    }};

    {
        const CreationMask scope{0};
        inside = true;
        ::usleep(200000); // meanwhile the second thread tries
        inside = false;
    }
    second.join();

    EXPECT_FALSE(overlapped);
}

TEST(CreationMask, CanBeChangedByAChildOfAForkDuringAnotherThreadsScope)
{
    std::atomic<bool> inside{false};
    std::thread other{[&] {
        const CreationMask scope{0};
        inside = true;
        ::usleep(100000);
    }};
    while (!inside)
        ::sched_yield();

    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20); // ends a child that waits for a missing thread
        {
            const CreationMask scope{0};
        }
        ::syscall(SYS_exit_group, 0); // sanitizers look for lost threads in every other exit
    }
    other.join();

    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(CreationMask, IsSetAndThePreviousOneIsReturned)
{
    const unsigned int before = LinuxWrapper::umask(027);

    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
}

} // namespace
