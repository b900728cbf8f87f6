// SPDX-License-Identifier: LicenseRef-HXAux
// Versions, voltages and inputs on a simulated unit, and what is the same for every verb.
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

const CommandRow kVersionVerbRows[] = {
    {"ShowsAllVersionsOfAHealthyUnit",
     "hxaux version",
     AllOf(outputIs("library: 1.3.1.0\nsystem: 2.1.0.5\ndriver: 1.3.0.0\nss: 1.2.3.4\nfront: 1.6.0.2\n"
                    "fpga: 3.2.0.1\n"),
           errorIs(""), statusIs(0)),
     {"version.ss=1.2.3.4"}},
    {"ShowsTheOthersWhenOneCannotBeRead",
     "hxaux version",
     AllOf(outputMatches("library: 1.3.1.0"), outputMatches("fpga: 3.2.0.1"),
           errorIs("version: ss: IoCtrl operation failed (7)\n"), statusIs(1)),
     {"fail=/dev/fpga-version 0x80040037 EIO"}},
    {"NamesAMissingVersionFile",
     "hxaux version system",
     AllOf(outputIs(""), errorIs("version: system: Open failed (1)\n"), statusIs(1)),
     {"absent=/etc/firmware.ver"}},
    {"NamesAVersionFileThatHoldsNoVersion",
     "hxaux version system",
     AllOf(outputIs(""), errorIs("version: system: Failed to execute command (17)\n"), statusIs(1)),
     {"version.os=garbage"}},
};
const TestTable kVersionVerb{"VersionVerb", checkOnUnit, kVersionVerbRows};

const CommandRow kVoltageVerbRows[] = {
    {"PrintsVolts",
     "hxaux voltage 0",
     AllOf(outputMatches("^voltage 0: 11\\.(49|50)[0-9] V\n$"), statusIs(0)),
     {"voltage.0=11.5"}},
    {"PrintsAllEight", "hxaux voltage",
     AllOf(outputMatches("voltage 0: 2[34]\\.[0-9]{3} V"), outputMatches("voltage 7: 1\\.[0-9]{3} V"), statusIs(0))},
    {"SaysOnceThatTheDeviceIsMissing",
     "hxaux voltage",
     AllOf(outputIs(""), errorIs("voltage: Open failed (1)\n"), statusIs(1)),
     {"absent=/dev/adc-id"}},
    {"ReportsARefusedRequest",
     "hxaux voltage 2",
     AllOf(outputIs(""), errorIs("voltage: IoCtrl operation failed (7)\n"), statusIs(1)),
     {"fail=/dev/adc-id 0xC004003A EIO"}},
};
const TestTable kVoltageVerb{"VoltageVerb", checkOnUnit, kVoltageVerbRows};

TEST(InputsVerb, ShowsEachInput)
{
    const Unit unit({"inputs.2=on"});

    EXPECT_THAT(unit.run("hxaux inputs"),
                AllOf(outputIs("input 1: off\ninput 2: on\ninput 3: off\ninput 4: off\n"), statusIs(0)));
}

TEST(Json, HasValuesAndUnits)
{
    const Unit unit({"inputs.1=on"});

    const auto inputs = jsonOf(unit.run("hxaux inputs --json"));
    const auto voltage = jsonOf(unit.run("hxaux voltage 0 --json"));

    EXPECT_EQ(inputs["result"]["input"][0]["value"], true);
    EXPECT_NEAR(voltage["result"]["voltage"][0]["value"].get<double>(), 24.0, 0.01);
    EXPECT_EQ(voltage["units"]["voltage"], "V");
}

TEST(Json, IsTheSameOnATerminalAsInAPipe)
{
    const Unit unit;
    std::string onTerminal = unit.runOnTerminal("hxaux version --json").output;
    std::erase(onTerminal, '\r'); // the terminal's own

    EXPECT_EQ(onTerminal, unit.run("hxaux version --json").output);
}

TEST(Json, CarriesTheErrorAndLeavesStandardErrorEmpty)
{
    const Unit unit({"absent=/dev/dig-io"});
    const Outcome outcome = unit.run("hxaux inputs --json");

    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(1)));
    EXPECT_EQ(jsonOf(outcome)["errors"][0],
              nlohmann::json::parse(R"({"item":"","code":1,"name":"ERR_OPEN_FAILED","text":"Open failed"})"));
}

TEST(Watch, PrintsALineForEachRoundWhenPiped)
{
    const Unit unit;

    EXPECT_THAT(unit.run("hxaux voltage 0 --watch --every 0.05 --count 3").output,
                testing::MatchesRegex("(time: [0-9:]{8}\nvoltage 0: 2[34]\\.[0-9]+ V\n){3}"));
}

TEST(Watch, IsMeantByHowOftenAndHowManyTimesToo)
{
    const Unit unit;

    EXPECT_THAT(unit.run("hxaux voltage 0 --count 2 --every 0.05").output,
                testing::MatchesRegex("(time: [0-9:]{8}\nvoltage 0: 2[34]\\.[0-9]+ V\n){2}"));
    EXPECT_THAT(unit.run("hxaux voltage 0 --count 1").output, testing::StartsWith("time: "));
}

TEST(Watch, HasTheTimeOfDayInJson)
{
    const Unit unit;

    EXPECT_THAT(unit.run("hxaux inputs --count 1 --json"),
                outputMatches("\"time\":\"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}[+-][0-9]{4}\""));
}

TEST(Watch, PrintsOneJsonDocumentPerLine)
{
    const Unit unit;

    EXPECT_EQ(jsonLinesOf(unit.run("hxaux inputs --watch --every 0.05 --count 3 --json")).size(), 3U);
}

TEST(Watch, RedrawsInPlaceOnATerminal)
{
    const Unit unit;

    EXPECT_THAT(unit.runOnTerminal("hxaux inputs --watch --every 0.05 --count 2"), outputMatches("\x1b\\[5A"));
}

TEST(Watch, EndsWhenTheUnitRefuses)
{
    const Unit unit({"absent=/dev/dig-io"});

    EXPECT_THAT(unit.run("hxaux inputs --watch --every 0.05"),
                AllOf(errorIs("inputs: Open failed (1)\n"), statusIs(1)));
}
