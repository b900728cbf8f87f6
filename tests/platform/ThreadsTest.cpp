// SPDX-License-Identifier: LicenseRef-HXAux
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "platform/CreationMask.h"
#include "platform/DeviceChannel.h"
#include "platform/LinuxWrapper.h"
#include "tests/support/SimulatedUnit.h"

using namespace Halvix;
using testing::Contains;
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

/// What a new thread finds of itself.
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

TEST(Thread, TakesNoSignalsButThoseOfItsOwnFaults)
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

TEST(RetryingChannel, IsOpenedOnceHoweverManyThreadsBegin)
{
    constexpr std::size_t kRounds = 200;
    SimulatedUnit unit;

    for (std::size_t i = 0; i < kRounds; ++i) {
        RetryingChannel channel{"/dev/diag-id"};
        std::atomic<int> waiting{2};
        const auto begin = [&] {
            for (--waiting; waiting > 0;)
                ::sched_yield();
            EXPECT_EQ(channel.ensureOpen(), ERR_SUCCESS);
        };
        std::thread other{begin};
        begin();
        other.join();
    }

    EXPECT_EQ(std::ranges::count(unit.callsTo("/dev/diag-id"), "open rdwr nonblock"), kRounds);
}

TEST(SleepFully, SleepsTheRestAfterAnInterruption)
{
    SimulatedUnit unit;
    unit.fail("sleep", "1500 ms", EINTR, 1);

    LinuxWrapper::SleepFully(1500);

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms !EINTR", "sleep 1500 ms")); // nothing had passed
}

TEST(SleepFully, AsksOnceWhenNothingInterrupts)
{
    SimulatedUnit unit;

    LinuxWrapper::SleepFully(1100);

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1100 ms"));
}

TEST(Sleep, LastsAsLongAsItIsAskedTo)
{
    SimulatedUnit unit;

    EXPECT_TRUE(LinuxWrapper::Sleep(1500));

    EXPECT_EQ(unit.now(), 1500);
    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms"));
}

TEST(Sleep, AsksTheSystemForZeroToo)
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

TEST(CreationMask, IsTheApplicationsAgainAfterScopesOfTwoThreads)
{
    const unsigned int before = LinuxWrapper::umask(027);
    const auto manyScopes = [] {
        for (int i = 0; i < 20000; ++i)
            const CreationMask scope{0};
    };

    std::thread other{manyScopes};
    manyScopes();
    other.join();

    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
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
        ::alarm(20); // ends a child that waits for a thread that it does not have
        {
            const CreationMask scope{0};
        }
        ::_exit(0);
    }
    other.join();

    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(CreationMask, IsSetAndThePreviousOneGiven)
{
    const unsigned int before = LinuxWrapper::umask(027);

    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
}

} // namespace
