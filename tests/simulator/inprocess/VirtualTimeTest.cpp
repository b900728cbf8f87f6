// SPDX-License-Identifier: LicenseRef-HXAux
// When time passes, and who goes first, among threads of the test's own.
#include "simulator/inprocess/VirtualTime.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

using hxsim::Clock;
using hxsim::Time;
using hxsim::VirtualTime;
using Rank = hxsim::VirtualTime::Rank;
using namespace std::chrono_literals;

namespace {

/// Threads that wait in virtual time. Nothing passes until `finish`: until then the test itself counts as one.
class VirtualTimeTest : public testing::Test {
protected:
    VirtualTimeTest() { time.threadEntered(); }

    /// The body runs with the lock held, and shows in `log` what it did.
    void thread(std::function<void()> body)
    {
        {
            const std::lock_guard guard{lock};
            time.threadEntered();
        }
        threads.emplace_back([this, body = std::move(body)] {
            std::unique_lock own{lock};
            held = &own;
            body();
            time.threadLeft();
        });
        settle();
    }
    /// Waits, in real time, until every thread but the test itself waits.
    void settle()
    {
        while (waiting < static_cast<int>(threads.size()))
            std::this_thread::yield();
    }
    void finish()
    {
        {
            const std::lock_guard guard{lock};
            time.threadLeft();
        }
        for (std::thread& each : threads)
            each.join();
    }
    bool wait(std::optional<Time> deadline, const void* on = nullptr, Rank rank = Rank::Program,
              std::function<bool()> ready = {})
    {
        std::unique_lock<std::mutex>& own = *held;
        ++waiting;
        const bool woken = time.wait(own, deadline, on, rank, "a test", std::move(ready));
        held = &own;
        --waiting;
        return woken;
    }
    void note(const std::string& name) { log += name + '@' + std::to_string(clock.now() / 1ms) + ' '; }

    std::mutex lock{};
    Clock clock{};
    VirtualTime time{clock};
    std::vector<std::thread> threads{};
    static thread_local std::unique_lock<std::mutex>* held;
    std::atomic<int> waiting{0};
    std::string log{};
    int channel = 0;
    int other = 0;
};

thread_local std::unique_lock<std::mutex>* VirtualTimeTest::held = nullptr;

TEST_F(VirtualTimeTest, LetsASleepTakeNoRealTime)
{
    const auto begin = std::chrono::steady_clock::now();
    thread([&] {
        EXPECT_FALSE(wait(24h));
        note("woke");
    });
    finish();

    EXPECT_EQ(log, "woke@86400000 ");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1h);
}

TEST_F(VirtualTimeTest, StandsStillWhileAThreadRuns)
{
    thread([&] { (void)wait(10ms); });
    {
        const std::lock_guard guard{lock};
        EXPECT_EQ(clock.now(), 0ns) << "the test itself runs";
    }
    finish();
    EXPECT_EQ(clock.now(), 10ms);
}

TEST_F(VirtualTimeTest, WakesThreadsInTheOrderOfTheirDeadlines)
{
    for (const auto& [name, deadline] : {std::pair{"c", 30ms}, std::pair{"a", 10ms}, std::pair{"b", 20ms}})
        thread([this, name = name, deadline = deadline] {
            (void)wait(deadline);
            note(name);
        });
    finish();

    EXPECT_EQ(log, "a@10 b@20 c@30 ");
}

TEST_F(VirtualTimeTest, WakesEqualDeadlinesInTheOrderOfTheirWaits)
{
    for (const char* name : {"a", "b", "c"})
        thread([this, name] {
            (void)wait(10ms);
            note(name);
        });
    finish();

    EXPECT_EQ(log, "a@10 b@10 c@10 ");
}

TEST_F(VirtualTimeTest, WakesAnObserverAfterAllOthersOfItsMoment)
{
    thread([&] {
        (void)wait(10ms, nullptr, Rank::Observer);
        note("observer");
    });
    thread([&] {
        (void)wait(10ms);
        note("program");
        (void)wait(clock.now());
        note("again");
    });
    finish();

    EXPECT_EQ(log, "program@10 again@10 observer@10 ");
}

TEST_F(VirtualTimeTest, RunsOneThreadAtATime)
{
    for (const char* name : {"a", "b"})
        thread([this, name] {
            (void)wait(10ms);
            note(name + std::string{" begins"});
            (void)wait(clock.now() + 5ms);
            note(name + std::string{" ends"});
        });
    finish();

    EXPECT_EQ(log, "a begins@10 b begins@10 a ends@15 b ends@15 ");
}

