// SPDX-License-Identifier: LicenseRef-HXAux
// Threads that wait for virtual time, as the host that advances it sees them.
#include "tests/simulator/server/direct/ServedUnit.h"

#include <sys/mman.h>

namespace virtual_time_of_a_host_test {

using namespace hxsim;
using namespace std::chrono_literals;
using served_unit::Client;
using served_unit::kProcess;
using served_unit::Served;
using testing::HasSubstr;
using wire::Kind;

constexpr bool kWatched = true;

class VirtualTimeOfAHost : public testing::Test {
protected:
    // Begins to wait; the answer comes with its end.
    static void sleep(Client& on, std::int64_t nanoseconds, bool isWatched = false, const std::string& action = "")
    {
        const wire::Packed packed{wire::Sleep{nanoseconds, isWatched, action}, {kProcess, 1}};
        on.send(packed.head(), {packed.bytes().begin(), packed.bytes().end()});
    }
    static void sleep(Client& on, Time time, bool isWatched = false) { sleep(on, time.count(), isWatched); }
    static wire::Slept ended(Client& on)
    {
        const Packet packet = on.receive();
        return wire::unpacked<wire::Slept>(packet.head, packet.bytes).value();
    }
    // From here on no time passes, until the client has noticed that its wait is over.
    static void holdTime(Client& on, Time until)
    {
        sleep(on, until, kWatched);
        EXPECT_EQ(ended(on).result, 0);
    }
    static void letTimePass(Client& on) { on.send(Client::head(Kind::Cancel)); }

    Time now() const
    {
        const ClockMemory* const clock = clockOfUnit(served.folder());
        const Time time{clock->now.load()};
        munmap(const_cast<ClockMemory*>(clock), sizeof(ClockMemory));
        return time;
    }

