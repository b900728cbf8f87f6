// SPDX-License-Identifier: LicenseRef-HXAux
// The format of scenarios: what is understood, and what is refused with which words.
#include "simulator/scenario/Scenario.h"

#include "testing/RowTest.h"

#include <gmock/gmock.h>

#include <map>

using namespace hxsim;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;
using Kind = Statement::Kind;

namespace scenario_test {

const std::map<std::string, std::string> kFiles{
    {"common.scenario", "hx-sim scenario 1\nset light 7\n"},
    {"deep/one.scenario", "hx-sim scenario 1\ninclude two.scenario\n"},
    {"deep/two.scenario", "hx-sim scenario 1\nset light 8\n"},
    {"loop.scenario", "hx-sim scenario 1\ninclude loop.scenario\n"},
    {"bad.scenario", "hx-sim scenario 1\n\nsett light 7\n"},
    {"old.scenario", "set light 7\n"},
    {"tunnel.light", "0 100\n5 20\n"},
    {"bad.light", "0 100\n5\n"},
};

std::string contentOf(const std::string& path)
{
    const auto found = kFiles.find(path);
    if (found == kFiles.end())
        throw BadText{"cannot read " + path};
    return found->second;
}

std::vector<Scenario> parsed(const std::string& lines)
{
    return parseScenario("x.scenario", "hx-sim scenario 1\n" + lines, contentOf);
}

Statement only(const std::string& line)
{
    return parsed(line).at(0).statements.at(0);
}

std::string refusalOf(const std::string& content)
{
    try {
        (void)parseScenario("x.scenario", content, contentOf);
    } catch (const BadScenario& bad) {
        return bad.what();
    }
    return "";
}

struct Command {
    const char* text;
    std::vector<std::string> words;
};

class CommandOf : public hxtest::TestWithRow<Command> {};

ROW_TEST(CommandOf, IsThatOfTheUnit)
{
    const Statement statement = only(row().text);

    EXPECT_EQ(statement.kind, Kind::Command);
    EXPECT_EQ(statement.words, row().words) << row().text;
}

TEST_ROWS(Scenario, CommandOf, hxtest::kNumbered, Command{"set light 250", {"set", "light = 250"}},
          Command{"set light = 250", {"set", "light = 250"}}, Command{"set light=250", {"set", "light = 250"}},
          Command{"set led.color 0 15 0", {"set", "led.color = 0 15 0"}},
          Command{"ramp light from 10 to 500 over 5s", {"ramp", "light", "10", "500", "5000000000"}},
          Command{"press front", {"do", "press", "front"}}, Command{"press front 300", {"do", "press", "front", "300"}},
          Command{"do supply off", {"do", "supply", "off"}},
          Command{"fail /dev/adc-id get 3 EIO 2", {"fail", "/dev/adc-id get 3 EIO 2"}}, Command{"unfail", {"unfail"}},
          Command{"unfail /dev/adc-id", {"unfail", "/dev/adc-id"}},
          Command{"remove /dev/lightsensor", {"remove", "/dev/lightsensor"}},
          Command{"restore /dev/lightsensor", {"restore", "/dev/lightsensor"}},
          Command{"light tunnel.light", {"set", "light.profile = 0 100; 5 20;"}});

TEST(Scenario, ReadsExpectations)
{
    const Statement statement = only("expect backlight.level < 40 within 2s");

    EXPECT_EQ(statement.kind, Kind::Expect);
    EXPECT_EQ(statement.expectation.within, Time{2s});
    EXPECT_EQ(statement.property, "backlight.level");
}

TEST(Scenario, ReadsNeverAsAnExpectation)
{
    EXPECT_TRUE(only("never led.lit = on for 2s").expectation.never);
    EXPECT_EQ(only("never led.lit = on for 2s").kind, Kind::Expect);
}

TEST(Scenario, WaitsAMinuteWithoutATime)
{
    EXPECT_EQ(only("wait led.lit = on").expectation.within, Time{60s});
    EXPECT_EQ(only("wait led.lit = on within 2s").expectation.within, Time{2s});
}

TEST(Scenario, WaitsForATime)
{
    EXPECT_EQ(only("wait 500ms").kind, Kind::Sleep);
    EXPECT_EQ(only("wait 500ms").duration, Time{500ms});
}

TEST(Scenario, ReadsTheTimeBeforeAStatement)
{
    EXPECT_EQ(only("at 2s set light 3").at, Time{2s});
    EXPECT_EQ(only("at 2s set light 3").kind, Kind::Command);
    EXPECT_EQ(only("at 2s").kind, Kind::Nothing);
}

TEST(Scenario, KeepsTheWordsOfAProgramInQuotes)
{
    EXPECT_THAT(only(R"(run sh -c "sleep 1; echo \"ready\"")").words,
                ElementsAre("sh", "-c", R"(sleep 1; echo "ready")"));
}

TEST(Scenario, RemembersWhereALineStands)
{
    const Statement statement = only("\n# a comment\n  set light 3   # another");

    EXPECT_EQ(statement.line, 4);
    EXPECT_EQ(statement.text, "set light 3");
}

TEST(Scenario, LeavesANumberSignInQuotesAndWords)
{
    EXPECT_EQ(only("run echo \"a # b\" c#d # e").text, "run echo \"a # b\" c#d");
}

TEST(Scenario, ReplacesVariables)
{
    EXPECT_EQ(only("let DARK = 3\nlet ALSO = ${DARK}5\nset light $ALSO").text, "set light 35");
    EXPECT_EQ(only("let\tDARK\t=\t3\nset\tlight\t$DARK").words, (std::vector<std::string>{"set", "light = 3"}));
    EXPECT_EQ(only("run echo $$").text, "run echo $");
}

TEST(Scenario, ReadsIncludedFilesInTheirPlace)
{
    const std::vector<Statement> all = parsed("set light 1\ninclude common.scenario\nset light 9").at(0).statements;

    ASSERT_THAT(all, SizeIs(3));
    EXPECT_EQ(all[1].file, "common.scenario");
    EXPECT_EQ(all[1].line, 2);
}

TEST(Scenario, FindsIncludedFilesBesideTheirIncluder)
{
    EXPECT_EQ(only("include deep/one.scenario").file, "deep/two.scenario");
}

TEST(Scenario, MakesOneOfEachRowOfItsExamples)
{
    const std::vector<Scenario> all =
        parsed("set voltage.0 $SUPPLY\nexamples\n| SUPPLY | LED |\n| 11.5 | on |\n|24|off|\nexpect led.lit = $LED");

    ASSERT_THAT(all, SizeIs(2));
    EXPECT_EQ(all[0].name, "SUPPLY=11.5 LED=on");
    EXPECT_EQ(all[1].statements.at(0).text, "set voltage.0 24");
    EXPECT_EQ(all[1].statements.at(1).text, "expect led.lit = off");
}

struct Refused {
    const char* lines;
    const char* message; ///< behind the file's name
};

class RefusedScenario : public hxtest::TestWithRow<Refused> {};

ROW_TEST(RefusedScenario, IsNamedWithItsLine)
{
    EXPECT_EQ(refusalOf(std::string{"hx-sim scenario 1\n"} + row().lines), row().message);
}

TEST_ROWS(
    Scenario, RefusedScenario, hxtest::kNumbered,
    Refused{"sett light 3", "x.scenario:2: there is no statement \"sett\"; did you mean 'set'?"},
    Refused{"\n\nexect led.lit = on", "x.scenario:4: there is no statement \"exect\"; did you mean 'expect'?"},
    Refused{"xyzzy", "x.scenario:2: there is no statement \"xyzzy\""},
    Refused{"let A =\n $A", "x.scenario:3: nothing is left of the line: its variables are empty"},
    Refused{"\f\n\v\nxyzzy", "x.scenario:4: there is no statement \"xyzzy\""},
    Refused{"set", "x.scenario:2: expected a property and its value after 'set', for example: set light 250"},
    Refused{"set ligth 3", "x.scenario:2: the unit has no property 'ligth'; did you mean 'light'?"},
    Refused{"set light bright", "x.scenario:2: light: 'bright' is not a number"},
    Refused{"set led.lit on", "x.scenario:2: led.lit can only be read"},
    Refused{"at", "x.scenario:2: expected a duration after 'at' (20ms, 2s, 1m)"},
    Refused{"at 2 set light 3", "x.scenario:2: expected a duration (20ms, 2s, 1m), not \"2\""},
    Refused{"ramp light 10 500 5s", "x.scenario:2: expected KEY from A to B over T after 'ramp', for example: ramp "
                                    "light from 10 to 500 over 5s"},
    Refused{"ramp ligth from 10 to 500 over 5s",
            "x.scenario:2: the unit has no property 'ligth'; did you mean 'light'?"},
    Refused{"ramp light from low to 500 over 5s", "x.scenario:2: 'low' is not a number"},
    Refused{"ramp light from 10 to -5 over 5s", "x.scenario:2: light: '-5' is not from 0 to 200000"},
    Refused{"press fornt", "x.scenario:2: press front [short|long|MILLISECONDS]"},
    Refused{"do", "x.scenario:2: expected an action after 'do', for example: do touch 3"},
    Refused{"do tuch 3", "x.scenario:2: the unit has no action 'tuch'; did you mean 'touch'?"},
    Refused{"fail /dev/adcid open",
            "x.scenario:2: nothing on the unit is called \"/dev/adcid\"; did you mean '/dev/adc-id'?"},
    Refused{"fail /dev/adc-id opne", "x.scenario:2: no call \"opne\" on /dev/adc-id can fail; did you mean 'open'?"},
    Refused{"remove", "x.scenario:2: expected a device after 'remove'"},
    Refused{"remove /dev/lightsenser", "x.scenario:2: the unit has no device, file, library or function "
                                       "\"/dev/lightsenser\"; did you mean '/dev/lightsensor'?"},
    Refused{"light", "x.scenario:2: expected a light profile after 'light'"},
    Refused{"light none.light", "x.scenario:2: cannot read none.light"},
    Refused{"wait", "x.scenario:2: expected a condition, for example: backlight.level = 40"},
    Refused{"wait never led.lit = on for 2s",
            "x.scenario:2: 'wait' does not go with 'never'; write: never CONDITION for T"},
    Refused{"expect backlight.levle = 3",
            "x.scenario:2: the unit has no property 'backlight.levle'; did you mean 'backlight.level'?"},
    Refused{"never led.lit = on",
            "x.scenario:2: expected 'for T' after a condition with 'never', for example: never led.lit = on for 2s"},
    Refused{"run", "x.scenario:2: expected a program after 'run'"},
    Refused{"run sh \"x", "x.scenario:2: the text after \"\\\"\" has no closing quote"},
    Refused{"include", "x.scenario:2: expected one file after 'include'"},
    Refused{"include none.scenario", "x.scenario:2: cannot read none.scenario"},
    Refused{"include x.scenario", "x.scenario:2: \"x.scenario\" includes itself"},
    Refused{"include loop.scenario", "loop.scenario:2: \"loop.scenario\" includes itself"},
    Refused{"include bad.scenario", "bad.scenario:3: there is no statement \"sett\"; did you mean 'set'?"},
    Refused{"include old.scenario",
            "old.scenario:1: expected 'hx-sim scenario 1' as the first line, not \"set light 7\""},
    Refused{"let", "x.scenario:2: expected NAME = VALUE after 'let'"},
    Refused{"let A-B = 3", "x.scenario:2: expected NAME = VALUE after 'let'"},
    Refused{"let DARK = 3\nset light $DRAK", "x.scenario:3: there is no variable \"DRAK\"; did you mean 'DARK'?"},
    Refused{"set light $", "x.scenario:2: expected the name of a variable after '$'; write '$$' for a dollar sign"},
    Refused{"set light ${A", "x.scenario:2: expected the name of a variable after '$'; write '$$' for a dollar sign"},
    Refused{"| A |", "x.scenario:2: expected 'examples' before the first row of a table"},
    Refused{"examples", "x.scenario:2: expected a row of names and at least one row of values: | NAME | NAME |"},
    Refused{"examples\n| A |", "x.scenario:2: expected a row of names and at least one row of values: | NAME | NAME |"},
    Refused{"examples\n| A | B |\n| 1 |", "x.scenario:4: expected 2 values, not 1"},
    Refused{"examples\n| A | B", "x.scenario:3: expected '|' at the end of the row"},
    Refused{"examples\n| A b |", "x.scenario:3: expected names of letters, digits and '_' in the first row"},
    Refused{"examples x", "x.scenario:2: expected nothing after 'examples'; its rows follow: | NAME | NAME |"},
    Refused{"examples\n|A|\n|1|\nexamples", "x.scenario:5: a scenario has one table of examples"});

TEST(Scenario, RefusesOtherVersionsAndFiles)
{
    EXPECT_EQ(refusalOf(""), "x.scenario:1: expected 'hx-sim scenario 1' as the first line");
    EXPECT_EQ(refusalOf("\nset light 3"),
              "x.scenario:2: expected 'hx-sim scenario 1' as the first line, not \"set light 3\"");
    EXPECT_EQ(refusalOf("hx-sim scenario 2"), "x.scenario:1: this hx-sim reads version 1 of scenarios, not \"2\"");
}

TEST(Scenario, NamesTheLineOfABadLightProfile)
{
    EXPECT_THAT(refusalOf("hx-sim scenario 1\nlight bad.light"),
                testing::StartsWith("x.scenario:2: bad.light: line 2: "));
}

TEST(Scenario, RefusesALineThatGrowsWithItsVariables)
{
    std::string lines = "hx-sim scenario 1\nlet A0 = " + std::string(100, 'x') + '\n';
    for (int i = 1; i < 20; ++i) {
        const std::string before = "$A" + std::to_string(i - 1);
        lines += "let A" + std::to_string(i) + " = " + before + before + '\n';
    }

    EXPECT_THAT(refusalOf(lines), testing::HasSubstr("the line is too long with its variables"));
}

} // namespace scenario_test
