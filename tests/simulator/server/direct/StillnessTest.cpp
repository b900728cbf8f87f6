// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/Stillness.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace stillness_test {

using namespace hxsim;
using namespace std::chrono_literals;

/// A child that runs this until it is killed, with all that it has started.
class Child {
public:
    explicit Child(const std::function<void()>& work) : process_{fork()}
    {
        if (process_ == 0) {
            setpgid(0, 0);
            work();
            _exit(0);
        }
        setpgid(process_, process_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { end(); }
    void end()
    {
        if (process_ <= 0)
            return;
        kill(-process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = -1;
    }
    [[nodiscard]] int process() const { return process_; }

private:
    int process_;
};

void waitForever()
{
    for (;;)
        pause();
}

void runForever()
{
    const volatile bool goesOn = true;
    while (goesOn) {
    }
}

bool nobodySleeps(int /*thread*/)
{
    return false;
}

/// Looks until nothing runs, or until this state is seen.
char lookUntil(Stillness& stillness, const std::vector<int>& processes, char state)
{
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (std::chrono::steady_clock::now() < end) {
        const std::optional<ThreadState> running = stillness.threadThatRuns(processes, nobodySleeps);
        const char seen = running ? running->state : '-';
        if (seen == state)
            return seen;
        std::this_thread::sleep_for(1ms);
    }
    return '?';
}

TEST(Stillness, IsThereWithoutAnyProcess)
{
    Stillness stillness;

    EXPECT_FALSE(stillness.threadThatRuns({}, nobodySleeps));
    EXPECT_FALSE(stillness.threadThatRuns({INT32_MAX}, nobodySleeps));
}

TEST(Stillness, IsThereWhenAllThreadsOfAllProcessesWait)
{
    const Child one{waitForever};
    const Child other{[] {
        std::thread second{waitForever};
        waitForever();
    }};
    Stillness stillness;

    EXPECT_EQ(lookUntil(stillness, {one.process(), other.process()}, '-'), '-');
}

TEST(Stillness, IsNotThereWhileAThreadRuns)
{
    const Child waits{waitForever};
    const Child runs{[] {
        std::thread second{runForever};
        waitForever();
    }};
    Stillness stillness;
    ASSERT_EQ(lookUntil(stillness, {waits.process()}, '-'), '-') << "it has begun to wait";
    EXPECT_EQ(lookUntil(stillness, {waits.process(), runs.process()}, 'R'), 'R');

    for (int i = 0; i < 1000; ++i) {
        const std::optional<ThreadState> running =
            stillness.threadThatRuns({waits.process(), runs.process()}, nobodySleeps);
        ASSERT_TRUE(running);
        EXPECT_EQ(running->process, runs.process());
    }
}

TEST(Stillness, IsNotThereWhileAProcessIsStopped)
{
    const Child stopped{[] { raise(SIGSTOP); }};
    Stillness stillness;

    EXPECT_EQ(lookUntil(stillness, {stopped.process()}, 'T'), 'T');
}

TEST(Stillness, NeedsTheChildrenOfAProcessToWait)
{
    const Child parent{[] {
        if (fork() == 0) {
            const pid_t runner = fork();
            if (runner == 0)
                runForever();
            waitForever();
        }
        waitForever();
    }};
    Stillness stillness;

    EXPECT_EQ(lookUntil(stillness, {parent.process()}, 'R'), 'R');
}

TEST(Stillness, ReturnsWithTheEndOfAProcessThatRan)
{
    const Child waits{waitForever};
    Child runs{runForever};
    Stillness stillness;
    EXPECT_EQ(lookUntil(stillness, {waits.process(), runs.process()}, 'R'), 'R');

    runs.end();

    EXPECT_EQ(lookUntil(stillness, {waits.process(), runs.process()}, '-'), '-');
}

TEST(Stillness, DoesNotCountThisProgram)
{
    Stillness stillness;

    EXPECT_EQ(lookUntil(stillness, {getpid()}, '-'), '-');
}

} // namespace stillness_test
