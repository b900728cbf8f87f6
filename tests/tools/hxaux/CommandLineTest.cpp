// SPDX-License-Identifier: LicenseRef-HXAux
// Arguments, help and usage errors: tests without a unit.
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/hxaux/CommandRows.h"

#include <algorithm>
#include <sstream>

using namespace hxtest;
using testing::AllOf;

const CommandRow kCommandLineRows[] = {
    {"NamesTheMistakeWhenNoObjectIsGiven", "hxaux",
     AllOf(errorIs("hxaux: missing argument: an object; 'hxaux --help' lists them\n"), outputIs(""), statusIs(2))},
    {"SuggestsTheNearObjectForAMistypedOne", "hxaux voltge",
     AllOf(errorIs("hxaux: there is no object 'voltge'; did you mean 'voltage'?\n"), statusIs(2))},
    {"ListsTheObjectsWhenNoneIsNear", "hxaux xylophone",
     AllOf(errorMatches("the objects are .*inputs.*version, .*voltage"), statusIs(2))},
    {"RefusesANumberOutsideItsRangeAndNamesTheRange", "hxaux voltage 8",
     AllOf(errorIs("voltage: number: 8 is outside 0 to 7\n"), outputIs(""), statusIs(2))},
    {"TakesANegativeNumberForAValueAndNotForAnOption", "hxaux voltage -1",
     AllOf(errorIs("voltage: number: -1 is outside 0 to 7\n"), statusIs(2))},
    {"RefusesAKeyThatIsNotANumber", "hxaux voltage abc",
     AllOf(errorIs("voltage: number: 'abc' is not an integer\n"), statusIs(2))},
    {"RefusesANumberWithAFraction", "hxaux voltage 1.5",
     AllOf(errorIs("voltage: number: '1.5' is not an integer\n"), statusIs(2))},
    {"RefusesTooManyArguments", "hxaux voltage 1 2",
     AllOf(errorIs("voltage: too many arguments: '2'; usage: hxaux voltage [NUMBER]\n"), statusIs(2))},
    {"SuggestsTheNearOptionForAMistypedOne", "hxaux voltage --jsn",
     AllOf(errorIs("voltage: there is no option '--jsn'; did you mean '--json'?\n"), statusIs(2))},
    {"SaysThatAnOptionNeedsAValue", "hxaux voltage --every",
     AllOf(errorIs("voltage: --every needs a value\n"), statusIs(2))},
    {"SaysThatAnOptionIsGivenTwice", "hxaux voltage --every 1 --every 2",
     AllOf(errorIs("voltage: --every is given twice\n"), statusIs(2))},
    {"SuggestsTheNearNameForAMistypedValue", "hxaux version frnt",
     AllOf(errorMatches("'frnt' is not one of .*; did you mean 'front'\\?"), statusIs(2))},
    {"PrintsItsVersion", "hxaux --version", AllOf(outputIs("hxaux 1.3.1.0\n"), statusIs(0))},
    {"TakesTheWordHelpForATextWhereOneIsExpected", "hx-sim run -- hxaux settings get help",
     AllOf(errorMatches("\\(17\\)"), statusIs(1))},
    {"NamesTheUnitOfAnOptionsValueInHelp", "hxaux voltage --help",
     AllOf(outputMatches("--every SECONDS  .*\\(0\\.01 to"), outputMatches("--count TIMES "))},
    {"ListsEveryExitStatusInItsHelp", "hxaux --help",
     AllOf(outputMatches("0    done"), outputMatches("6    no connection"), outputMatches("143  ended by TERM"),
           statusIs(0))},
    {"ReportsAnOutputThatCannotBeWritten", "hxaux version library >/dev/full",
     AllOf(errorMatches("cannot be written"), statusIs(3))},
};
const TestTable kCommandLine{"CommandLine", checkWithoutUnit, kCommandLineRows};

