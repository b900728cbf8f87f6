// SPDX-License-Identifier: LicenseRef-HXAux
// Help, manual page and completion of hx-sim, which come from its commands.
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <sstream>

namespace {

using hxtest::errorIs;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;
using testing::HasSubstr;

using HxSimCompletion = UnitFixture;

struct Command {
    std::string name;
    std::string help;
};

std::vector<Command> commands()
{
    std::vector<Command> all;
    std::istringstream lines(run("XDG_RUNTIME_DIR=/nonexistent hx-sim completion words ''").output);
    for (Command each; std::getline(lines, each.name, '\t') && std::getline(lines, each.help);)
        all.push_back(each);
    return all;
}

bool installed(const std::string& shell)
{
    return run("command -v " + shell).status == 0;
}

} // namespace

TEST(HxSimHelp, HasAnExampleForEachCommand)
{
    EXPECT_GT(commands().size(), 15U);
    for (const Command& each : commands())
        if (each.name != "completion" && each.name != "play") { // they have verbs
            EXPECT_THAT(run("hx-sim " + each.name + " --help").output,
                        AllOf(HasSubstr(each.help), HasSubstr("\nExample:\n  hx-sim " + each.name)));
        }
    EXPECT_THAT(run("hx-sim play light --help").output, HasSubstr("\nExample:\n  hx-sim play light "));
}

TEST(HxSimHelp, ListsEachCommandAndNoOther)
{
    const std::string help = run("hx-sim --help").output;
    for (const Command& each : commands())
        EXPECT_THAT(help, HasSubstr("\n  " + each.name + " "));
    const std::string list = help.substr(help.find("\nCommands:\n") + 1);
    EXPECT_EQ(std::ranges::count(list.substr(0, list.find("\n\n")), '\n'), std::ssize(commands()));
}

TEST(HxSimManual, HasEachCommandWithItsOptionsAndEachStatus)
{
    const std::string page = run("hx-sim --man | sed 's/\\\\-/-/g'").output;

    for (const Command& each : commands())
        EXPECT_THAT(page, AllOf(HasSubstr(".SS " + each.name + "\n"), HasSubstr("\n.B hx-sim " + each.name)));
    for (const char* const status : {"0\ndone", "2\nusage error", "4\na program made other calls", "127\nthe program"})
        EXPECT_THAT(page, HasSubstr(std::string{"\n.B "} + status));
    EXPECT_THAT(page, AllOf(HasSubstr("--follow"), HasSubstr("--plot FILE")));
}

TEST(HxSimManual, IsTakenByTheFormatterWithoutAWarning)
{
    if (!installed("groff"))
        GTEST_SKIP() << "groff is not installed";
    EXPECT_THAT(run("hx-sim --man | groff -man -Tascii -ww >/dev/null"), AllOf(errorIs(""), statusIs(0)));
}

TEST_F(HxSimCompletion, OffersCommandsAndTheActionsOfTheUnit)
{
    EXPECT_THAT(run("hx-sim completion words -- re | cut -f 1"), outputIs("record\nremove\nreplay\nrestore\n"));
    run("hx-sim start bench");
    EXPECT_THAT(run("hx-sim completion words -- pre"), outputMatches("^press\t"));
}

TEST_F(HxSimCompletion, OffersPropertiesDevicesAndUnitsThatAreThere)
{
    EXPECT_THAT(run("hx-sim completion words -- get voltage"), outputIs(""));
    run("hx-sim start bench");
    EXPECT_THAT(run("hx-sim completion words -- get voltage.0"), outputMatches("^voltage.0\t"));
    EXPECT_THAT(run("hx-sim completion words -- fail /dev/buz"), outputMatches("^/dev/buzzer\t"));
    EXPECT_THAT(run("hx-sim completion words -- log --unit ''"), outputIs("bench\ta running unit\n"));
    EXPECT_THAT(run("hx-sim completion words -- stop b"), outputIs("bench\ta running unit\n"));
}

TEST_F(HxSimCompletion, OffersOptionsForAWordThatBeginsLikeOneAndNothingOfAProgram)
{
    EXPECT_THAT(run("hx-sim completion words -- log --f"), outputMatches("^--follow\t"));
    EXPECT_THAT(run("hx-sim completion words -- run -- --"), outputIs(""));
    EXPECT_THAT(run("hx-sim completion words -- unknown ''"), AllOf(outputIs(""), statusIs(0)));
}

