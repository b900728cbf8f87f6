// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim record and replay: recording on a unit, replaying in a test.
#include "testing/FileContent.h"
#include "testing/FirmwareTexts.h"
#include "testing/TemporaryFolder.h"
#include "tests/tools/hxaux/CommandRows.h"

#include <algorithm>
#include <filesystem>

namespace record_test {

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

/// A folder for recordings, gone with the test.
class Recordings {
public:
    [[nodiscard]] std::string file(const std::string& name) const { return folder_ / name; }
    [[nodiscard]] std::string write(const std::string& name, const std::string& content) const
    {
        return folder_.file(name, content);
    }
    /// Records a command on a unit of its own and gives the file.
    [[nodiscard]] std::string of(const std::string& command, const std::string& options = "") const
    {
        std::string recording = file("made.recording");
        const Outcome outcome = run("hx-sim record " + options + " -o " + recording + " -- " + command);
        EXPECT_THAT(outcome.error, HasSubstr("hx-sim record: "));
        return recording;
    }

private:
    TemporaryFolder folder_;
};

constexpr char kVoltage[] = "hx-sim recording 1\n"
                            "1.1 0.1 /dev/adc-id open rdwr nonblock\n"
                            "1.1 0.2 /dev/adc-id 0xc004003a: 00 00 00 00 -> 00 00 b2 09\n"
                            "1.1 0.3 /dev/adc-id close\n";

} // namespace

TEST(Record, WritesEachCallWithItsAnswerOnALineBehindAHeadWithItsVersion)
{
    const Recordings recordings;

    EXPECT_THAT(fileContent(recordings.of("hxaux voltage 0")),
                testing::MatchesRegex("hx-sim recording 1\n"
                                      "1\\.1 [0-9.]+ /dev/adc-id open rdwr nonblock\n"
                                      "1\\.1 [0-9.]+ /dev/adc-id 0xc004003a: 00 00 00 00 -> 00 00 b2 09\n"
                                      "1\\.1 [0-9.]+ /dev/adc-id close\n"));
}

TEST(Record, LeavesOutputAndStatusToTheProgramAndNamesItsFile)
{
    const Recordings recordings;
    const std::string file = recordings.file("v.recording");

    EXPECT_THAT(
        run("hx-sim record -o " + file + " -- sh -c 'hxaux voltage 0; exit 3'"),
        AllOf(outputIs("voltage 0: 23.996 V\n"), errorIs("hx-sim record: 3 calls in " + file + "\n"), statusIs(3)));
}

TEST(Record, NamesItsFileAfterTheProgramWithoutAnOption)
{
    const Recordings recordings;

    EXPECT_THAT(run("cd " + recordings.file("") + " && hx-sim record -- hxaux voltage 0"),
                errorIs("hx-sim record: 3 calls in hxaux.recording\n"));
    EXPECT_TRUE(fs::exists(recordings.file("hxaux.recording")));
}

TEST(Record, RecordsWhatTheUnitLacksAndWhatItsFilesHold)
{
    const Recordings recordings;
    const std::string file = recordings.of("true", "--set absent=/dev/buzzer");

    EXPECT_THAT(fileContent(file), HasSubstr("\nabsent /dev/buzzer\n"));
}

TEST(Record, OnARunningUnitKeepsToTheProgramsOwnCalls)
{
    const Recordings recordings;
    const Unit unit;
    const std::string go = recordings.file("go");
    const std::string waiting =
        "sh -c 'touch " + go + ".ready; while [ ! -e " + go + " ]; do sleep 0.01; done; hxaux voltage 0'";
    const std::string name = unit.line("").substr(sizeof "hx-sim run --unit " - 1);

    const Outcome outcome = run("hx-sim record -o " + recordings.file("own") + " --unit " + name + waiting +
                                " & while [ ! -e " + go + ".ready ]; do sleep 0.01; done; " +
                                unit.line("hxaux backlight get") + " >/dev/null; touch " + go + "; wait");

    EXPECT_THAT(outcome.output, "voltage 0: 23.996 V\n");
    EXPECT_THAT(fileContent(recordings.file("own")), AllOf(HasSubstr("/dev/adc-id"), Not(HasSubstr("/dev/backlight"))));
}

TEST(Record, OfTheMachinePassesCallsOnToItsDevices)
{
    const Recordings recordings;
    const std::string file = recordings.file("m.recording");

    // Inside a unit its devices are this machine's.
    EXPECT_THAT(run("hx-sim run -- sh -c 'hx-sim record --machine -o " + file +
                    " -- hxaux backlight set 77; hx-sim get backlight.level'"),
                outputIs("77\n"));
    EXPECT_THAT(fileContent(file), HasSubstr("/dev/backlight 0x40010003: "));
}