TEST(CommandLine, TakesWordsThatTheParserWouldReadInItsOwnWayForValues)
{
    for (const std::string word : {"-.5", "++", "[1,2]"})
        EXPECT_THAT(run("hxaux backlight set '" + word + "'"),
                    AllOf(errorIs("backlight set: level: '" + word + "' is not an integer\n"), statusIs(2)));
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

TEST(CommandLine, TakesTheOptionsOfEachVerbInFrontOfTheObjectToo)
{
    EXPECT_THAT(run("hx-sim run -- hxaux --json --timeout 2 backlight get"),
                AllOf(outputMatches("\"level\":128"), errorIs(""), statusIs(0)));
    EXPECT_THAT(run("hxaux --timeout x backlight get"),
                AllOf(errorIs("backlight get: --timeout: 'x' is not a number\n"), statusIs(2)));
}

TEST(CommandLine, PrintsItsVersionForTheShortOptionToo)
{
    EXPECT_EQ(run("hxaux -V").output, run("hxaux --version").output);
}

struct Spelling : Named {
    const char* words;
    const char* same;
};

class HelpInAnySpelling : public hxtest::TestWithRow<Spelling> {};

ROW_TEST(HelpInAnySpelling, IsTheSame)
{
    const Outcome help = run(std::string("hxaux ") + row().same);

    EXPECT_THAT(help, AllOf(outputMatches("^hxaux "), errorIs(""), statusIs(0)));
    EXPECT_THAT(run(std::string("hxaux ") + row().words), AllOf(outputIs(help.output), errorIs(""), statusIs(0)));
}

TEST_ROWS(Of, HelpInAnySpelling, kNameOfRow, Spelling{"Word", "help", "--help"}, Spelling{"Short", "-h", "--help"},
          Spelling{"QuestionMark", "'-?'", "--help"}, Spelling{"OneDash", "-help", "--help"},
          Spelling{"WordAndObject", "help backlight", "backlight --help"},
          Spelling{"ObjectAndWord", "backlight help", "backlight --help"},
          Spelling{"OptionAndObject", "--help backlight", "backlight --help"},
          Spelling{"ObjectAndShort", "backlight -h", "backlight --help"},
          Spelling{"HalfOfAVerb", "backlight auto --help", "backlight --help"},
          Spelling{"WordAndVerb", "help backlight set", "backlight set --help"},
          Spelling{"OptionAndVerb", "--help backlight set", "backlight set --help"},
          Spelling{"ObjectOptionVerb", "backlight --help set", "backlight set --help"},
          Spelling{"ObjectWordVerb", "backlight help set", "backlight set --help"},
          Spelling{"VerbAndWord", "backlight set help", "backlight set --help"},
          Spelling{"VerbValueAndOption", "backlight set 300 --help", "backlight set --help"},
          Spelling{"VerbAndShort", "backlight set -h", "backlight set --help"},
          Spelling{"ObjectWithoutVerbs", "voltage help", "voltage --help"});

TEST(CommandLine, SuggestsTheNearObjectAndVerbInHelpToo)
{
    EXPECT_THAT(run("hxaux help voltge"), AllOf(errorMatches("did you mean 'voltage'\\?"), statusIs(2)));
    EXPECT_THAT(run("hxaux backlight sett --help"), AllOf(errorMatches("did you mean 'set'\\?"), statusIs(2)));
}

TEST(CommandLine, WrapsHelpAtTheWidthOfTheTerminal)
{
    const auto longest = [](const std::string& text) {
        std::size_t most = 0;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            most = std::max(most, line.size() - (line.ends_with('\r') ? 1 : 0));
        return most;
    };

    for (const char* const words : {"--help", "doctor --help", "backlight --help", "locks reset --help"}) {
        EXPECT_LE(longest(run(std::string("hxaux ") + words).output), 80U) << words;
        EXPECT_LE(longest(runOnTerminal(std::string("stty cols 60; hxaux ") + words).output), 64U) << words;
    }
    EXPECT_GT(longest(runOnTerminal("hxaux doctor --help").output), 80U);
}

TEST(CommandLine, PrintsEachRequestOfAVerboseCommand)
{
    EXPECT_THAT(run("hx-sim run -- hxaux backlight set 7 --verbose"),
                AllOf(outputIs(""), errorIs("/dev/backlight open\n/dev/backlight 0x40010003 00 07\n"), statusIs(0)));
    EXPECT_THAT(run("hx-sim run --set 'fail=/dev/adc-id get 0 EBUSY' -- hxaux --verbose voltage 0"),
                AllOf(errorMatches("^/dev/adc-id open\n/dev/adc-id 0xc004003a 00 00 00 00: Device or resource busy\n"
                                   "voltage: "),
                      statusIs(1)));
}
