// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Clock.h"

#include "tests/simulator/model/ModelTest.h"

using hxsim::Clock;
using hxsim::Time;
using namespace std::chrono_literals;

namespace {

/// A clock and the order in which its timers ran, each as "name@milliseconds ".
struct Timed {
    Clock clock;
    std::string ran;

    Clock::Callback note(const std::string& name)
    {
        return [this, name] { ran += name + '@' + std::to_string(clock.now() / 1ms) + ' '; };
    }
};

TEST(Clock, BeginsAtZeroWithNothingDue)
{
    const Clock clock;

    EXPECT_EQ(clock.now(), 0ns);
    EXPECT_EQ(clock.nextDeadline(), std::nullopt);
}

TEST(Clock, RunsATimerAtItsTimeAndNotBefore)
{
    Timed timed;
    timed.clock.at(10ms, timed.note("a"));

    timed.clock.advanceTo(9'999'999ns);
    EXPECT_EQ(timed.ran, "");
    timed.clock.advanceTo(10ms);
    EXPECT_EQ(timed.ran, "a@10 ");
}

TEST(Clock, RunsATimerOnce)
{
    Timed timed;
    timed.clock.at(10ms, timed.note("a"));

    timed.clock.advanceTo(10ms);
    timed.clock.advanceTo(30ms);

    EXPECT_EQ(timed.ran, "a@10 ");
}

TEST(Clock, CountsADelayFromNow)
{
    Timed timed;
    timed.clock.advanceTo(5ms);
    timed.clock.after(10ms, timed.note("a"));

    EXPECT_EQ(timed.clock.nextDeadline(), Time{15ms});
    timed.clock.advanceTo(20ms);
    EXPECT_EQ(timed.ran, "a@15 ");
}

TEST(Clock, RunsTimersInTheOrderOfTheirTimes)
{
    Timed timed;
    timed.clock.at(30ms, timed.note("c"));
    timed.clock.at(10ms, timed.note("a"));
    timed.clock.at(20ms, timed.note("b"));

    timed.clock.advanceTo(1s);

    EXPECT_EQ(timed.ran, "a@10 b@20 c@30 ");
    EXPECT_EQ(timed.clock.now(), 1s);
}

TEST(Clock, RunsTimersOfOneTimeInTheOrderInWhichTheyWereAskedFor)
{
    Timed timed;
    for (const char* name : {"a", "b", "c"})
        timed.clock.at(10ms, timed.note(name));

    timed.clock.advanceTo(10ms);

    EXPECT_EQ(timed.ran, "a@10 b@10 c@10 ");
}

TEST(Clock, RunsOnTheWayWhatATimerAdds)
{
    Timed timed;
    timed.clock.at(10ms, [&] {
        timed.ran += "first ";
        timed.clock.after(5ms, timed.note("second"));
    });
    timed.clock.at(20ms, timed.note("third"));

    timed.clock.advanceTo(30ms);

    EXPECT_EQ(timed.ran, "first second@15 third@20 ");
}

TEST(Clock, RunsAPastTimeAtTheNextAdvanceWithoutGoingBack)
{
    Timed timed;
    timed.clock.advanceTo(50ms);
    timed.clock.at(10ms, timed.note("late"));

    EXPECT_EQ(timed.clock.nextDeadline(), Time{50ms});
    EXPECT_EQ(timed.ran, "") << "not within the call itself";
    timed.clock.advanceTo(50ms);
    EXPECT_EQ(timed.ran, "late@50 ");
}

TEST(Clock, NeverGoesBack)
{
    Clock clock;
    clock.advanceTo(50ms);

    clock.advanceTo(20ms);

    EXPECT_EQ(clock.now(), 50ms);
}

TEST(Clock, DoesNotRunWhatIsCancelled)
{
    Timed timed;
    const Clock::Key first = timed.clock.at(10ms, timed.note("a"));
    timed.clock.at(10ms, timed.note("b"));

    timed.clock.cancel(first);
    timed.clock.cancel(first);
    timed.clock.advanceTo(10ms);

    EXPECT_EQ(timed.ran, "b@10 ");
}

TEST(Clock, LetsATimerCancelAnotherOneOfTheSameTime)
{
    Timed timed;
    Clock::Key second{};
    timed.clock.at(10ms, [&] { timed.clock.cancel(second); });
    second = timed.clock.at(10ms, timed.note("second"));

    timed.clock.advanceTo(10ms);

    EXPECT_EQ(timed.ran, "");
    EXPECT_EQ(timed.clock.nextDeadline(), std::nullopt);
}

} // namespace