TEST_F(VirtualTimeTest, RunsTheHardwaresTimersBeforeTheThreadsOfTheirMoment)
{
    clock.at(10ms, [&] { note("timer"); });
    thread([&] {
        (void)wait(10ms);
        note("thread");
    });
    finish();

    EXPECT_EQ(log, "timer@10 thread@10 ");
}

TEST_F(VirtualTimeTest, EndsAWaitThroughItsChannel)
{
    thread([&] {
        EXPECT_TRUE(wait(1h, &channel));
        note("woken");
    });
    thread([&] {
        (void)wait(10ms);
        time.wakeOne(&other);
        time.wakeOne(&channel);
    });
    finish();

    EXPECT_EQ(log, "woken@10 ");
}

TEST_F(VirtualTimeTest, WakesOneOrAllOfAChannel)
{
    for (const char* name : {"a", "b", "c"})
        thread([this, name] {
            EXPECT_TRUE(wait(std::nullopt, &channel));
            note(name);
        });
    thread([&] {
        (void)wait(10ms);
        time.wakeOne(&channel);
        (void)wait(20ms);
        time.wakeAll(&channel);
    });
    finish();

    EXPECT_THAT(log, testing::StartsWith("a@10 "));
    EXPECT_THAT(log, testing::HasSubstr("b@20 "));
    EXPECT_THAT(log, testing::HasSubstr("c@20 "));
}

TEST_F(VirtualTimeTest, EndsAWaitWhenATimerMadeItsConditionTrue)
{
    bool ready = false;
    clock.at(5ms, [] {});
    clock.at(10ms, [&] { ready = true; });
    thread([&] {
        EXPECT_TRUE(wait(1h, nullptr, Rank::Program, [&] { return ready; }));
        note("ready");
    });
    finish();

    EXPECT_EQ(log, "ready@10 ");
}

TEST_F(VirtualTimeTest, EndsAWaitAtItsDeadlineWhenItsConditionStaysFalse)
{
    clock.at(5ms, [] {});
    thread([&] {
        EXPECT_FALSE(wait(20ms, nullptr, Rank::Program, [] { return false; }));
        note("late");
    });
    finish();

    EXPECT_EQ(log, "late@20 ");
}

TEST_F(VirtualTimeTest, DoesNotGoBackForADeadlineInThePast)
{
    clock.advanceTo(50ms);
    thread([&] {
        EXPECT_FALSE(wait(10ms));
        note("woke");
    });
    finish();

    EXPECT_EQ(log, "woke@50 ");
}

TEST_F(VirtualTimeTest, GoesOnWhenAThreadLeavesInsteadOfWaiting)
{
    thread([&] {
        (void)wait(10ms);
        note("first");
    });
    thread([&] {
        (void)wait(20ms);
        note("second");
    });
    finish();

    EXPECT_EQ(log, "first@10 second@20 ");
}

TEST_F(VirtualTimeTest, LetsSomebodyOutsideEndAWaitWithoutADeadline)
{
    time.expectOutsiders();
    EXPECT_TRUE(time.outsidersExpected());
    thread([&] {
        EXPECT_TRUE(wait(std::nullopt, &channel));
        note("woken");
    });
    {
        const std::lock_guard guard{lock};
        time.threadLeft(); // the test is outside now: every thread of the program waits
        EXPECT_EQ(log, "");
        time.wakeAll(&channel);
        time.threadEntered();
    }
    finish();

    EXPECT_EQ(log, "woken@0 ");
}

using VirtualTimeDeathTest = VirtualTimeTest;

TEST_F(VirtualTimeDeathTest, ShowsWhatEachThreadWaitsForWhenNobodyCanGoOn)
{
    EXPECT_DEATH(
        {
            std::unique_lock own{lock};
            (void)time.wait(own, std::nullopt, &channel, Rank::Program, "semaphore /x");
        },
        "every thread of the program waits for another thread .unit's time 0.000 s, 0 running.:\n  semaphore /x\n");
}

TEST_F(VirtualTimeDeathTest, EndsHardwareThatTurnsForeverWhileEveryThreadWaits)
{
    std::function<void()> again = [&] { clock.after(1h, again); };
    again();
    EXPECT_DEATH(
        {
            std::unique_lock own{lock};
            (void)time.wait(own, std::nullopt, &channel, Rank::Program, "semaphore /x");
        },
        "every thread of the program waits for another thread .unit's time 90000.000 s");
}

} // namespace