    const Served served{Pace{1, true}};
    Client control{served};
    Client first{served};
    Client second{served};
    Client holder{served};
};

TEST_F(VirtualTimeOfAHost, StandsStillWhileNobodyWaits)
{
    EXPECT_EQ(control.command({"get", "light"}).head.value, 0);
    EXPECT_EQ(now(), Time{0});
}

TEST_F(VirtualTimeOfAHost, PassesUntilAWaitIsOver)
{
    sleep(first, 1h, kWatched);

    const wire::Slept slept = ended(first);

    EXPECT_EQ(slept.result, 0);
    EXPECT_EQ(slept.left, 0);
    EXPECT_EQ(now(), Time{1h});
}

TEST_F(VirtualTimeOfAHost, StandsStillUntilAThreadHasNoticedItsEnd)
{
    holdTime(holder, 1s);
    sleep(first, 1s);

    EXPECT_EQ(control.command({"get", "light"}).head.value, 0) << "it serves commands meanwhile";
    EXPECT_EQ(now(), Time{1s});
    letTimePass(holder);

    EXPECT_EQ(ended(first).result, 0);
    EXPECT_EQ(now(), Time{2s});
}

TEST_F(VirtualTimeOfAHost, WakesTheOneWhoseMomentComesFirst)
{
    holdTime(holder, 1s);
    sleep(first, 3s, kWatched);
    sleep(second, 2s, kWatched);
    letTimePass(holder);

    EXPECT_EQ(ended(second).result, 0);
    EXPECT_EQ(now(), Time{3s});
    letTimePass(second);
    EXPECT_EQ(ended(first).result, 0);
    EXPECT_EQ(now(), Time{4s});
}

TEST_F(VirtualTimeOfAHost, WakesThoseOfOneMomentInTheOrderInWhichTheyBeganToWait)
{
    holdTime(holder, 1s);
    sleep(second, 1s, kWatched);
    (void)control.command({"get", "light"}); // the second one is seen before the first one
    sleep(first, 1s, kWatched);
    letTimePass(holder);

    EXPECT_EQ(ended(second).result, 0);
    sleep(holder, 1s, kWatched);
    letTimePass(second);

    EXPECT_EQ(ended(first).result, 0);
    EXPECT_EQ(now(), Time{2s}) << "the moment is not over before all have had their turn";
    letTimePass(first);
    EXPECT_EQ(ended(holder).result, 0);
    EXPECT_EQ(now(), Time{3s});
}

TEST_F(VirtualTimeOfAHost, BelongsToTheHardwareFirst)
{
    holdTime(holder, 1s);
    EXPECT_EQ(control.command({"ramp", "light", "0", "100", "1000000000"}).head.value, 0);
    sleep(first, 1s, kWatched);
    letTimePass(holder);

    EXPECT_EQ(ended(first).result, 0);

    EXPECT_EQ(control.command({"get", "light"}).text(), "100\n");
}

TEST_F(VirtualTimeOfAHost, EndsAWaitThatIsCancelledWithTheTimeLeft)
{
    holdTime(holder, 1s);
    sleep(first, 5s);

    first.send(Client::head(Kind::Cancel));

    const wire::Slept slept = ended(first);
    EXPECT_EQ(slept.result, -EINTR);
    EXPECT_EQ(slept.left, Time{5s}.count());
}

TEST_F(VirtualTimeOfAHost, ForgetsAWaitWhoseConnectionIsOver)
{
    holdTime(holder, 1s);
    sleep(first, 1s);
    sleep(second, 2s, kWatched);
    first.hangUp();
    letTimePass(holder);

    EXPECT_EQ(ended(second).result, 0);
    EXPECT_EQ(now(), Time{3s});
}

TEST_F(VirtualTimeOfAHost, IsHeldByNoConnectionThatIsOver)
{
    holdTime(holder, 1s);
    sleep(first, 1s, kWatched);

    holder.hangUp();

    EXPECT_EQ(ended(first).result, 0);
    EXPECT_EQ(now(), Time{2s});
}

TEST_F(VirtualTimeOfAHost, PassesALittleForAWaitOfNothing)
{
    sleep(first, std::int64_t{0}, kWatched);
    EXPECT_EQ(ended(first).result, 0);
    const Time least = now();
    letTimePass(first);

    sleep(second, std::int64_t{-5}, kWatched);

    EXPECT_EQ(ended(second).result, 0);
    EXPECT_GT(least, Time{0}) << "a program that polls must not stop the time";
    EXPECT_EQ(now(), 2 * least);
}

TEST_F(VirtualTimeOfAHost, BearsTheLongestWait)
{
    sleep(first, INT64_MAX, kWatched);

    EXPECT_EQ(ended(first).result, 0);
    EXPECT_GT(now(), Time{24h * 365 * 50});
    letTimePass(first);
    sleep(second, INT64_MAX, kWatched);
    EXPECT_EQ(ended(second).result, 0) << "and another one behind it";
}

TEST_F(VirtualTimeOfAHost, AllowsOneWaitOnAConnection)
{
    holdTime(holder, 1s);
    sleep(first, 5s);

    sleep(first, 5s);

    EXPECT_EQ(first.receive().head.value, -EINVAL);
}

TEST_F(VirtualTimeOfAHost, RecordsAndFailsAWaitThatHasAName)
{
    EXPECT_EQ(control.command({"fail", "sleep", "*", "EINTR", "1"}).head.value, 0);

    sleep(first, 7, false, "7 ns");
    const wire::Slept failed = ended(first);
    sleep(first, 8, kWatched, "8 ns");

    EXPECT_EQ(failed.result, -EINTR);
    EXPECT_EQ(failed.left, 7);
    EXPECT_EQ(ended(first).result, 0);
    EXPECT_THAT(control.command({"log"}).text(), AllOf(HasSubstr("sleep 7 ns !EINTR\n"), HasSubstr("sleep 8 ns\n")));
}

TEST_F(VirtualTimeOfAHost, HasNoMailboxes)
{
    EXPECT_EQ(first.exchange(Client::head(Kind::Share)).head.value, -ENOTSUP);
}

TEST(RealTimeOfAHost, IsNotWaitedForThere)
{
    const Served served;
    Client client{served};
    const wire::Packed packed{wire::Sleep{1, false, ""}, {kProcess, 1}};

    const Packet answer = client.exchange(packed.head(), {packed.bytes().begin(), packed.bytes().end()});

    EXPECT_EQ(answer.head.value, -EINVAL);
}

} // namespace virtual_time_of_a_host_test
