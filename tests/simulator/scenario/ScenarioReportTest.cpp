// SPDX-License-Identifier: LicenseRef-HXAux
// The results of scenarios as lines, JUnit, JSON and pictures.
#include "simulator/scenario/ScenarioReport.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace scenario_report_test {

using namespace hxsim;
using namespace std::chrono_literals;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using State = StatementResult::State;
using Kind = Statement::Kind;

StatementResult resultOf(State state, const std::string& text, Time time = 0s, const std::string& seen = "")
{
    StatementResult result;
    result.statement.kind = Kind::Expect;
    result.statement.file = "a.scenario";
    result.statement.line = 12;
    result.statement.text = text;
    result.state = state;
    result.time = time;
    result.seen = seen;
    return result;
}

StatementResult done(const std::string& text, Time time)
{
    return resultOf(State::Done, text, time);
}

ScenarioResult withStatements(std::vector<StatementResult> statements)
{
    ScenarioResult result;
    result.statements = std::move(statements);
    result.length = 2500ms;
    return result;
}

ScenarioResult passed()
{
    return withStatements({done("set light 3", 500ms)});
}

ScenarioResult failed()
{
    return withStatements({resultOf(State::Failed, "expect light = 3", 1s, "light was 4")});
}

ScenarioResult troubled()
{
    ScenarioResult result = passed();
    result.troubles = {"console ended with status 3"};
    return result;
}

TEST(ScenarioLine, HasStateTimeAndText)
{
    EXPECT_EQ(lineOf(done("set light 3", 1234567us)), "ok           1.235 s  set light 3\n");
    EXPECT_EQ(lineOf(resultOf(State::Failed, "expect light = 3", 1s, "light was 4")),
              "FAILED       1.000 s  a.scenario:12: expect light = 3; light was 4\n");
    EXPECT_EQ(lineOf(resultOf(State::Skipped, "set light 3")), "skipped               set light 3\n");
}

TEST(ScenarioResult, FailsByAStatementThatIsNotDoneOrByAProgram)
{
    EXPECT_FALSE(passed().hasFailed());
    EXPECT_TRUE(failed().hasFailed());
    EXPECT_TRUE(troubled().hasFailed());
    EXPECT_TRUE(withStatements({resultOf(State::Skipped, "set light 3")}).hasFailed());
    EXPECT_FALSE(withStatements({}).hasFailed());
}

TEST(ScenarioSummary, CountsWhenThereAreSeveral)
{
    EXPECT_EQ(summaryOf({passed()}), "passed");
    EXPECT_EQ(summaryOf({failed()}), "failed");
    EXPECT_EQ(summaryOf({passed(), passed()}), "all 2 passed");
    EXPECT_EQ(summaryOf({passed(), troubled(), failed()}), "1 passed, 2 failed");
}

