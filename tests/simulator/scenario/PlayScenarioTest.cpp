// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim play scenario, with real programs on units of their own.
#include "testing/Command.h"
#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"

#include <fstream>

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace play_scenario_test {

class PlayScenario : public testing::Test {
protected:
    TemporaryFolder folder{};

    /// Plays these lines with a program (a shell command) or, when that is empty, without.
    Outcome play(const std::string& lines, const std::string& program = "", const std::string& options = "")
    {
        const std::string file = folder.file("x.scenario", "hx-sim scenario 1\n" + lines);
        const std::string rest = program.empty() ? "" : " -- sh -c '" + program + "'";
        return run("cd " + folder.path() + " && hx-sim play scenario " + options + ' ' + "x.scenario" + rest);
    }
    [[nodiscard]] std::string content(const std::string& name) const { return fileContent(folder / name); }
};

TEST_F(PlayScenario, PassesWhenEverythingIsMet)
{
    const Outcome outcome = play("set light 20\nexpect light = 20\n");

    EXPECT_THAT(outcome, AllOf(statusIs(0), outputMatches("^ok +[0-9.]+ s  set light 20\nok +[0-9.]+ s  expect light = "
                                                          "20\npassed\n$")));
}

TEST_F(PlayScenario, FailsWithThePlaceAndWhatWasSeen)
{
    const Outcome outcome = play("expect light = 20\nset light 30\n");

    EXPECT_THAT(outcome, AllOf(statusIs(1), outputMatches("FAILED .*x.scenario:2: expect light = 20; light was "),
                               outputMatches("ok .*set light 30\nfailed\n$")));
}

TEST_F(PlayScenario, SeesWhatAProgramDoes)
{
    const Outcome outcome = play(
        "wait output ready within 30s\nset light 3\nexpect backlight.level = 40 within 30s\nexpect request "
        "/dev/backlight 0x40010003 00 28\n",
        "echo ready; while [ \"$(hxaux light 2>&1 | head -1)\" = \"light: 250 lux\" ]; do :; done; hxaux backlight "
        "set 40; sleep 100");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayScenario, CountsWhatHappenedSinceTheActionThatCausedIt)
{
    const Outcome outcome = play("set light 3\nwait output done within 30s\n"
                                 "set light 4\nwait 300ms\nexpect output done\n",
                                 "hxaux version >/dev/null; echo done; sleep 100");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayScenario, CountsFromTheMomentForWhichItWaited)
{
    const std::string ramp = "ramp light from 10 to 20 over 1s\n";

    EXPECT_THAT(play(ramp + "wait light = 20\nnever light < 20 for 100ms\n", "", "--scale 10"), statusIs(0));
    EXPECT_THAT(play(ramp + "expect light = 20 within 2s\nnever light < 20 for 100ms\n", "", "--scale 10"),
                statusIs(1));
}

TEST_F(PlayScenario, ShowsTimesInTheirOrder)
{
    const nlohmann::json result =
        jsonOf(play("set light 3\nexpect light = 3 within 1s\nwait 20ms\nset light 4\nexpect light = 4\n", "",
                    "--json --scale 20"));

    double last = 0;
    for (const nlohmann::json& line : result["runs"][0]["statements"]) {
        EXPECT_GE(line["time"], last) << line;
        last = line["time"];
    }
}

TEST_F(PlayScenario, SkipsWhatFollowsAWaitThatFailed)
{
    const Outcome outcome = play("wait light = 3 within 20ms\nset light 3\n");

    EXPECT_THAT(outcome, AllOf(statusIs(1), outputMatches("FAILED .*wait light = 3 within 20ms; light was "),
                               outputMatches("skipped +set light 3\n")));
}

TEST_F(PlayScenario, WaitsForTheTimesOfItsLines)
{
    const nlohmann::json result =
        jsonOf(play("at 2s set light 3\nexpect light = 3\nat 3s set light 4\n", "", "--json --scale 50"));

    const nlohmann::json& statements = result["runs"][0]["statements"];
    EXPECT_EQ(result["runs"][0]["passed"], true);
    EXPECT_GE(statements[0]["time"], 2.0);
    EXPECT_GE(statements[2]["time"], 3.0);
}

TEST_F(PlayScenario, RampsAPropertyBesideItsOtherLines)
{
    const Outcome outcome =
        play("ramp light from 10 to 20 over 2s\nexpect light < 12 within 1s\nexpect light = 20 within "
             "2500ms\nnever light > 20 for 3s\n",
             "", "--scale 20");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayScenario, RampsAWholeNumberInWholeNumbers)
{
    EXPECT_THAT(play("ramp backlight.level from 0 to 255 over 1s\nexpect backlight.level = 255 within 2s\n"),
                statusIs(0));
}

TEST_F(PlayScenario, RunsSeveralProgramsOnOneUnit)
{
    const Outcome outcome = play("run sh -c \"hxaux backlight set 40; sleep 100\"\nexpect backlight.level = 40 within "
                                 "30s\nrun sh -c \"hxaux backlight get; sleep 100\"\nexpect output 40 within 30s\n");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayScenario, ShowsTheLinesOfItsPrograms)
{
    EXPECT_THAT(play("wait output hello within 30s\n", "echo hello; sleep 100"),
                AllOf(statusIs(0), outputMatches("\n? +sh: hello\nok")));
}

TEST_F(PlayScenario, FailsWhenAProgramEndsWithAnError)
{
    EXPECT_THAT(play("wait output hello within 30s\nwait 100s\n", "echo hello; exit 3", "--scale 20"),
                AllOf(statusIs(1), outputMatches("FAILED +sh ended with status 3\nfailed\n$")));
}

TEST_F(PlayScenario, InjectsFailures)
{
    const Outcome outcome = play("fail /dev/adc-id get 0 EIO\nrun sh -c \"hxaux voltage 0; sleep 100\"\nexpect request "
                                 "/dev/adc-id get 0 !EIO within 30s\n");

    EXPECT_THAT(outcome, statusIs(0));
}

TEST_F(PlayScenario, PlaysEachRowOfItsExamplesOnANewUnit)
{
    const Outcome outcome = play("expect buzzer.volume = 25\nset buzzer.volume $VOLUME\nexpect buzzer.volume < "
                                 "5\nexamples\n| VOLUME |\n| 3 |\n| 7 |\n");

    EXPECT_THAT(outcome, AllOf(statusIs(1), outputMatches("VOLUME=3\n.*VOLUME=7\n.*1 passed, 1 failed\n$")));
}

TEST_F(PlayScenario, RefusesAMistakeBeforeTheProgramStarts)
{
    const Outcome outcome = play("set light 3\nexpect ligth = 3\n", "touch started");

    EXPECT_THAT(outcome, AllOf(statusIs(3), errorMatches("x.scenario:3: the unit has no property 'ligth'; did you mean "
                                                         "'light'\\?")));
    EXPECT_FALSE(std::ifstream{folder / "started"}.good());
}

TEST_F(PlayScenario, WritesJunit)
{
    (void)play("expect light = 3\nexamples\n| A |\n| 1 |\n| <2 |\n", "", "--junit result.xml");

    EXPECT_THAT(content("result.xml"),
                AllOf(HasSubstr("<testsuite name=\"x.scenario\" tests=\"2\" failures=\"2\""),
                      HasSubstr("name=\"A=&lt;2\""),
                      HasSubstr("<failure message=\"x.scenario:2: expect light = 3; light was ")));
}

TEST_F(PlayScenario, PrintsJson)
{
    const nlohmann::json result = jsonOf(play("set light 4\nexpect light = 3\n", "", "--json"));

    EXPECT_EQ(result["scenario"], "x.scenario");
    const nlohmann::json& first = result["runs"][0];
    EXPECT_EQ(first["passed"], false);
    EXPECT_EQ(first["statements"][0]["verdict"], "ok");
    EXPECT_EQ(first["statements"][1]["verdict"], "failed");
    EXPECT_EQ(first["statements"][1]["line"], 3);
    EXPECT_EQ(first["statements"][1]["seen"], "light was 4");
}

TEST_F(PlayScenario, DrawsThePropertiesThatItNames)
{
    (void)play("set light 4\nexpect backlight.level = 3\n", "", "--plot run.svg");

    EXPECT_THAT(content("run.svg"), AllOf(HasSubstr(">light</text>"), HasSubstr(">backlight.level</text>"),
                                          HasSubstr("class=\"bad\""), Not(HasSubstr(">voltage.0</text>"))));
}

TEST_F(PlayScenario, LeavesNoUnitBehind)
{
    const std::string here = "export XDG_RUNTIME_DIR=" + folder.path() + "; ";
    (void)folder.file("x.scenario", "hx-sim scenario 1\nset light 3\n");

    EXPECT_THAT(run(here + "hx-sim play scenario " + (folder / "x.scenario") + " >/dev/null; hx-sim list"),
                outputIs(""));
}

} // namespace play_scenario_test
