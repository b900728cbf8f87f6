// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace config_verb_test {

using namespace hxtest;
using hxtest::supervisor::checkLines;
using hxtest::supervisor::onUnit;
using testing::AllOf;

const CommandRow kConfigVerbRows[] = {
    {"ShowsEverySetting", "config",
     AllOf(statusIs(0), errorIs(""),
           outputIs("trigger: 3\n"
                    "short-press: 1\n"
                    "long-press: 2\n"
                    "signal: 2\n"
                    "button-time: 2000\n"
                    "signal-time: 500\n"
                    "suspend-time: 60\n"
                    "can: on\n"
                    "video: 1, 2\n"
                    "fan: off\n"
                    "voltage: 9.00 V\n"
                    "heating: 0 degrees C\n"
                    "power-on: off\n"))},
    {"TakesAllAndNoneForChannels", "config video all; config video; config video none; config video --json",
     AllOf(statusIs(0), outputMatches("^video: 1, 2, 3, 4\n"), outputMatches("\"video\": ?\\[\\]"))},
    {"ShowsALoadsUnusualWordAsTheNumberItIs", "config can", outputIs("can: 300\n"), {"config.can=300"}},
    {"SaysThatTheDeviceIsMissing",
     "config fan on",
     AllOf(statusIs(1), errorIs("config fan: Open failed (1)\n"), outputIs("")),
     {"absent=/dev/conf-id"}},
};
const TestTable kConfigVerb{"ConfigVerb", checkLines, kConfigVerbRows};

TEST(ConfigVerb, SetsWhatItIsGivenAndShowsItAfterwards)
{
    EXPECT_THAT(onUnit("config trigger 2; config trigger; config short-press 0; config short-press; "
                       "config long-press 1; config long-press; config signal 1; config signal"),
                AllOf(statusIs(0), outputIs("trigger: 2\nshort-press: 0\nlong-press: 1\nsignal: 1\n")));
    EXPECT_THAT(onUnit("config button-time 3000; config button-time; config signal-time 4000000000; "
                       "config signal-time; config suspend-time 300; config suspend-time"),
                AllOf(statusIs(0), outputIs("button-time: 3000\nsignal-time: 4000000000\nsuspend-time: 300\n")));
    EXPECT_THAT(onUnit("config can off; config can; config video 1,4; config video; config fan on; config fan"),
                AllOf(statusIs(0), outputIs("can: off\nvideo: 1, 4\nfan: on\n")));
    EXPECT_THAT(onUnit("config voltage 12; config voltage; config heating -25; config heating; config power-on on; "
                       "config power-on"),
                AllOf(statusIs(0), outputIs("voltage: 12.00 V\nheating: -25 degrees C\npower-on: on\n")));
}

TEST(ConfigVerb, RefusesValuesOutOfRangeAndSendsNothing)
{
    EXPECT_THAT(onUnit("config voltage 8.99"), AllOf(statusIs(2), errorMatches("8.99 is outside 9 to 28")));
    EXPECT_THAT(onUnit("config heating 6"), AllOf(statusIs(2), errorMatches("6 is outside -25 to 5")));
    EXPECT_THAT(onUnit("config trigger 0"), AllOf(statusIs(2), errorMatches("0 is outside 1 to 3")));
    EXPECT_THAT(onUnit("config fan maybe"), statusIs(2));
}

TEST(ConfigVerb, RefusesWhatIsNotAListOfChannels)
{
    for (const char* text : {"5", "0", "1,", "1,x", ",", "1,2,3,4,5"})
        EXPECT_THAT(onUnit(std::string("config video ") + text),
                    AllOf(statusIs(2), errorMatches("is not a list of channels 1 to 4")))
            << text;
}

TEST(ConfigVerb, NamesWhatAnOlderSupervisorCannotReport)
{
    const Outcome outcome = onUnit("config", {"version.ss=0.9.0.0"});

    EXPECT_THAT(outcome, AllOf(statusIs(1), outputMatches("heating: 0 degrees C\n")));
    EXPECT_THAT(outcome, errorMatches("config: trigger: A newer version of SS is required \\(25\\)\n"));
    EXPECT_THAT(outcome, errorMatches("config: power-on: A newer version of SS is required \\(25\\)\n"));
}

TEST(ConfigVerb, PrintsNumbersInJson)
{
    const auto result = jsonOf(onUnit("config --json"))["result"];

    EXPECT_EQ(result["trigger"], 3);
    EXPECT_EQ(result["can"], true);
    EXPECT_EQ(result["video"], nlohmann::json::array({1, 2}));
    EXPECT_EQ(result["voltage"], 9.0);
}

} // namespace config_verb_test
