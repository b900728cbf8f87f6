// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/SupervisorVerbs.h"

namespace diag_verb_test {

using namespace hxtest;
using hxtest::supervisor::checkLines;
using hxtest::supervisor::onUnit;
using testing::AllOf;

const CommandRow kDiagVerbRows[] = {
    {"ShowsEverything",
     "diag",
     AllOf(statusIs(0), errorIs(""), outputMatches("^supervisor: -5\nboard: 35\n"),
           outputMatches("extremes: lowest 35, highest 35\n"), outputMatches("startup: Front Panel Button \\(85\\)\n"),
           outputMatches("shutdown: 85\n"), outputMatches("error: No Error \\(0\\)\ncycles: 42\n"),
           outputMatches("timer 2: 90 s\n")),
     {"diagnostics.ss-temp=-5", "diagnostics.time.2=90"}},
    {"ShowsTheLowerTemperatureAsTheLowest",
     "diag extremes",
     outputIs("extremes: lowest -20, highest 80\n"),
     {"diagnostics.lowest=65516", "diagnostics.highest=80"}},
    {"ShowsNamesWithTheirCodes",
     "diag error; diag startup",
     outputIs("error: 24V Out Of Limits (16)\nstartup: External Control Signal (170)\n"),
     {"diagnostics.error=16", "diagnostics.startup-reason=170"}},
    {"ClearsTheHardwareError",
     "diag clear-error; diag error",
     AllOf(statusIs(0), outputIs("error: No Error (0)\n")),
     {"diagnostics.error=16"}},
    {"ShowsSingleValues", "diag supervisor; diag board; diag shutdown; diag cycles",
     outputIs("supervisor: 38\nboard: 35\nshutdown: 85\ncycles: 42\n")},
    {"SaysThatASensorIsMissing",
     "diag module 9",
     AllOf(statusIs(1), errorIs("diag module: Failed to read temperature (JIDA) (19)\n")),
     {"jida.sensors=2"}},
    {"ContinuesWithTheRestWhenOneValueCannotBeRead",
     "diag",
     AllOf(statusIs(1), errorIs("diag: startup: IoCtrl operation failed (7)\n"), outputMatches("cycles: 42\n")),
     {"fail=/dev/diag-id get 2"}},
};
const TestTable kDiagVerb{"DiagVerb", checkLines, kDiagVerbRows};

TEST(DiagVerb, ShowsEveryTimer)
{
    const Outcome outcome = onUnit("diag timers --json", {"diagnostics.time.6=428"});

    EXPECT_EQ(jsonOf(outcome)["result"]["timer"][6]["value"], 428);
}

TEST(DiagVerb, ShowsAllSensorsOfTheModule)
{
    const Outcome outcome = onUnit("diag module", {"jida.sensors=2", "temperature.pm.0=45.999"});

    EXPECT_THAT(outcome, AllOf(statusIs(0), errorIs(""), outputMatches("^module 0: temperature 45 degrees C, type ")));
    EXPECT_THAT(outcome, testing::Not(outputMatches("module 2")));
}

} // namespace diag_verb_test
