// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace led_verb_test {

using namespace hxtest;
using hxtest::supervisor::checkLines;
using hxtest::supervisor::onUnit;
using testing::AllOf;

const CommandRow kLedVerbRows[] = {
    {"ShowsColorAndPattern",
     "led",
     AllOf(statusIs(0), errorIs(""),
           outputIs("color: green\n"
                    "rgb: red 0, green 15, blue 0\n"
                    "frequency: 1.000 Hz\n"
                    "duty: 25 %\n"
                    "on-time: 250 ms\n"
                    "off-time: 750 ms\n"
                    "idle-time: 1000 ms\n"
                    "pulses: 3\n"
                    "startup: on\n")),
     {"led.timing=25 75 100 3"}},
    {"SetsColorsByNameAndByComponents",
     "led color orange; led rgb; led rgb 12 0 4; led color; led rgb 1 2 3; led color",
     AllOf(statusIs(0), outputIs("rgb: red 15, green 5, blue 0\ncolor: magenta\ncolor: other\n"))},
    {"SetsTheSignal", "led signal 2 25; led on-time; led off-time; led signal",
     AllOf(statusIs(0), outputIs("time: 120 ms\ntime: 380 ms\nfrequency: 2.000 Hz\nduty: 24 %\n"))},
    {"WarnsThatASlowSignalComesOutOtherwise", "led signal 0.25 75",
     AllOf(statusIs(0), errorMatches("loses its high bits"))},
    {"SetsEachPartOfThePattern",
     "led on-time 100; led off-time 200; led idle-time 2550; led pulses 4; led startup off; led",
     AllOf(statusIs(0), outputMatches("on-time: 100 ms\noff-time: 200 ms\nidle-time: 2550 ms\npulses: 4\n"
                                      "startup: off\n"))},
    {"SwitchesOff", "led off; led",
     AllOf(statusIs(0), outputMatches("frequency: absent\n"), outputMatches("on-time: 0 ms\n"))},
    {"RefusesATimeThatIsNotAMultipleOfItsUnit", "led on-time 15",
     AllOf(statusIs(2), errorMatches("15 is not a multiple of 10 ms"))},
};
const TestTable kLedVerb{"LedVerb", checkLines, kLedVerbRows};

TEST(LedVerb, RefusesValuesOutOfRange)
{
    EXPECT_THAT(onUnit("led rgb 16 0 0"), AllOf(statusIs(2), errorMatches("16 is outside 0 to 15")));
    EXPECT_THAT(onUnit("led signal 50.01 50"), AllOf(statusIs(2), errorMatches("is outside 0.2 to 50")));
    EXPECT_THAT(onUnit("led signal 1 101"), AllOf(statusIs(2), errorMatches("101 is outside 0 to 100")));
    EXPECT_THAT(onUnit("led color pink"), statusIs(2));
    EXPECT_THAT(onUnit("led idle-time 2560"), statusIs(2));
}

TEST(LedVerb, NeedsAllPartsOfAColorAndOfASignal)
{
    EXPECT_THAT(onUnit("led rgb 1 2"), AllOf(statusIs(2), errorMatches("missing argument: RED GREEN BLUE")));
    EXPECT_THAT(onUnit("led signal 1"), AllOf(statusIs(2), errorMatches("missing argument: FREQUENCY DUTY")));
}

} // namespace led_verb_test
