// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

namespace backlight_verb_test {

using namespace hxtest;
using testing::AllOf;

const CommandRow kBacklightVerbRows[] = {
    {"SetsAndReadsTheLevel", "hxaux backlight set 77; hxaux backlight get",
     AllOf(statusIs(0), outputIs("level: 77\n"), errorIs(""))},
    {"RefusesAnInvalidLevel", "hxaux backlight set 256", AllOf(statusIs(2), errorMatches("256"))},
    {"ReportsAMissingDevice",
     "hxaux backlight get",
     AllOf(statusIs(1), errorIs("backlight get: Open failed (1)\n"), outputIs("")),
     {"absent = /dev/backlight"}},
    {"ReadsTheStatusByte", "hxaux backlight status", outputIs("status: 165\n"), {"backlight.status = 165"}},
    {"SwitchesTheAutomaticBacklight",
     "hxaux backlight auto on; hxaux backlight auto status; hxaux backlight auto off; "
     "hxaux backlight auto status",
     AllOf(statusIs(0), outputIs("automatic: on\nautomatic: off\n"))},
    {"ReportsThatTheAutomaticBacklightHasNoSettingYet", "hxaux backlight auto status",
     AllOf(statusIs(1), errorMatches("Datatype mismatch \\(4\\)"))},
    {"SetsAndShowsTheFilter", "hxaux backlight auto filter 3 2 60 extended; hxaux backlight auto filter",
     AllOf(statusIs(0), outputIs("average: 3 samples\nreject: 2 samples\nspread: 60 lux\nmode: extended\n"))},
    {"WantsTheWholeFilterOrNothing", "hxaux backlight auto filter 3 2; echo $?; hxaux settings list",
     AllOf(outputIs("2\n"), errorMatches("missing argument: AVERAGE REJECT SPREAD MODE"))},
    {"RefusesAWindowOfZero", "hxaux backlight auto filter 0 2 60 auto", statusIs(2)},
    {"SetsTheTransitionAndShowsItWithTheSlope",
     "hxaux settings set ABL_k 28.1184; hxaux backlight auto params at-once; "
     "hxaux backlight auto params",
     AllOf(statusIs(0), outputIs("transition: at-once\nslope: 28.1184\n"))},
};
const TestTable kBacklightVerb{"BacklightVerb", checkOnUnit, kBacklightVerbRows};

TEST(LedDimmingVerb, ShowsAndSwitches)
{
    EXPECT_THAT(onUnit("hxaux led-dimming; hxaux led-dimming off; hxaux led-dimming"),
                AllOf(statusIs(0), outputIs("led dimming: on\nled dimming: off\n")));
}

TEST(LedDimmingVerb, StoresTheSettingEvenWithoutTheDaemon)
{
    EXPECT_THAT(onUnit("hxaux led-dimming off; echo $?; hxaux led-dimming", {"daemon.running = off"}),
                AllOf(outputMatches("1\nled dimming: off\n"), errorMatches("Failed to execute command \\(17\\)")));
}

const CommandRow kLightVerbRows[] = {
    {"ShowsLuxRangeAndTheRawBytes",
     "hxaux light",
     AllOf(statusIs(0), outputIs("light: 102 lux\nrange: standard\nchannel 0: 197\nchannel 1: 163\n")),
     {"light.channels = 0xc5 0xa3"}},
    {"WatchedShowsTheLevelAndTheOneOfTheSlopeToo",
     "hxaux backlight set 77; hxaux settings set ABL_k 50; hxaux settings set ABL_bSoftTransitions 1; "
     "hxaux light --watch --count 1",
     AllOf(statusIs(0), outputMatches("level: 77\nlevel by slope: 221\n")),
     {"light.channels = 0xc5 0xa3"}},
    {"WatchedShowsTheLevelOfTheSlopeThatTheAutomaticBacklightBeginsWith",
     "hxaux light --watch --count 1",
     AllOf(statusIs(0), outputMatches("level by slope: 221\n")),
     {"light.channels = 0xc5 0xa3"}},
    {"AveragesAndReleasesTheAveraging",
     "hxaux light --average && hxaux light --average",
     AllOf(statusIs(0), outputMatches("average: 102 lux\n")),
     {"light.channels = 0xc5 0xa3"}},
    {"RetriesAReadingThatIsNotReady",
     "hxaux light",
     AllOf(statusIs(0), outputMatches("light: ")),
     {"light.not-ready = 3"}},
    {"SetsAndShowsTheRange", "hxaux light range extended; hxaux light range",
     AllOf(statusIs(0), outputIs("range: extended\n"))},
};
const TestTable kLightVerb{"LightVerb", checkOnUnit, kLightVerbRows};

TEST(LightVerb, WatchedAsJsonIsOneObjectALine)
{
    const Outcome outcome = onUnit("hxaux light --watch --count 3 --every 0.1 --json");

    EXPECT_EQ(jsonLinesOf(outcome).size(), 3U);
}

TEST(EepromVerb, ChangesAPropertyInItsStore)
{
    EXPECT_THAT(onUnit("hxaux eeprom set PCB_REV Z9 --store add-on; hxaux eeprom get PCB_REV --store add-on; "
                       "hxaux eeprom get PCB_REV"),
                AllOf(statusIs(0), outputIs("PCB_REV: Z9\nPCB_REV: C2\n")));
}

TEST(EepromVerb, RefusesWhatWouldBreakTheTextBeforeAnyRequest)
{
    const std::string longest(254, 'x');
    for (const std::string& value : {std::string{"two words"}, std::string{"line\nend"}, std::string{"line\rend"},
                                     std::string{"tab\tin it"}, longest + "x", std::string{}})
        EXPECT_THAT(run("hxaux eeprom set PCB_REV \"" + value + "\""),
                    AllOf(statusIs(2), errorMatches("the value cannot be stored: ")));
}

TEST(EepromVerb, ReportsAMissingProperty)
{
    EXPECT_THAT(onUnit("hxaux eeprom get NOTHING"),
                AllOf(statusIs(1), errorMatches("\\(18\\)\nthe property is missing.*'hxaux eeprom list' shows")));
    EXPECT_THAT(onUnit("hxaux eeprom get UNIT_SERIL"), errorMatches("did you mean 'UNIT_SERIAL'\\?"));
}

TEST(SettingsVerb, StoresShowsAndListsWhatIsDocumented)
{
    EXPECT_THAT(onUnit("hxaux settings set ABL_k 40; hxaux settings set Own 7; hxaux settings get Own; "
                       "hxaux settings list"),
                AllOf(statusIs(0), outputIs("Own: 7\nABL_k: 40\n")));
}

TEST(SettingsVerb, RefusesWhatWouldBreakTheFileBeforeAnyRequest)
{
    for (const char* words : {"a=b 1", "';x' 1", "'' 1", "K ' x'", "K 'x '", "K 'a\nb'"})
        EXPECT_THAT(run(std::string{"hxaux settings set "} + words), statusIs(2)) << words;
}

TEST(SettingsVerb, ReportsAMissingSetting)
{
    EXPECT_THAT(
        onUnit("hxaux settings get Nothing"),
        AllOf(statusIs(1), outputIs(""),
              errorMatches("^settings get: .* \\(17\\)\nthe setting is missing or empty; 'hxaux settings list' ")));
    const auto json = onUnit("hxaux settings get Nothing --json");
    EXPECT_EQ(jsonOf(json)["notes"][0],
              "the setting is missing or empty; 'hxaux settings list' shows those that are set");
    EXPECT_EQ(json.error, "");
}

TEST(SmartVerb, WritesAndReadsARegister)
{
    EXPECT_THAT(onUnit("hxaux smart set 8 1000; hxaux smart get 8"), AllOf(statusIs(0), outputIs("smart 8: 1000\n")));
}

TEST(SmartVerb, RefusesAnInvalidRegister)
{
    EXPECT_THAT(onUnit("hxaux smart get 96"), statusIs(2));
}

TEST(VideoResumeVerb, SendsTheRequestAndSaysThatTheOutcomeIsNotKnown)
{
    const Outcome outcome = onUnit("hxaux video resume; echo $?");

    EXPECT_THAT(outcome, outputMatches("0\n"));
    EXPECT_THAT(outcome.output + outcome.error, testing::HasSubstr("request sent; the outcome is not known"));
}

} // namespace backlight_verb_test