TEST(Record, OfTheMachineReachesBoardLibraryAndSettingsFile)
{
    const Recordings recordings;
    const std::string machine = "hx-sim record --machine -o " + recordings.file("m") + " -- ";

    EXPECT_EQ(run("hx-sim run -- " + machine + "hxaux info").output, run("hx-sim run -- hxaux info").output);
    EXPECT_THAT(run("hx-sim run --scale 50 -- sh -c '" + machine +
                    "hxaux settings set EXAMPLE_KEY 42; hxaux settings get EXAMPLE_KEY'"),
                outputMatches("42"));
}

TEST(Record, OfTheMachinePassesAnUpgradeOverTheSerialPortOnAndItCanBeReplayed)
{
    const Recordings recordings;
    const std::string image = recordings.write("front.hex", firmware::intelHexOfSize(50000, firmware::pattern(2000)));
    const std::string upgrade = "hxaux upgrade front " + image;
    const std::string file = recordings.file("upgrade.recording");

    EXPECT_THAT(run("hx-sim run --scale 20 -- hx-sim record --machine -o " + file + " -- " + upgrade),
                AllOf(outputMatches("written and verified: 2000 bytes\n$"), statusIs(0)));
    EXPECT_THAT(run("hx-sim replay --scale 20 " + file + " -- " + upgrade),
                AllOf(outputMatches("written and verified: 2000 bytes\n$"), errorIs(""), statusIs(0)));
}

TEST(Record, OfTheMachineWithoutADeviceSaysThatItIsAbsent)
{
    const Recordings recordings;
    const std::string file = recordings.file("m.recording");

    EXPECT_THAT(
        run("hx-sim run --set absent=/dev/adc-id -- hx-sim record --machine -o " + file + " -- hxaux voltage 0"),
        AllOf(errorMatches("voltage: Open failed \\(1\\)"), statusIs(1)));
    EXPECT_THAT(fileContent(file), AllOf(HasSubstr("\nabsent /dev/adc-id\n"), HasSubstr("nonblock !ENOENT\n")));
}

TEST(Record, RefusesAFileThatCannotBeWritten)
{
    EXPECT_THAT(run("hx-sim record -o /nonexistent/file -- true"),
                AllOf(errorIs("hx-sim: cannot write /nonexistent/file\n"), statusIs(1)));
}

TEST(Replay, GivesTheAnswersOfTheRecording)
{
    const Recordings recordings;
    const std::string file = recordings.of("hxaux voltage 0", "--set voltage.0=11");

    EXPECT_THAT(run("hx-sim replay " + file + " -- hxaux voltage 0"),
                AllOf(outputIs("voltage 0: 11.002 V\n"), errorIs(""), statusIs(0)));
}

TEST(Replay, GivesErrorsAsTheyWereRecorded)
{
    const Recordings recordings;
    const std::string file = recordings.of("hxaux voltage 0", "--set 'fail=/dev/adc-id get 0 EIO'");

    EXPECT_THAT(run("hx-sim replay " + file + " -- hxaux voltage 0"),
                AllOf(errorIs("voltage: IoCtrl operation failed (7)\n"), statusIs(1)));
}

TEST(Replay, RepeatsOtherFailuresAtTheirPlace)
{
    const Recordings recordings;
    const std::string program = "hxaux light lux";
    const std::string options = "--set 'fail=libjida.so dlopen EIO' --set 'fail=* sem_open EACCES'";
    const std::string file = recordings.of("hxaux info --json", options);

    EXPECT_EQ(run("hx-sim replay " + file + " -- hxaux info --json").output,
              run("hx-sim run " + options + " -- hxaux info --json").output);
}

/// Replays the recording of a voltage with a program.
void checkReplayOfVoltage(const CommandRow& row)
{
    const Recordings recordings;
    const std::string file = recordings.write("v.recording", kVoltage);

    EXPECT_THAT(run("hx-sim replay " + file + " -- " + row.script), row.answer);
}

