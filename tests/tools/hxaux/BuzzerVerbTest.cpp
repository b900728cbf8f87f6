// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/RowTest.h"
#include "tests/tools/hxaux/SupervisorVerbs.h"

#include <functional>
#include <unistd.h>

namespace buzzer_verb_test {

using namespace hxtest;
using hxtest::supervisor::checkLines;
using hxtest::supervisor::onUnit;
using testing::AllOf;

namespace {

/// Lines of shell on a unit that runs while they do; $unit is its name, and `on` runs a program on it.
Outcome withUnit(const std::string& lines)
{
    static int number = 0;
    const std::string name = "buzzer-" + std::to_string(getpid()) + "-" + std::to_string(++number);
    return run("unit=" + name + "; on() { hx-sim run --unit $unit -- \"$@\"; }\n" +
               "hx-sim start $unit >/dev/null || exit 99\n" + lines + "\nresult=$?\n" +
               "hx-sim stop $unit >/dev/null\nexit $result");
}

// Waits until the buzzer sounds, at most a minute.
constexpr const char* kUntilItSounds =
    "for i in $(seq 600); do [ \"$(hx-sim get --unit $unit buzzer.sounding)\" = on ] && break; sleep 0.1; done\n";

} // namespace

const CommandRow kBuzzerVerbRows[] = {
    {"ShowsItsState", "buzzer",
     AllOf(statusIs(0), errorIs(""), outputIs("frequency: 2000 Hz\nvolume: 25\nsounding: off\n"))},
    {"SetsFrequencyAndVolume", "buzzer frequency 700; buzzer volume 51; buzzer frequency; buzzer volume",
     AllOf(statusIs(0), outputIs("frequency: 700 Hz\nvolume: 51\n"))},
    {"SoundsUntilItIsSwitchedOff", "buzzer on; buzzer; buzzer off; buzzer",
     AllOf(statusIs(0), outputMatches("sounding: on\n"), outputMatches("sounding: off\n$"))},
    {"BeepsAndIsSilentAfterwards", "buzzer beep 50; buzzer beep 50; buzzer",
     AllOf(statusIs(0), errorIs(""), outputMatches("sounding: off\n"))},
};
const TestTable kBuzzerVerb{"BuzzerVerb", checkLines, kBuzzerVerbRows};

TEST(BuzzerVerb, RefusesValuesOutOfRange)
{
    EXPECT_THAT(onUnit("buzzer frequency 699"), AllOf(statusIs(2), errorMatches("699 is outside 700 to 10000")));
    EXPECT_THAT(onUnit("buzzer volume 52"), AllOf(statusIs(2), errorMatches("52 is outside 0 to 51")));
    EXPECT_THAT(onUnit("buzzer beep -1"), statusIs(2));
}

TEST(BuzzerVerb, SaysThatAnotherBeepSounds)
{
    const Outcome outcome =
        withUnit("hx-sim run --unit $unit -- hxaux buzzer beep 60000 & beep=$!\n" + std::string(kUntilItSounds) +
                 "on hxaux buzzer beep 10; second=$?\nkill -TERM $beep; wait $beep\n"
                 "echo $second; (exit $second)");

    EXPECT_THAT(outcome, AllOf(outputIs("5\n"), statusIs(5), errorMatches("Function in progress \\(11\\)")));
}

class SignalDuringABeep : public hxtest::TestWithRow<const char*> {};
TEST_ROWS(Of, SignalDuringABeep, std::identity{}, "INT", "TERM", "HUP");

ROW_TEST(SignalDuringABeep, LeavesNothingSoundingAndNothingLocked)
{
    // A background job of a shell ignores INT, so a program of its own gives the tool its signals back.
    const Outcome outcome = withUnit(
        "hx-sim run --unit $unit -- env --default-signal=INT hxaux buzzer beep 60000 & beep=$!\n" +
        std::string(kUntilItSounds) + "kill -" + row() +
        " $beep; wait $beep; echo $?; hx-sim get --unit $unit buzzer.sounding; on hxaux buzzer beep 0; echo $?");

    const std::string ended = row() == std::string("INT") ? "130" : row() == std::string("HUP") ? "129" : "143";
    EXPECT_THAT(outcome, outputIs(ended + "\noff\n0\n"));
}

} // namespace buzzer_verb_test
