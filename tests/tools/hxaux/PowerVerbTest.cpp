// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace power_verb_test {

using namespace hxtest;
using hxtest::supervisor::onUnit;
using testing::AllOf;

TEST(PowerVerb, ShowsWhatHasPower)
{
    EXPECT_THAT(onUnit("power"), AllOf(statusIs(0), errorIs(""),
                                       outputIs("backlight: on\ncan: on\nvideo: 1, 2\nfan: off\ntransition: none\n")));
}

TEST(PowerVerb, SwitchesLoadsAndShowsThemAfterwards)
{
    EXPECT_THAT(onUnit("power backlight off; power can off; power fan on; power video 2,3; power"),
                outputIs("backlight: off\ncan: off\nvideo: 2, 3\nfan: on\ntransition: none\n"));
}

TEST(PowerVerb, ShowsOneLoad)
{
    EXPECT_THAT(onUnit("power can; power video; power fan"), outputIs("power: on\nvideo: 1, 2\npower: off\n"));
}

TEST(PowerVerb, ShowsAndAcknowledgesATransition)
{
    EXPECT_THAT(onUnit("power transition; power ack; power transition", "--set power.transition=4"),
                AllOf(statusIs(0), outputIs("transition: 4\ntransition: none\n")));
}

TEST(PowerVerb, RefusesAnInvalidState)
{
    EXPECT_THAT(onUnit("power fan 2"), statusIs(2));
    EXPECT_THAT(onUnit("power video 7"), AllOf(statusIs(2), errorMatches("channels: '7' is not a list")));
}

TEST(PowerVerb, SaysThatTheDriverRefuses)
{
    EXPECT_THAT(onUnit("power fan on", "--set \"fail=/dev/power-id put 3\""),
                AllOf(statusIs(1), errorIs("power fan: IoCtrl operation failed (7)\n")));
}

} // namespace power_verb_test