const CommandRow kReplayRows[] = {
    {"ReportsTheFirstDifferenceWithItsLineAndEndsWithFour", "hxaux voltage 1",
     AllOf(errorMatches("hx-sim replay: .*/v\\.recording:3: the program makes another call\n"
                        "  recorded: /dev/adc-id get 0 -> 2482\n"
                        "  now:      /dev/adc-id get 1\n"),
           statusIs(4))},
    {"EndsAProgramThatWentAnotherWay", "hxaux voltage 1 --watch", statusIs(4)},
    {"ReportsCallsThatWereNotRecorded", "hxaux voltage 0 --watch --every 0.01 --count 2",
     AllOf(errorMatches("v\\.recording:4: the program makes more calls than were recorded\n"
                        "  now:      /dev/adc-id "),
           statusIs(4))},
    {"ReportsAProgramThatEndsEarly", "true",
     AllOf(errorMatches("v\\.recording:2: the program ended without this call\n"
                        "  recorded: /dev/adc-id open rdwr nonblock\n"),
           statusIs(4))},
    {"EndsWithTheProgramsStatusWhenNothingDiffers", "sh -c 'hxaux voltage 0; exit 7'", statusIs(7)},
};
const TestTable kReplay{"Replay", checkReplayOfVoltage, kReplayRows};

TEST(Replay, AllowsProcessesInAnyOrder)
{
    const Recordings recordings;
    const std::string file = recordings.of("sh -c 'hxaux voltage 0; hxaux backlight get'");

    EXPECT_THAT(run("hx-sim replay " + file + " -- sh -c 'hxaux backlight get; hxaux voltage 0'"),
                AllOf(outputIs("level: 128\nvoltage 0: 23.996 V\n"), errorIs(""), statusIs(0)));
}

TEST(Replay, RefusesAFileThatCannotBeRead)
{
    EXPECT_THAT(run("hx-sim replay /nonexistent/file -- true"),
                AllOf(errorIs("hx-sim: cannot read /nonexistent/file\n"), statusIs(3)));
}

TEST(Replay, RefusesWhatIsNotARecordingAndNamesTheLine)
{
    const Recordings recordings;
    const auto refusal = [&](const std::string& content) {
        const std::string file = recordings.write("bad", content);
        const Outcome outcome = run("hx-sim replay " + file + " -- true");
        EXPECT_EQ(outcome.status, 3);
        return outcome.error.substr(std::min(outcome.error.size(), sizeof "hx-sim: " - 1 + file.size()));
    };
    const std::string title = "hx-sim recording 1\n";

    EXPECT_EQ(refusal(""), ":1: the file is empty\n");
    EXPECT_EQ(refusal("x\n"), ":1: not a recording: its first line is not 'hx-sim recording 1'\n");
    EXPECT_EQ(refusal("hx-sim recording 2\n"), ":1: the recording has version 2; this hx-sim knows version 1\n");
    EXPECT_EQ(refusal(title + "\n# remark\n1.1 0 /dev/adc-id jump\n"), ":4: there is no call 'jump'\n");
    EXPECT_EQ(refusal(title + "1.1 0 /dev/adc-id write: zz\n"), ":2: '0xzz' is not a number\n");
    EXPECT_EQ(refusal(title + "1.1 0 /dev/adc-id write: 00 gg\n"), ":2: ' gg' is not understood\n");
    EXPECT_EQ(refusal(title + "1.1 0 /dev/can write: \"12\n"), ":2: missing closing quote\n");
    EXPECT_EQ(refusal(title + "1.1 0\n"), ":2: missing word\n");
}

/// A hostile recording, and the line and message with which it is refused.
struct HostileLine {
    const char* line;
    const char* refusal;
};

constexpr HostileLine kHostileLines[] = {
    {"file /../../../x \"y\"", "the unit has no file \"/../../../x\""},
    {"file /opt/etc/../../tmp/x \"y\"", "the unit has no file \"/opt/etc/../../tmp/x\""},
    {"file /opt/etc/hxaux.ini/../x \"y\"",
     "the unit has no file \"/opt/etc/hxaux.ini/../x\"; did you mean '/opt/etc/hxaux.ini'?"},
    {"file //opt/etc/hxaux.ini \"y\"",
     "the unit has no file \"//opt/etc/hxaux.ini\"; did you mean '/opt/etc/hxaux.ini'?"},
    {"file opt/etc/hxaux.ini \"y\"", "the unit has no file \"opt/etc/hxaux.ini\"; did you mean '/opt/etc/hxaux.ini'?"},
    {"file /opt/etc \"y\"", "the unit has no file \"/opt/etc\"; did you mean '/opt/etc/hxaux.ini'?"},
    {"file /tmp/x \"y\"", "the unit has no file \"/tmp/x\""},
    {"file /opt/etc/hxaux.ini \"y\" z", "' z' is not understood"},
    {"absent /etc/passwd", "the unit has no device, file, library or function \"/etc/passwd\""},
    {"1.1 0 /dev/nope open rdwr", "the unit has no device \"/dev/nope\""},
    {"1.1 0 /dev/ttyS0 read 2 -> 00 01 02", "the read returns more than the program requested"},
    {"1.1 0 /dev/ttyS0 read 2 -> 00 = 2", "the read returns more than the program requested"},
    {"1.1 0 /dev/ttyS0 write: 00 = 2", "the write takes more than the program gave"},
    {"1.1 0 /dev/adc-id 0x80040099 -> 00 00 00 00 00", "more bytes than the number of the request declares"},
    {"1.1 -1 /dev/adc-id open rdwr", "the time is outside 0 to 1000000000 seconds"},
    {"1.1 1e300 /dev/adc-id open rdwr", "the time is outside 0 to 1000000000 seconds"},
    {"0.1 0 /dev/adc-id open rdwr", "0 is outside 1 to 2147483647"},
};