TEST_F(HxSimCompletion, WorksWhileSeveralUnitsRun)
{
    run("hx-sim start one; hx-sim start two");

    EXPECT_THAT(run("hx-sim completion words -- get voltage.0"), outputMatches("^voltage.0\t"));
    EXPECT_THAT(run("hx-sim completion words -- pre"), outputMatches("^press\t"));
}

TEST_F(HxSimCompletion, OffersValuesOfPropertiesAndActions)
{
    run("hx-sim start bench");

    EXPECT_THAT(run("hx-sim completion words -- set daemon.running '' | cut -f 1"), outputIs("off\non\n"));
    EXPECT_THAT(run("hx-sim completion words -- set backlight.level '' | cut -f 1"), outputIs("128\n"));
    EXPECT_THAT(run("hx-sim completion words -- press '' | cut -f 1"), outputIs("front\n"));
    EXPECT_THAT(run("hx-sim completion words -- do press front '' | cut -f 1"), outputIs("long\nshort\n"));
    EXPECT_THAT(run("hx-sim completion words -- start x --set backlight.l | cut -f 1"), outputIs("backlight.level=\n"));
}

TEST_F(HxSimCompletion, OffersDevicesCallsAndErrorsForFailures)
{
    run("hx-sim start bench");

    EXPECT_THAT(run("hx-sim completion words -- fail --unit bench /dev/buz | cut -f 1"), outputIs("/dev/buzzer\n"));
    EXPECT_THAT(run("hx-sim completion words -- fail /dev/buzzer op | cut -f 1"), outputIs("open\n"));
    EXPECT_THAT(run("hx-sim completion words -- fail /dev/ttyS0 tcg | cut -f 1"), outputIs("tcgetattr\n"));
    EXPECT_THAT(run("hx-sim completion words -- fail /dev/buzzer open EIO | cut -f 1"), outputIs("EIO\n"));
}

TEST_F(HxSimCompletion, OffersTheProfilesThatComeWithIt)
{
    EXPECT_THAT(run("hx-sim completion words -- play light t"), outputIs("tunnel\ta light profile\n"));
}

TEST_F(HxSimCompletion, OffersProgramsAndTheWordsOfTheUnitsToolBehindRun)
{
    EXPECT_THAT(run("hx-sim completion words -- run -- hxau | cut -f 1"), outputIs("hxaux\n"));
    EXPECT_THAT(run("hx-sim completion words -- run -- hxaux version f | cut -f 1"), outputIs("fpga\nfront\n"));
    EXPECT_THAT(run("hx-sim completion words -- record -o x -- hxaux volt | cut -f 1"), outputIs("voltage\n"));
    EXPECT_THAT(run("hx-sim completion words -- run -- ls ''"), AllOf(outputIs(""), statusIs(0)));
}

TEST_F(HxSimCompletion, WorksInBash)
{
    EXPECT_THAT(run("bash -c 'source <(hx-sim completion bash); COMP_WORDS=(hx-sim res); COMP_CWORD=1; _hx_sim\n"
                    "echo \"${COMPREPLY[@]}\"'"),
                AllOf(outputIs("restore\n"), errorIs("")));
}

TEST_F(HxSimCompletion, WorksInFish)
{
    if (!installed("fish"))
        GTEST_SKIP() << "fish is not installed";
    EXPECT_THAT(run("fish -c 'hx-sim completion fish | source; complete -C \"hx-sim res\"' | cut -f 1"),
                outputIs("restore\n"));
}

TEST_F(HxSimCompletion, WorksInZsh)
{
    if (!installed("zsh"))
        GTEST_SKIP() << "zsh is not installed";
    EXPECT_THAT(
        run("zsh -f -c 'autoload -U compinit; compinit -D; source <(hx-sim completion zsh); whence -w _hx_sim'"),
        AllOf(outputIs("_hx_sim: function\n"), statusIs(0)));
}

TEST_F(HxSimCompletion, RefusesAShellThatItDoesNotKnow)
{
    EXPECT_THAT(run("hx-sim completion tcsh"),
                AllOf(errorIs("hx-sim: there is no verb 'tcsh'; the verbs are bash, fish, words, zsh\n"), statusIs(2)));
}
