// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <filesystem>

namespace {

using hxtest::errorMatches;
using hxtest::jsonLinesOf;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

using HxSim = UnitFixture;

std::string semaphoreFile(const std::string& unit)
{
    return "/dev/shm/sem." +
           hxsim::UnitFolder::semaphorePrefix(hxsim::UnitFolder::markOf(hxsim::UnitFolder::pathOf(unit))).substr(1) +
           "HXAUX_PROBE";
}

TEST_F(HxSim, PassesTheProgramsStatusOn)
{
    EXPECT_THAT(run("hx-sim run -- sh -c 'exit 7' 2>/dev/null"), statusIs(7));
}

TEST_F(HxSim, LeavesTheLocksOfAUnitOfTheSameNameElsewhereAlone)
{
    const auto outcome = run("elsewhere=$(mktemp -d); hx-sim start twin; XDG_RUNTIME_DIR=$elsewhere hx-sim start twin; "
                             "hx-sim run --unit twin -- hxaux settings set KEY value >/dev/null; "
                             "XDG_RUNTIME_DIR=$elsewhere hx-sim stop twin; rmdir $elsewhere; "
                             "hx-sim run --unit twin -- hxaux locks | grep INI; hx-sim stop twin");

    EXPECT_THAT(outcome, outputIs("FILE_HXAUXINI_IS_IN_USE: free, value 1, used by no process\n"));
}

TEST_F(HxSim, PassesAKilledProgramsSignalOn)
{
    EXPECT_THAT(run("hx-sim run -- sh -c 'kill -9 $$' 2>/dev/null"), statusIs(137));
}

TEST_F(HxSim, SaysThatAProgramIsNotThere)
{
    EXPECT_THAT(run("hx-sim run -- no-such-program"),
                AllOf(statusIs(127), errorMatches("cannot start no-such-program")));
}

TEST_F(HxSim, ListsTheUnitsThatRun)
{
    run("hx-sim start one; hx-sim start two");

    EXPECT_THAT(run("hx-sim list | sort"), outputIs("one\ntwo\n"));

    run("hx-sim stop one");
    EXPECT_THAT(run("hx-sim list"), outputIs("two\n"));
}

TEST_F(HxSim, ListsPropertiesAndActionsWhileSeveralUnitsRun)
{
    run("hx-sim start one; hx-sim start two");

    for (const char* const list : {"properties", "actions"})
        EXPECT_THAT(run("hx-sim " + std::string{list}),
                    AllOf(outputMatches("voltage"), errorMatches("several units .* --unit NAME"), statusIs(0)));
    EXPECT_THAT(run("hx-sim properties --unit two"), AllOf(hxtest::errorIs(""), statusIs(0)));
    EXPECT_THAT(run("hx-sim set light 1"), AllOf(errorMatches("several units are running; choose one"), statusIs(6)));
}

TEST_F(HxSim, PlaysAProfileThatComesWithItByItsName)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim play light tunnel"), AllOf(hxtest::errorIs(""), statusIs(0)));
    EXPECT_THAT(
        run("hx-sim play light tunel"),
        AllOf(hxtest::errorIs("hx-sim: there is no file or profile 'tunel'; did you mean 'tunnel'?\n"), statusIs(1)));
    EXPECT_THAT(run("hx-sim play light night"), AllOf(errorMatches("profiles are day, flicker, hand"), statusIs(1)));
}

struct Wording {
    const char* words;
    const char* error;
};

TEST_F(HxSim, NamesEachUsageErrorInItsOwnWords)
{
    for (const Wording& each : {Wording{"start", "missing argument: name; usage: hx-sim start NAME"},
                                Wording{"start one two", "too many arguments: 'two'; usage: hx-sim start NAME"},
                                Wording{"log --folow", "there is no option '--folow'; did you mean '--follow'?"},
                                Wording{"log --clear --follow", "--clear and --follow exclude each other"},
                                Wording{"run --unit", "--unit needs a value"},
                                Wording{"run --scale 0 -- true", "--scale: 0 is outside 0.001 to 100000"},
                                Wording{"run --scale x -- true", "--scale: 'x' is not a number"},
                                Wording{"run --keep '' -- true", "--keep: it is empty"},
                                Wording{"play light x --seconds 1", "--seconds needs PROGRAM"},
                                Wording{"play sound", "there is no verb 'sound'; the verbs are light, scenario"},
                                Wording{"--no-such", "there is no option '--no-such'"}})
        EXPECT_THAT(run(std::string{"hx-sim "} + each.words),
                    AllOf(hxtest::errorIs(std::string{"hx-sim: "} + each.error + "\n"), statusIs(2)));
}

TEST_F(HxSim, SuggestsTheNearCommandWhenNoUnitCouldHaveSuchAnAction)
{
    EXPECT_THAT(run("hx-sim starrt bench"),
                AllOf(hxtest::errorIs("hx-sim: there is no command 'starrt'; did you mean 'start'?\n"), statusIs(2)));
    EXPECT_THAT(run("hx-sim press front"), AllOf(errorMatches("no unit is running"), statusIs(6)));
}

