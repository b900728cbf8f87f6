// SPDX-License-Identifier: LicenseRef-HXAux
// Memory of a program that may be bad, names that a program generates, and a lock that no signal handler interrupts.
#include "simulator/interpose/CallerMemory.h"

#include "simulator/interpose/Generated.h"
#include "simulator/interpose/SignalSafeLock.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

using namespace hxsim;

namespace {

/// A page that can be used, and one behind it that cannot.
class CallerMemoryTest : public testing::Test {
protected:
    CallerMemoryTest()
        : size{static_cast<std::size_t>(sysconf(_SC_PAGESIZE))}, good{static_cast<char*>(
                                                                     mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE,
                                                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))},
          bad{good + size}
    {
        EXPECT_EQ(mprotect(bad, size, PROT_NONE), 0);
    }
    ~CallerMemoryTest() override { munmap(good, 2 * size); }

    const std::size_t size;
    char* const good;
    char* const bad;
    std::array<char, 8> ours{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
};

TEST_F(CallerMemoryTest, IsCopiedBothWays)
{
    EXPECT_TRUE(copyToCaller(good, ours.data(), ours.size()));
    EXPECT_EQ(std::string(good, 8), "abcdefgh");
    good[0] = 'X';
    EXPECT_TRUE(copyFromCaller(ours.data(), good, 4));
    EXPECT_EQ(std::string(ours.data(), 8), "Xbcdefgh");
}

TEST_F(CallerMemoryTest, IsRefusedWhereItIsBad)
{
    EXPECT_FALSE(copyToCaller(bad, ours.data(), 1));
    EXPECT_FALSE(copyFromCaller(ours.data(), bad, 1));
    EXPECT_FALSE(copyToCaller(nullptr, ours.data(), 1));
    EXPECT_EQ(ours[0], 'a');
}

TEST_F(CallerMemoryTest, IsRefusedWhereItEndsInTheMiddle)
{
    EXPECT_FALSE(copyToCaller(bad - 4, ours.data(), 8));
    EXPECT_FALSE(copyFromCaller(ours.data(), bad - 4, 8));
    EXPECT_TRUE(copyToCaller(bad - 8, ours.data(), 8));
}

TEST_F(CallerMemoryTest, IsNeverTouchedForNothing)
{
    EXPECT_TRUE(copyToCaller(bad, ours.data(), 0));
    EXPECT_TRUE(copyFromCaller(ours.data(), nullptr, 0));
    EXPECT_TRUE(isReachable(nullptr, 0));
}

TEST_F(CallerMemoryTest, IsReachableWhenItsFirstAndLastByteAre)
{
    EXPECT_TRUE(isReachable(good, size));
    EXPECT_FALSE(isReachable(good, size + 1));
    EXPECT_FALSE(isReachable(bad, 1));
    EXPECT_FALSE(isReachable(nullptr, 1));
}

TEST(GeneratedNames, AreShownByTheirPattern)
{
    rememberGenerated("/hxTest.a1B2c3", "/hxTest.XXXXXX");

    EXPECT_TRUE(isGenerated("/hxTest.a1B2c3"));
    EXPECT_EQ(shownName("/hxTest.a1B2c3"), "/hxTest.XXXXXX");
    EXPECT_FALSE(isGenerated("/hxTest.other1"));
    EXPECT_EQ(shownName("/hxTest.other1"), "/hxTest.other1");
    EXPECT_FALSE(isGenerated("/hxTest.XXXXXX"));
}

bool isBlocked(int signal)
{
    sigset_t blocked;
    sigemptyset(&blocked);
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}

TEST(SignalSafeLock, BlocksSignalsAsLongAsItIsHeld)
{
    SignalSafeLock lock;
    EXPECT_FALSE(isBlocked(SIGUSR1));
    {
        const std::lock_guard guard{lock};
        EXPECT_TRUE(isBlocked(SIGUSR1));
        EXPECT_TRUE(isBlocked(SIGTERM));
    }
    EXPECT_FALSE(isBlocked(SIGUSR1));
}

TEST(SignalSafeLock, RestoresTheSignalsThatWereBlockedBefore)
{
    sigset_t one;
    sigset_t before;
    sigemptyset(&one);
    sigaddset(&one, SIGUSR2);
    pthread_sigmask(SIG_BLOCK, &one, &before);
    SignalSafeLock lock;
    {
        const std::lock_guard guard{lock};
    }
    EXPECT_TRUE(isBlocked(SIGUSR2));
    EXPECT_FALSE(isBlocked(SIGUSR1));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace
