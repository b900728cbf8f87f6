// SPDX-License-Identifier: LicenseRef-HXAux
// A signal during each long-running command: the exit status, and no lock left behind.
#include "testing/RowTest.h"
#include "tests/tools/hxaux/OnUnit.h"

using namespace hxtest;
using testing::AllOf;

namespace {

// A background job of a shell ignores INT, so the tool gets its signals back from a program of its own.
constexpr char kStart[] = "env --default-signal=INT,HUP,TERM hxaux ";
// The lines of locks that are not free; the counter of settings is not a lock.
constexpr char kTakenLocks[] = "hxaux locks | grep -v SETTINGS_TO_READ | grep \"value 0\"";

struct Long {
    const char* name;
    const char* command;
    const char* begun; // a command that succeeds once it has begun
};

struct Signal {
    const char* name;
    int status;
};

class SignalDuring : public hxtest::TestWithRow<std::tuple<Long, Signal>> {};

} // namespace

ROW_TEST(SignalDuring, EndsItWithTheSignalsStatusAndLeavesNoLock)
{
    const auto& [command, signal] = row();
    const std::string script = std::string(kStart) + command.command + " >out 2>&1 & tool=$!; until " + command.begun +
                               "; do sleep 0.05; done; kill -" + signal.name +
                               " $tool; wait $tool 2>/dev/null; echo status $?; " + kTakenLocks;

    EXPECT_THAT(run("cd $(mktemp -d) && hx-sim run -- sh -c '" + script + "'; rm -r \"$PWD\""),
                AllOf(outputIs("status " + std::to_string(signal.status) + "\n"), errorIs("")));
}

namespace {

std::vector<SignalDuring::Row> everyCommandAndSignal()
{
    std::vector<SignalDuring::Row> rows;
    for (const Long& command :
         {Long{"Watch", "voltage 0 --watch --every 0.05", "grep -qs voltage out"},
          Long{"WatchThatHoldsALock", "light --average --watch --every 0.1", "grep -qs average out"},
          Long{"Averaging", "light --average", "hxaux locks | grep -q \"AVERAGE_LOCKED: taken\""},
          Long{"Monitor", "monitor --every 0.05", "grep -qs voltage out"},
          Long{"Beep", "buzzer beep 60000", "test $(hx-sim get buzzer.sounding) = on"},
          Long{"Service", "backlight serve", "grep -qs serving out"},
          Long{"Calibration", "calibrate run", "grep -qs waiting out"},
          Long{"MinimizedWindow", "video minimize 1 --for 60", "hx-sim get video.1.area | grep -q \"0 0 0 0\""},
          Long{"PowerKey", "telematics gprs on", "hx-sim log | grep -q -i i2c"}})
        for (const Signal& signal : {Signal{"INT", 130}, Signal{"TERM", 143}, Signal{"HUP", 129}})
            rows.emplace_back(command, signal);
    return rows;
}

} // namespace

TEST_ROWS_IN(
    Each, SignalDuring, [](const auto& row) { return std::string(std::get<0>(row).name) + std::get<1>(row).name; },
    everyCommandAndSignal());

// The moment differs each time: before the lock, while it is held, after it.
TEST(SignalAtAnyMoment, LeavesNoLock)
{
    for (const std::string command : {"light --average", "light range", "buzzer beep 20", "settings set X 1",
                                      "backlight auto filter 5 5 50 auto", "led-dimming off"}) {
        const std::string script = "for pause in 0 0.003 0.006 0.01 0.02 0.05 0.2; do " + std::string(kStart) +
                                   command +
                                   " >/dev/null 2>&1 & tool=$!; sleep $pause; kill -INT $tool 2>/dev/null; "
                                   "wait $tool; status=$?; [ $status = 130 ] || [ $status = 0 ] || "
                                   "echo $pause: status $status; done; " +
                                   kTakenLocks;

        EXPECT_THAT(onUnit(script), outputIs(""));
    }
}

TEST(SignalThatTheCallerIgnores, EndsNothing)
{
    EXPECT_THAT(onUnit("trap \"\" HUP; hxaux voltage 0 --watch --every 0.1 --count 8 >/dev/null & tool=$!; "
                       "sleep 0.3; kill -HUP $tool; wait $tool; echo status $?"),
                outputIs("status 0\n"));
}

TEST(ReaderThatGoesAway, LeavesNoLock)
{
    EXPECT_THAT(onUnit(std::string("hxaux light --average --watch --every 0.1 | head -n 1 >/dev/null; ") + kTakenLocks),
                AllOf(outputIs(""), errorIs("")));
}