TEST(Replay, RefusesAHostileRecordingBeforeAnythingOfItIsUsed)
{
    const Recordings recordings;
    for (const HostileLine& each : kHostileLines) {
        const std::string file = recordings.write(
            "bad", std::string{"hx-sim recording 1\nfile /opt/etc/hxaux.ini \"x\"\n"} + each.line + '\n');
        EXPECT_THAT(run("hx-sim replay " + file + " -- touch " + file + ".started"),
                    AllOf(statusIs(3), errorIs("hx-sim: " + file + ":3: " + each.refusal + '\n')));
        EXPECT_FALSE(fs::exists(file + ".started"));
    }
}

TEST(Replay, RefusesWhatIsNotAFileWithoutWaiting)
{
    const Recordings recordings;
    const std::string fifo = recordings.file("fifo");
    run("mkfifo " + fifo);

    EXPECT_THAT(run("hx-sim replay " + fifo + " -- true"),
                AllOf(statusIs(3), errorIs("hx-sim: " + fifo + " is a FIFO, not a file\n")));
    EXPECT_THAT(run("hx-sim replay /dev/zero -- true"),
                AllOf(statusIs(3), errorIs("hx-sim: /dev/zero is a device, not a file\n")));
    EXPECT_THAT(run("hx-sim replay /tmp -- true"),
                AllOf(statusIs(3), errorIs("hx-sim: /tmp is a folder, not a file\n")));
}

TEST(Replay, SaysThatARecordingWithoutCallsComparesNothing)
{
    const Recordings recordings;
    const std::string file = recordings.write("empty", "hx-sim recording 1\n");

    EXPECT_THAT(run("hx-sim replay " + file + " -- true"),
                AllOf(statusIs(1), errorMatches("the recording has no calls: nothing was compared\n$")));
    EXPECT_THAT(run("hx-sim replay " + file + " -- hxaux voltage 0"), statusIs(4));
}

TEST(Record, ReportsAProgramWithoutCalls)
{
    const Recordings recordings;
    const std::string file = recordings.file("nothing");

    EXPECT_THAT(run("hx-sim record -o " + file + " -- true"),
                AllOf(statusIs(1), errorMatches("0 calls in .*\n.*made no call on the unit's devices")));
    EXPECT_THAT(run("hx-sim record -o " + file + " -- sh -c 'exit 5'"), statusIs(5));
}

TEST(Record, RefusesWhatIsNotAFileWithoutWaiting)
{
    const Recordings recordings;
    const std::string fifo = recordings.file("fifo");
    run("mkfifo " + fifo);

    EXPECT_THAT(run("hx-sim record -o " + fifo + " -- hxaux voltage 0"),
                AllOf(statusIs(1), errorIs("hx-sim: " + fifo + " is a FIFO, not a file\n")));
    EXPECT_THAT(run("hx-sim record -o /tmp -- hxaux voltage 0"),
                AllOf(statusIs(1), errorIs("hx-sim: /tmp is a folder, not a file\n")));
}

TEST(Replay, AnswersEachExampleAsItWasRecorded)
{
    const Recordings recordings;
    for (const auto& entry : fs::directory_iterator(fs::path(HX_EXAMPLE_SOURCES) / "expected")) {
        if (entry.path().stem() == "lightsensor")
            continue; // it averages for a while: the number of its requests depends on time
        const std::string program = std::string(HX_EXAMPLE_PROGRAMS) + "/" + entry.path().stem().string();
        SCOPED_TRACE(program);
        const std::string file = recordings.file("example");
        const Outcome recorded = run("hx-sim run --scale 20 --set touch.finger=follow -- hx-sim record --machine -o " +
                                     file + " -- " + program);

        EXPECT_THAT(recorded, statusIs(0));
        EXPECT_THAT(run("hx-sim replay --scale 20 " + file + " -- " + program),
                    AllOf(outputIs(recorded.output), errorIs(""), statusIs(0)));
    }
}

} // namespace record_test
