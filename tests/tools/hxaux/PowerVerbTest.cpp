// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace power_verb_test {

using namespace hxtest;
using hxtest::supervisor::checkLines;
using hxtest::supervisor::onUnit;
using testing::AllOf;

const CommandRow kPowerVerbRows[] = {
    {"ShowsWhatHasPower", "power",
     AllOf(statusIs(0), errorIs(""), outputIs("backlight: on\ncan: on\nvideo: 1, 2\nfan: off\ntransition: none\n"))},
    {"SwitchesLoadsAndShowsThemAfterwards", "power backlight off; power can off; power fan on; power video 2,3; power",
     outputIs("backlight: off\ncan: off\nvideo: 2, 3\nfan: on\ntransition: none\n")},
    {"ShowsOneLoad", "power can; power video; power fan", outputIs("power: on\nvideo: 1, 2\npower: off\n")},
    {"ShowsAndAcknowledgesATransition",
     "power transition; power ack; power transition",
     AllOf(statusIs(0), outputIs("transition: 4\ntransition: none\n")),
     {"power.transition=4"}},
    {"SaysThatTheDriverRefuses",
     "power fan on",
     AllOf(statusIs(1), errorIs("power fan: IoCtrl operation failed (7)\n")),
     {"fail=/dev/power-id put 3"}},
};
const TestTable kPowerVerb{"PowerVerb", checkLines, kPowerVerbRows};

TEST(PowerVerb, RefusesAnInvalidState)
{
    EXPECT_THAT(onUnit("power fan 2"), statusIs(2));
    EXPECT_THAT(onUnit("power video 7"), AllOf(statusIs(2), errorMatches("channels: '7' is not a list")));
}

} // namespace power_verb_test
