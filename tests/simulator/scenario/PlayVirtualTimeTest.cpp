// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim play scenario --virtual, with real programs.
#include "testing/Command.h"
#include "testing/TemporaryFolder.h"

using namespace hxtest;
using testing::AllOf;
using testing::ElementsAre;

namespace play_virtual_time_test {

class PlayVirtualTime : public testing::Test {
protected:
    TemporaryFolder folder{};

    Outcome play(const std::string& lines, const std::string& program, const std::string& options)
    {
        (void)folder.file("x.scenario", "hx-sim scenario 1\n" + lines);
        return run("cd " + folder.path() + " && hx-sim play scenario " + options + " x.scenario" +
                   (program.empty() ? "" : " -- sh -c '" + program + "'"));
    }
    /// The times of the lines of the first run.
    static std::vector<double> timesOf(const nlohmann::json& result)
    {
        std::vector<double> times;
        for (const nlohmann::json& line : result["runs"][0]["statements"])
            times.push_back(line["time"]);
        return times;
    }
    static std::vector<std::string> statesOf(const nlohmann::json& result)
    {
        std::vector<std::string> states;
        for (const nlohmann::json& line : result["runs"][0]["statements"])
            states.push_back(line["verdict"]);
        return states;
    }
};

TEST_F(PlayVirtualTime, PlaysAnHourWithSeveralProgramsToTheNanosecond)
{
    const nlohmann::json result =
        jsonOf(play("set light 20\nwait 30m\n"
                    "run sh -c \"sleep 60; hxaux buzzer beep 500; sleep 900; hxaux voltage 0\"\n"
                    "expect buzzer.sounding = on within 60s\nexpect output voltage within 961s\n"
                    "expect output third within 5m\nat 60m set light 30\n",
                    "for i in first second third; do sleep 700; echo $i; done; sleep 7200", "--virtual --json"));

    EXPECT_EQ(result["runs"][0]["passed"], true) << result;
    EXPECT_THAT(timesOf(result), ElementsAre(0, 1800, 1800, 1860, 2760.5, 2100, 3600));
}

TEST_F(PlayVirtualTime, FollowsTheAutomaticBacklight)
{
    const nlohmann::json result =
        jsonOf(play("set light 3000\nrun hxaux backlight serve\nwait backlight.level > 200 for 5s within 2m\n"
                    "set light 20\nexpect backlight.level < 190 within 2m\n",
                    "hxaux backlight auto on; sleep 3600", "--virtual --json"));

    EXPECT_EQ(result["runs"][0]["passed"], true) << result;
}

TEST_F(PlayVirtualTime, IsTheSameEachTime)
{
    const auto once = [&] {
        return timesOf(jsonOf(play("wait output on within 10m\nset light 2\nwait output off within 10m\n"
                                   "expect request /dev/backlight * within 1m\n",
                                   "sleep 3; echo on; sleep 0.25; sleep 77 & wait; echo off; sleep 0.5; hxaux "
                                   "backlight set 3; sleep 100",
                                   "--virtual --json")));
    };

    const std::vector<double> first = once();
    EXPECT_THAT(first, ElementsAre(3, 3, 80.25, 80.75));
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(once(), first);
}

TEST_F(PlayVirtualTime, StandsStillWhileAShellGoesFromOneProgramToTheNext)
{
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(timesOf(jsonOf(play("expect request /dev/backlight 0x40010003 00 04 within 60s\n",
                                      "hxaux voltage 0; hxaux backlight set 3; hxaux backlight set 4; sleep 100",
                                      "--virtual --json"))),
                  std::vector<double>{0});
}

TEST_F(PlayVirtualTime, ComesToTheSameAsScaledTime)
{
    const std::string lines = "set light 3\nexpect output bright within 1s\nexpect backlight.level = 7 within 20s\n"
                              "never backlight.level != 7 for 3s\nexpect request /dev/backlight 0x40010003 00 07\n"
                              "expect buzzer.beeps = 1 within 10s\n";
    const std::string program = "sleep 5; hxaux backlight set 7; sleep 8; hxaux buzzer beep 100; sleep 100";

    EXPECT_EQ(statesOf(jsonOf(play(lines, program, "--virtual --json"))),
              statesOf(jsonOf(play(lines, program, "--scale 5 --json"))));
}

TEST_F(PlayVirtualTime, CountsWhatAProgramDoesAtTheLastMoment)
{
    const Outcome outcome = play("expect output done within 10s\n", "sleep 10; echo done; sleep 10", "--virtual");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayVirtualTime, ReportsAProgramThatIsKilled)
{
    const Outcome outcome = play("wait 60m\n", "sleep 10; kill -KILL $$", "--virtual");

    EXPECT_THAT(outcome,
                AllOf(statusIs(1), outputMatches("ok +3600.000 s  wait 60m\nFAILED +sh ended with status 137")));
}

TEST_F(PlayVirtualTime, LetsAProgramSleepBeforeItEnds)
{
    const Outcome outcome =
        play("wait 60m\n", "trap \"sleep 600; echo over >over; exit 0\" TERM; sleep 7200 & wait", "--virtual");

    EXPECT_THAT(outcome, statusIs(0));
    EXPECT_THAT(run("cat " + folder / "over"), outputIs("over\n"));
}

TEST_F(PlayVirtualTime, FailsWithTheNameOfAProgramThatNeverWaits)
{
    const Outcome outcome =
        play("wait 60m\nset light 3\n", "renice -n 19 $$ >/dev/null; while :; do :; done", "--virtual");

    EXPECT_THAT(
        outcome,
        AllOf(statusIs(1), errorMatches("hx-sim: program 'sh' .* has not slept for 5 s of real time"),
              outputMatches("FAILED .*x.scenario:2: wait 60m; program 'sh' .* is running; virtual time passes only "
                            "while all programs sleep or wait\nskipped +set light 3\n")));
}

TEST_F(PlayVirtualTime, PassesInTheTimeOfTheUnitAlone)
{
    // Shell commands drive a unit whose time stands still between them.
    run("hx-sim start virtual-shell --virtual");
    EXPECT_THAT(run("hx-sim expect --unit virtual-shell never light != 250 for 60m"), statusIs(0));
    EXPECT_THAT(run("hx-sim run --unit virtual-shell -- sh -c '(sleep 600; hxaux backlight set 9) & hx-sim wait --unit "
                    "virtual-shell backlight.level = 9 --timeout 10m'"),
                statusIs(0));
    EXPECT_THAT(run("hx-sim wait --unit virtual-shell backlight.level = 10 --timeout 60m"), statusIs(1));
    run("hx-sim stop virtual-shell");
}

} // namespace play_virtual_time_test
