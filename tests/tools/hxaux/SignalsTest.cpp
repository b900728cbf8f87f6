// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Signals.h"

#include <gmock/gmock.h>

#include <csignal>
#include <functional>
#include <semaphore.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace hxaux;
using namespace std::chrono_literals;

namespace {

// Runs work in a child process that writes a byte when it is ready; then sends a signal and returns the child's status.
int statusAfterSignal(int number, const std::function<void(const std::function<void()>&)>& work)
{
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        alarm(30);
        work([&] { (void)!write(ready[1], "r", 1); });
        _exit(0);
    }
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    kill(child, number);
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

} // namespace

TEST(HeldSignals, TakeEffectWhenTheyAreNoLongerHeld)
{
    const int status = statusAfterSignal(SIGTERM, [](const auto& ready) {
        {
            const HeldSignals held;
            ready();
            std::this_thread::sleep_for(800ms);
        }
        _exit(3); // not reached: the signal came while it was held back
    });

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(HeldSignals, DoNotEndAProgramThatWorks)
{
    const int status = statusAfterSignal(SIGINT, [](const auto& ready) {
        const HeldSignals held;
        ready();
        std::this_thread::sleep_for(1s);
        _exit(3);
    });

    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(HeldSignals, EndAProgramThatOnlyWaitsForALock)
{
    const int status = statusAfterSignal(SIGTERM, [](const auto& ready) {
        sem_t taken;
        sem_init(&taken, 0, 0);
        const HeldSignals held;
        ready();
        sem_wait(&taken);
    });

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(HeldSignals, CanBeTaken)
{
    const HeldSignals held;
    kill(getpid(), SIGHUP);

    EXPECT_EQ(held.take(1s), SIGHUP);
    EXPECT_EQ(held.take(), std::nullopt);
}

TEST(HeldSignals, TakeEffectAtTheEndWhenTheyWereAwaited)
{
    const int status = statusAfterSignal(SIGHUP, [](const auto& ready) {
        {
            const HeldSignals held;
            ready();
            if (held.await(20s) != SIGHUP || held.await() != SIGHUP)
                _exit(3);
        }
        _exit(4);
    });

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGHUP);
}

TEST(HeldSignals, WaitForTheEndOfTheLastHoldWhicheverThatIs)
{
    const int status = statusAfterSignal(SIGINT, [](const auto& ready) {
        auto first = std::make_unique<HeldSignals>();
        const HeldSignals second;
        ready();
        (void)first->await(20s);
        first.reset();
        _exit(3);
    });

    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

// As for a program that nohup starts.
TEST(HeldSignals, LeaveAnIgnoredSignalIgnored)
{
    const int status = statusAfterSignal(SIGHUP, [](const auto& ready) {
        std::signal(SIGHUP, SIG_IGN);
        {
            const HeldSignals held;
            ready();
            if (held.await(1s))
                _exit(4);
        }
        _exit(3);
    });

    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST(HeldSignals, HoldAReaderBackThatWentAway)
{
    const int status = statusAfterSignal(SIGCONT, [](const auto& ready) {
        ready();
        int gone[2];
        (void)!pipe(gone);
        close(gone[0]);
        {
            const HeldSignals held;
            if (write(gone[1], "x", 1) >= 0)
                _exit(4);
            alarm(0);
        }
        _exit(3); // not reached: the program ends by PIPE
    });

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGPIPE);
}
