// SPDX-License-Identifier: LicenseRef-HXAux
// Arguments, help and usage errors: tests without a unit.
#include "testing/Command.h"

using namespace hxtest;
using testing::AllOf;

TEST(CommandLine, NamesTheMistakeWhenNoObjectIsGiven)
{
    EXPECT_THAT(run("hxaux"), AllOf(errorIs("hxaux: missing argument: an object; 'hxaux --help' lists them\n"),
                                    outputIs(""), statusIs(2)));
}

TEST(CommandLine, SuggestsTheNearObjectForAMistypedOne)
{
    EXPECT_THAT(run("hxaux voltge"),
                AllOf(errorIs("hxaux: there is no object 'voltge'; did you mean 'voltage'?\n"), statusIs(2)));
}

TEST(CommandLine, ListsTheObjectsWhenNoneIsNear)
{
    EXPECT_THAT(run("hxaux xylophone"),
                AllOf(errorMatches("the objects are .*inputs.*version, .*voltage"), statusIs(2)));
}

TEST(CommandLine, RefusesANumberOutsideItsRangeAndNamesTheRange)
{
    EXPECT_THAT(run("hxaux voltage 8"),
                AllOf(errorIs("voltage: number: 8 is outside 0 to 7\n"), outputIs(""), statusIs(2)));
}

TEST(CommandLine, TakesANegativeNumberForAValueAndNotForAnOption)
{
    EXPECT_THAT(run("hxaux voltage -1"), AllOf(errorIs("voltage: number: -1 is outside 0 to 7\n"), statusIs(2)));
}

TEST(CommandLine, RefusesAKeyThatIsNotANumber)
{
    EXPECT_THAT(run("hxaux voltage abc"), AllOf(errorIs("voltage: number: 'abc' is not an integer\n"), statusIs(2)));
}

TEST(CommandLine, RefusesANumberWithAFraction)
{
    EXPECT_THAT(run("hxaux voltage 1.5"), AllOf(errorIs("voltage: number: '1.5' is not an integer\n"), statusIs(2)));
}

TEST(CommandLine, RefusesTooManyArguments)
{
    EXPECT_THAT(run("hxaux voltage 1 2"),
                AllOf(errorIs("voltage: too many arguments: '2'; usage: hxaux voltage [NUMBER]\n"), statusIs(2)));
}

TEST(CommandLine, SuggestsTheNearOptionForAMistypedOne)
{
    EXPECT_THAT(run("hxaux voltage --jsn"),
                AllOf(errorIs("voltage: there is no option '--jsn'; did you mean '--json'?\n"), statusIs(2)));
}

TEST(CommandLine, SaysThatAnOptionNeedsAValue)
{
    EXPECT_THAT(run("hxaux voltage --every"), AllOf(errorIs("voltage: --every needs a value\n"), statusIs(2)));
}

TEST(CommandLine, SaysThatAnOptionIsGivenTwice)
{
    EXPECT_THAT(run("hxaux voltage --every 1 --every 2"),
                AllOf(errorIs("voltage: --every is given twice\n"), statusIs(2)));
}

TEST(CommandLine, SuggestsTheNearNameForAMistypedValue)
{
    EXPECT_THAT(run("hxaux version frnt"),
                AllOf(errorMatches("'frnt' is not one of .*; did you mean 'front'\\?"), statusIs(2)));
}

TEST(CommandLine, ReportsAMistakeAsJsonOnRequest)
{
    const Outcome outcome = run("hxaux voltage 8 --json");

    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(2)));
    EXPECT_EQ(jsonOf(outcome)["errors"][0]["text"], "number: 8 is outside 0 to 7");
}

TEST(CommandLine, TakesJsonInFrontOfTheObjectAsWell)
{
    EXPECT_EQ(run("hxaux --json version library").output, run("hxaux version library --json").output);
}

TEST(CommandLine, PrintsItsVersion)
{
    EXPECT_THAT(run("hxaux --version"), AllOf(outputIs("hxaux 1.3.1.0\n"), statusIs(0)));
}

TEST(CommandLine, ListsEveryExitStatusInItsHelp)
{
    EXPECT_THAT(run("hxaux --help"), AllOf(outputMatches("0    done"), outputMatches("6    no connection"),
                                           outputMatches("143  ended by TERM"), statusIs(0)));
}

TEST(CommandLine, ReportsAnOutputThatCannotBeWritten)
{
    EXPECT_THAT(run("hxaux version library >/dev/full"), AllOf(errorMatches("cannot be written"), statusIs(3)));
}
