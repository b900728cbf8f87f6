// SPDX-License-Identifier: LicenseRef-HXAux
// Unmodified programs of both ABIs in virtual time.
#include "testing/RowTest.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <cctype>
#include <sstream>
#include <string>
#include <vector>

namespace virtual_time_programs_test {

using hxtest::errorMatches;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

/// "hx-waiter-i386-time64" and its like, whose clocks and waits have other names in the C library.
std::vector<std::string> waiters()
{
    std::istringstream names{HX_WAITERS};
    std::vector<std::string> all;
    for (std::string name; names >> name;)
        all.push_back(name);
    return all;
}

class VirtualTimeOfPrograms : public UnitFixture {};

class VirtualTimeOfEachAbi : public UnitFixture, public hxtest::WithRow<std::string> {
protected:
    /// Each way and the milliseconds that it takes.
    void expectExactly(const std::string& milliseconds, const std::vector<std::string>& ways)
    {
        std::string words;
        std::string lines;
        for (const std::string& way : ways) {
            words += ' ' + way;
            lines += way + ' ' + milliseconds + '\n';
        }
        EXPECT_THAT(run("hx-sim run --virtual -- " + row() + words), AllOf(outputIs(lines), statusIs(0)));
    }
};

ROW_TEST(VirtualTimeOfEachAbi, PassesExactlyInEveryWaitWithALimit)
{
    expectExactly("3600000", {"nanosleep", "clock_nanosleep", "usleep", "sleep", "poll", "ppoll", "select", "pselect",
                              "epoll_wait", "sem_timedwait", "sem_clockwait", "pthread_cond_timedwait",
                              "pthread_cond_clockwait", "pthread_mutex_timedlock"});
}

ROW_TEST(VirtualTimeOfEachAbi, PassesExactlyUntilAnotherThreadOrProcessEndsAWait)
{
    expectExactly("10000", {"signalled", "pthread_join", "waitpid", "posted", "written", "interrupted", "killed"});
}

TEST_ROWS_IN(
    Of, VirtualTimeOfEachAbi,
    [](const auto& waiter) {
        std::string name = waiter;
        std::erase_if(name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
        return name;
    },
    waiters());

TEST_F(VirtualTimeOfPrograms, IsThatOfTheLongestOfSeveralAtOnce)
{
    EXPECT_THAT(run("hx-sim run --virtual -- sh -c 'a=$(date +%s); sleep 3600 & sleep 60 & sleep 0.5; wait; "
                    "echo $(($(date +%s) - a))'"),
                AllOf(outputIs("3600\n"), statusIs(0)));
}

TEST_F(VirtualTimeOfPrograms, WakesThemInTheOrderOfTheirTimes)
{
    EXPECT_THAT(run("hx-sim run --virtual -- sh -c 'for i in 5 3 1 4 2; do { sleep $i; echo $i; } & done; wait'"),
                outputIs("1\n2\n3\n4\n5\n"));
}

TEST_F(VirtualTimeOfPrograms, StandsStillWhileNobodyWaits)
{
    run("hx-sim start unit --virtual");
    run("hx-sim run --unit unit -- true");

    EXPECT_THAT(run("hx-sim run --unit unit -- " + waiters().front() + " nanosleep"), outputIs("nanosleep 3600000\n"));
    EXPECT_THAT(run("hx-sim log --json | tail -1"), outputMatches(R"("time":0\.0)"));
}

TEST_F(VirtualTimeOfPrograms, NamesAProgramThatDoesNotWaitAndGoesOnAfterIt)
{
    const std::string busy = waiters().front() + " busy";

    EXPECT_THAT(
        run("hx-sim run --virtual -- sh -c 'nice -n 19 timeout 7 " + busy + " & sleep 3600; wait; echo done'"),
        AllOf(errorMatches("hx-sim: program 'hx-waiter[^']*' \\(process [0-9]+\\) has not slept for [0-9]+ s of "
                           "real time: its thread [0-9]+ is running; virtual time passes only while"),
              outputIs("done\n"), statusIs(0)));
}

TEST_F(VirtualTimeOfPrograms, NamesAStoppedProgramAndGoesOnAfterIt)
{
    EXPECT_THAT(run("hx-sim run --virtual -- sh -c 'sleep 3600 & kill -STOP $!; timeout 7 tail -f /dev/null; kill "
                    "-CONT $!; wait; echo done'"),
                AllOf(errorMatches("program '[a-z]+' .* is stopped"), outputIs("done\n"), statusIs(0)));
}

TEST_F(VirtualTimeOfPrograms, NamesAProgramThatAsksTheUnitWithoutAPause)
{
    EXPECT_THAT(run("hx-sim run --virtual -- sh -c 'sleep 3600 & nice -n 19 timeout 7 hx-probe get-forever /dev/adc-id "
                    "0; wait; "
                    "echo done'"),
                AllOf(errorMatches("program 'hx-probe' .* has not slept"), outputIs("done\n"), statusIs(0)));
}

TEST_F(VirtualTimeOfPrograms, NamesAProgramThatWaitsAloneWithoutSleeping)
{
    EXPECT_THAT(run("cd $(mktemp -d) && hx-sim run --virtual -- sh -c 'while ! [ -s message ]; do :; done' 2>message; "
                    "cat message; rm -r \"$PWD\""),
                outputMatches("^hx-sim: program 'sh' .* is running; virtual time passes only while"));
}

TEST_F(VirtualTimeOfPrograms, DoesNotHangWhenAllProgramsAreKilled)
{
    EXPECT_THAT(run("hx-sim run --virtual -- sh -c 'sleep 3600 & sleep 1; kill -KILL $! $$'"), statusIs(137));
}

TEST_F(VirtualTimeOfPrograms, EndsWithAProgramThatOutlivesItsUnit)
{
    run("hx-sim start unit --virtual");

    EXPECT_THAT(run("hx-sim run --unit unit -- sh -c 'hx-sim stop unit; sleep 0.01; echo done'"),
                AllOf(outputIs("done\n"), statusIs(0)));
}

TEST_F(VirtualTimeOfPrograms, IsRefusedTogetherWithAScale)
{
    EXPECT_THAT(run("hx-sim run --virtual --scale 2 -- true"), statusIs(2));
    EXPECT_THAT(run("hx-sim run --unit unit --virtual -- true"), statusIs(2));
}

} // namespace virtual_time_programs_test