TEST_F(HxSim, ShowsHelpInAnySpelling)
{
    const std::string help = run("hx-sim set --help").output;
    EXPECT_THAT(help, testing::HasSubstr("hx-sim set PROPERTY"));
    for (const char* const words : {"help set", "--help set", "set -h", "-h set"})
        EXPECT_THAT(run(std::string{"hx-sim "} + words), AllOf(outputIs(help), statusIs(0)));
    EXPECT_EQ(run("hx-sim help").output, run("hx-sim --help").output);
    EXPECT_EQ(run("hx-sim -V").output, run("hx-sim --version").output);
    EXPECT_THAT(run("hx-sim run hxaux --help"), outputMatches("^hxaux OBJECT"));
}

TEST_F(HxSim, RefusesASecondUnitOfTheSameName)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim start unit"), AllOf(statusIs(1), errorMatches("'unit' is already running")));
}

TEST_F(HxSim, SetsAndShowsAPropertyWhileProgramsRun)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim set voltage.0.raw 4000 && hx-sim get voltage.0.raw"), outputIs("4000\n"));
    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe get /dev/adc-id 0"), outputIs("4000\n"));
}

TEST_F(HxSim, TakesAnActionWithoutTheWordDo)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim voltage 2 5.1 && hx-sim get voltage.2"), outputMatches("^5\\.1"));
}

TEST_F(HxSim, NamesWhatItDoesNotKnow)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim set no.such 1"), AllOf(statusIs(1), errorMatches("no property 'no.such'")));
    EXPECT_THAT(run("hx-sim dance"), AllOf(statusIs(1), errorMatches("no action 'dance'")));
    EXPECT_THAT(run("hx-sim get --unit other voltage.0"), AllOf(statusIs(6), errorMatches("'other'")));
    EXPECT_THAT(run("hx-sim set"), statusIs(2));
}

TEST_F(HxSim, InjectsFailuresAndClearsThem)
{
    run("hx-sim start unit --set voltage.0.raw=1; hx-sim fail /dev/adc-id get EBUSY");

    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe get /dev/adc-id 0"), outputIs("Device or resource busy\n"));
    run("hx-sim unfail /dev/adc-id");
    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe get /dev/adc-id 0"), outputIs("1\n"));
}

TEST_F(HxSim, RemovesAndRestoresADevice)
{
    run("hx-sim start unit --set voltage.0.raw=1; hx-sim remove /dev/adc-id");

    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe get /dev/adc-id 0"), statusIs(1));
    run("hx-sim restore /dev/adc-id");
    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe get /dev/adc-id 0"), statusIs(0));
}

TEST_F(HxSim, ShowsTheLogAsJsonLines)
{
    run("hx-sim start unit --set voltage.0.raw=1; hx-sim run --unit unit -- hx-probe get /dev/adc-id 0");

    const auto lines = jsonLinesOf(run("hx-sim log --json"));

    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1]["subject"], "/dev/adc-id");
    EXPECT_EQ(lines[1]["call"], "get 0 -> 1");
    EXPECT_EQ(lines[1]["request"], "0xc004003a");
}

TEST_F(HxSim, FollowsTheLogWhileProgramsRun)
{
    run("hx-sim start unit");

    const auto followed = run("hx-sim log --follow & sleep 1; hx-sim run --unit unit -- hx-probe get /dev/adc-id 3; "
                              "hx-sim stop unit; wait");

    EXPECT_THAT(followed, outputMatches("/dev/adc-id get 3 -> "));
}

TEST_F(HxSim, ReadsADescriptionAndNamesTheLineThatIsWrong)
{
    const auto outcome = run("f=$(mktemp); printf '# a unit\\nvoltage.0.raw = 12\\nvoltage.0.raw = x\\n' >$f; "
                             "hx-sim start unit --description $f; status=$?; rm $f; exit $status");

    EXPECT_THAT(outcome, AllOf(statusIs(1), errorMatches("line 3: voltage.0.raw: 'x' is not a number")));
}

TEST_F(HxSim, LeavesNothingBehind)
{
    run("hx-sim start unit; hx-sim run --unit unit -- hx-probe try /HXAUX_PROBE");
    EXPECT_TRUE(std::filesystem::exists(semaphoreFile("unit")));

    run("hx-sim stop unit");

    EXPECT_FALSE(std::filesystem::exists(semaphoreFile("unit")));
    EXPECT_FALSE(std::filesystem::exists(folderOf("unit")));
}

TEST_F(HxSim, RemovesWhatAKilledUnitLeftWithTheNextCommand)
{
    run("hx-sim start killed; hx-sim run --unit killed -- hx-probe try /HXAUX_PROBE; kill -9 " + hostOf("killed"));
    run("kill -9 " + hostOf("killed") + "; sleep 0.2");
    EXPECT_TRUE(std::filesystem::exists(semaphoreFile("killed")));

    EXPECT_THAT(run("hx-sim list"), outputIs(""));

    EXPECT_FALSE(std::filesystem::exists(semaphoreFile("killed")));
    EXPECT_FALSE(std::filesystem::exists(folderOf("killed")));
}

} // namespace
