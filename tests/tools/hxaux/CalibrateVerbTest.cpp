// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

namespace {
const std::vector<std::string> kFinger{"touch.finger = follow"};
} // namespace

const CommandRow kCalibrateVerbRows[] = {
    {"WalksThroughAllPointsForAScript", "hxaux calibrate run",
     AllOf(outputIs("point 1: waiting\npoint 1: taken\npoint 2: waiting\npoint 2: taken\n"
                    "point 3: waiting\npoint 3: taken\npoint 4: waiting\npoint 4: taken\n"
                    "point 5: waiting\npoint 5: taken\ncalibration: finished\n"),
           errorIs(""), statusIs(0)),
     kFinger},
    {"WaitsForTheFingerOfAPoint",
     "hxaux calibrate run & for point in 1 2 3 4 5; do sleep 0.4; hx-sim do touch $point; done; "
     "wait $!; echo status $?; hx-sim get touch.calibrated",
     outputMatches("calibration: finished\nstatus 0\n.*1\n$")},
    {"HasThirteenPointsInTheLongestMode", "hxaux calibrate run 13-points",
     AllOf(outputMatches("point 13: taken\ncalibration: finished\n$"), statusIs(0)), kFinger},
    {"GivesUpAPointThatIsNotTouched",
     "hxaux calibrate run --timeout 0.3; echo status $?; hx-sim log | grep -c \"put 1 = 0\"",
     AllOf(outputIs("point 1: waiting\nstatus 1\n1\n"),
           errorMatches("point 1 was not touched in time; the calibration is not complete"))},
    {"EndsOnASignalAndLeavesNoPointAwaited",
     "hxaux calibrate run & sleep 0.6; kill -TERM $!; wait $!; echo status $?; "
     "hx-sim log | grep -c \"put 1 = 0\"",
     AllOf(outputIs("point 1: waiting\nstatus 143\n1\n"), errorMatches("ended by a signal at point 1"))},
    {"StartsAgainAfterAnInterruptedRun",
     "hxaux calibrate run --timeout 0.3; hx-sim do touch follow; hxaux calibrate run",
     AllOf(outputMatches("calibration: finished\n$"), statusIs(0))},
    {"NamesThePointAtWhichTheControllerRefused",
     "hxaux calibrate run",
     AllOf(errorIs("calibrate run: point 1: IoCtrl operation failed (7)\n"), statusIs(1)),
     {"touch.finger = follow", "fail = /dev/front-mcu-id put 1 EIO 1"}},
    {"DoesTheStepsOneByOne",
     "hxaux calibrate mode; hxaux calibrate mode 9-points; hxaux calibrate mode; "
     "hxaux calibrate point 6; hx-sim do touch 6; sleep 0.4; hxaux calibrate check 6; "
     "hxaux calibrate check 5",
     AllOf(outputIs("mode: none\nmode: 9-points\ntaken: yes\ntaken: no\n"), errorIs(""), statusIs(0))},
    {"PassesOnThatNothingRuns", "hxaux calibrate point 1",
     AllOf(errorIs("calibrate point: Function not running (21)\n"), statusIs(1))},
    {"ShowsAndSetsParameters",
     "hxaux calibrate parameter 2 4000; hxaux calibrate parameter 2; hx-sim get touch.register.16; "
     "hxaux calibrate parameter",
     AllOf(outputMatches("^parameter 2: 4000\n.*4000\nparameter 0: 150\n"), outputMatches("parameter 5: 0\n$"),
           statusIs(0))},
};
const TestTable kCalibrateVerb{"CalibrateVerb", checkOnUnit, kCalibrateVerbRows};

TEST(CalibrateVerb, PromptsForEachPointOnATerminal)
{
    const Outcome outcome = runOnTerminal("hx-sim run --set 'touch.finger = follow' -- hxaux calibrate run");

    EXPECT_THAT(outcome, AllOf(outputMatches("touch point 1 of 5"), outputMatches("touch point 5 of 5"),
                               outputMatches("calibration: finished"), statusIs(0)));
}

TEST(CalibrateVerb, GivesOneLineOfJsonPerStep)
{
    const auto lines = jsonLinesOf(onUnit("hxaux calibrate run --json", kFinger));

    ASSERT_EQ(lines.size(), 11U);
    EXPECT_EQ(lines[0]["result"]["point"][0]["value"], "waiting");
    EXPECT_EQ(lines[9]["result"]["point"][0]["value"], "taken");
    EXPECT_EQ(lines[10]["result"]["calibration"], "finished");
}
