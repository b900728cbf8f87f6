// SPDX-License-Identifier: LicenseRef-HXAux
// Help, manual page and completion of hx-sim, which come from its commands.
#include "simulator/hx-sim/Verbs.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

namespace {

using hxtest::errorIs;
using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using HxSimCompletion = UnitFixture;

bool installed(const std::string& shell)
{
    return run("command -v " + shell).status == 0;
}

} // namespace

TEST(HxSimHelp, HasAnExampleForEachCommand)
{
    for (const hxsim::Verb& verb : hxsim::kVerbs)
        EXPECT_THAT(run(std::string{"hx-sim "} + verb.name + " --help").output,
                    AllOf(HasSubstr(verb.help), HasSubstr(std::string{"Example:\n  "} + verb.example + "\n")));
}

TEST(HxSimHelp, ListsEachCommandAndNoOther)
{
    const std::string help = run("hx-sim --help").output;
    for (const hxsim::Verb& verb : hxsim::kVerbs)
        EXPECT_THAT(help, HasSubstr(std::string{"\n  "} + verb.name + " "));
    const std::string list = help.substr(help.find("Subcommands:\n"));
    EXPECT_EQ(std::ranges::count(list.substr(0, list.find("\n\n")), '\n'), std::ssize(hxsim::kVerbs));
}

TEST(HxSimManual, HasEachCommandWithItsOptionsAndEachStatus)
{
    const std::string page = run("hx-sim --man | sed 's/\\\\-/-/g'").output;

    for (const hxsim::Verb& verb : hxsim::kVerbs)
        EXPECT_THAT(page, AllOf(HasSubstr(std::string{".SS "} + verb.name + "\n"), HasSubstr(verb.example)));
    for (const hxsim::StatusMeaning& each : hxsim::kStatusMeanings)
        EXPECT_THAT(page, HasSubstr(each.meaning));
    EXPECT_THAT(page, AllOf(HasSubstr("--follow"), HasSubstr("--plot VALUE")));
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
                AllOf(errorIs("hx-sim: there is no shell 'tcsh': bash, fish or zsh\n"), statusIs(2)));
}