TEST(ScenarioJunit, HasACaseForEachRow)
{
    ScenarioResult row = passed();
    row.name = "SUPPLY=11";

    EXPECT_EQ(junitOf("a.scenario", {row, passed()}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<testsuite name=\"a.scenario\" tests=\"2\" failures=\"0\" time=\"5.000\">\n"
              "  <testcase classname=\"a.scenario\" name=\"SUPPLY=11\" time=\"2.500\">\n"
              "    <system-out>ok           0.500 s  set light 3\n</system-out>\n"
              "  </testcase>\n"
              "  <testcase classname=\"a.scenario\" name=\"scenario\" time=\"2.500\">\n"
              "    <system-out>ok           0.500 s  set light 3\n</system-out>\n"
              "  </testcase>\n"
              "</testsuite>\n");
}

TEST(ScenarioJunit, HasTheFirstFailureInTheMessageAndAllInTheText)
{
    ScenarioResult result = failed();
    result.statements.push_back(resultOf(State::Failed, "expect light = 5", 1s, "light was 6"));
    result.troubles = {"console ended with status 3"};

    const std::string text = junitOf("a.scenario", {result});

    EXPECT_THAT(text, HasSubstr("tests=\"1\" failures=\"1\""));
    EXPECT_THAT(text, HasSubstr("<failure message=\"a.scenario:12: expect light = 3; light was 4\">"
                                "a.scenario:12: expect light = 3; light was 4\n"
                                "a.scenario:12: expect light = 5; light was 6\n"
                                "console ended with status 3\n</failure>\n"));
}

TEST(ScenarioJunit, IsUtf8WhateverTheScenarioIs)
{
    ScenarioResult result =
        withStatements({resultOf(State::Failed, "expect output \"K\xFC\x68l\"", 1s, "output was \x1b\xFF")});
    result.name = "\xC3=1";

    const std::string text = junitOf("\xE4.scenario", {result});

    EXPECT_THAT(text, HasSubstr("<testsuite name=\"\\xe4.scenario\""));
    EXPECT_THAT(text, HasSubstr("name=\"\\xc3=1\""));
    EXPECT_THAT(text, HasSubstr("expect output \"K\\xfchl\"; output was \\x1b\\xff\n"));
}

TEST(ScenarioJunit, HasNoMarkupOfTheScenario)
{
    const std::string text =
        junitOf("a<b>&\"c\"", {withStatements({resultOf(State::Failed, "expect x < 3", 0s, "x was \"\x01<&\"")})});

    EXPECT_THAT(text, HasSubstr("<testsuite name=\"a&lt;b&gt;&amp;&quot;c&quot;\""));
    EXPECT_THAT(text, HasSubstr("message=\"a.scenario:12: expect x &lt; 3; x was &quot;\\x01&lt;&amp;&quot;\""));
    EXPECT_THAT(text, Not(HasSubstr("x < 3")));
}

TEST(ScenarioJson, HasEachStatementWithItsVerdict)
{
    ScenarioResult result = failed();
    result.name = "A=1";
    result.troubles = {"console ended with status 3"};
    result.statements.push_back(resultOf(State::Skipped, "set light 7"));

    const json document = json::parse(jsonOf("a.scenario", {result, passed()}));

    EXPECT_EQ(document["scenario"], "a.scenario");
    EXPECT_EQ(document["runs"][0], json::parse(R"({"name":"A=1","passed":false,"seconds":2.5,
        "troubles":["console ended with status 3"],"statements":[
        {"file":"a.scenario","line":12,"text":"expect light = 3","verdict":"failed","time":1.0,"seen":"light was 4"},
        {"file":"a.scenario","line":12,"text":"set light 7","verdict":"skipped"}]})"));
    EXPECT_EQ(document["runs"][1]["passed"], true);
    EXPECT_EQ(document["runs"][1]["statements"][0]["verdict"], "ok");
}

// How often a text has a part.
std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

ScenarioResult withValues(std::map<std::string, std::vector<std::pair<Time, std::string>>> values)
{
    ScenarioResult result;
    result.length = 10s;
    result.values = std::move(values);
    return result;
}

TEST(ScenarioPicture, HasAPanelForEachPropertyThatIsANumberOrASwitch)
{
    const std::string picture = plotOf(withValues({{"light", {{0s, "100"}, {5s, "300"}}},
                                                   {"led.lit", {{0s, "off"}, {2s, "on"}}},
                                                   {"led.color", {{0s, "0 15 0"}}},
                                                   {"buzzer.last", {{0s, "none"}, {1s, "7"}}}}));

    EXPECT_EQ(count(picture, "<path class=\"v\""), 3U);
    EXPECT_THAT(picture, HasSubstr(">light</text>"));
    EXPECT_THAT(picture, Not(HasSubstr("led.color")));
    EXPECT_THAT(picture, HasSubstr(">300</text>"));
    EXPECT_THAT(picture, HasSubstr(">100</text>"));
}

TEST(ScenarioPicture, DrawsStepsFromTheLowestToTheHighestValue)
{
    // From 160 to 900 for 10 s, and from 5 above the panel's ground to 5 below its top, 50 to 120.
    EXPECT_THAT(plotOf(withValues({{"light", {{0s, "100"}, {5s, "300"}, {10s, "200"}}}})),
                HasSubstr("d=\"M160.0 115.0H160.0V115.0H530.0V55.0H900.0V85.0H900.0\""));
}

TEST(ScenarioPicture, DrawsAValueThatNeverChangesOnTheGround)
{
    EXPECT_THAT(plotOf(withValues({{"light", {{0s, "7"}}}})), HasSubstr("d=\"M160.0 115.0H160.0V115.0H900.0\""));
}

TEST(ScenarioPicture, StaysInsideWhateverTheTime)
{
    EXPECT_THAT(plotOf(withValues({{"light", {{0s, "1"}, {99s, "2"}}}})), HasSubstr("H900.0V55.0H900.0"));
    ScenarioResult empty;
    EXPECT_THAT(plotOf(empty), HasSubstr(">0.001 s</text>")) << "and a run without a length";
}

TEST(ScenarioPicture, MarksWhereAnExpectationWasDecided)
{
    ScenarioResult result = withValues({{"light", {{0s, "1"}}}});
    result.statements = {done("expect light = 1", 5s), resultOf(State::Failed, "expect light = 2", 10s, "x"),
                         resultOf(State::Skipped, "expect light = 3")};
    result.statements.push_back(done("set light 1", 1s));
    result.statements.back().statement.kind = Kind::Command;

    const std::string picture = plotOf(result);

    EXPECT_THAT(picture, HasSubstr("<path class=\"ok\" d=\"M530.0 38V120\"/>"));
    EXPECT_THAT(picture, HasSubstr("<path class=\"bad\" d=\"M900.0 38V120\"/>"));
    EXPECT_THAT(picture, HasSubstr(">!12</text>"));
    EXPECT_EQ(count(picture, "<path class=\"ok\"") + count(picture, "<path class=\"bad\""), 2U);
}

} // namespace scenario_report_test
