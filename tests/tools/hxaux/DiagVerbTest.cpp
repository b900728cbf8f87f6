// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace diag_verb_test {

using namespace hxtest;
using hxtest::supervisor::onUnit;
using testing::AllOf;

TEST(DiagVerb, ShowsEverything)
{
    EXPECT_THAT(onUnit("diag", "--set diagnostics.ss-temp=-5 --set diagnostics.time.2=90"),
                AllOf(statusIs(0), errorIs(""), outputMatches("^supervisor: -5\nboard: 35\n"),
                      outputMatches("extremes: lowest 35, highest 35\n"),
                      outputMatches("startup: Front Panel Button \\(85\\)\n"), outputMatches("shutdown: 85\n"),
                      outputMatches("error: No Error \\(0\\)\ncycles: 42\n"), outputMatches("timer 2: 90 s\n")));
}

TEST(DiagVerb, ShowsTheLowerTemperatureAsTheLowest)
{
    EXPECT_THAT(onUnit("diag extremes", "--set diagnostics.lowest=65516 --set diagnostics.highest=80"),
                outputIs("extremes: lowest -20, highest 80\n"));
}

TEST(DiagVerb, ShowsNamesWithTheirCodes)
{
    EXPECT_THAT(onUnit("diag error; diag startup", "--set diagnostics.error=16 --set diagnostics.startup-reason=170"),
                outputIs("error: 24V Out Of Limits (16)\nstartup: External Control Signal (170)\n"));
}

TEST(DiagVerb, ClearsTheHardwareError)
{
    EXPECT_THAT(onUnit("diag clear-error; diag error", "--set diagnostics.error=16"),
                AllOf(statusIs(0), outputIs("error: No Error (0)\n")));
}

TEST(DiagVerb, ShowsSingleValues)
{
    EXPECT_THAT(onUnit("diag supervisor; diag board; diag shutdown; diag cycles"),
                outputIs("supervisor: 38\nboard: 35\nshutdown: 85\ncycles: 42\n"));
}

TEST(DiagVerb, ShowsEveryTimer)
{
    const Outcome outcome = onUnit("diag timers --json", "--set diagnostics.time.6=428");

    EXPECT_EQ(jsonOf(outcome)["result"]["timer"][6]["value"], 428);
}

TEST(DiagVerb, ShowsAllSensorsOfTheModule)
{
    const Outcome outcome = onUnit("diag module", "--set jida.sensors=2 --set temperature.pm.0=45.999");

    EXPECT_THAT(outcome, AllOf(statusIs(0), errorIs(""), outputMatches("^module 0: temperature 45 degrees C, type ")));
    EXPECT_THAT(outcome, testing::Not(outputMatches("module 2")));
}

TEST(DiagVerb, SaysThatASensorIsMissing)
{
    EXPECT_THAT(onUnit("diag module 9", "--set jida.sensors=2"),
                AllOf(statusIs(1), errorIs("diag module: Failed to read temperature (JIDA) (19)\n")));
}

TEST(DiagVerb, ContinuesWithTheRestWhenOneValueCannotBeRead)
{
    EXPECT_THAT(
        onUnit("diag", "--set \"fail=/dev/diag-id get 2\""),
        AllOf(statusIs(1), errorIs("diag: startup: IoCtrl operation failed (7)\n"), outputMatches("cycles: 42\n")));
}

} // namespace diag_verb_test
