// SPDX-License-Identifier: LicenseRef-HXAux
// The text of a recording: what is understood, what is refused with its line, and how calls are written.
#include "simulator/record/Recording.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace recording_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;
using modeltest::refusalOf;
using testing::ElementsAre;

namespace {

const std::string kTitle = "hx-sim recording 1\n";

class RecordingTest : public modeltest::ModelTest {
protected:
    Recording parse(const std::string& lines) { return Recording::parse(kTitle + lines, unit); }
    RecordedCall call(const std::string& line)
    {
        const Recording recording = parse(line);
        EXPECT_EQ(recording.calls.size(), 1U);
        return recording.calls.at(0);
    }
    std::string refusal(const std::string& text)
    {
        return refusalOf([&] { (void)Recording::parse(text, unit); });
    }
};

TEST_F(RecordingTest, HoldsItsCallsWithWhoMadeThemAndWhen)
{
    const RecordedCall one = call("2.3 1.500000 /dev/backlight open rdwr nonblock\n");

    EXPECT_EQ(one.process, 2);
    EXPECT_EQ(one.thread, 3);
    EXPECT_EQ(one.entry.time, 1500ms);
    EXPECT_EQ(one.entry.subject, "/dev/backlight");
    EXPECT_EQ(one.entry.action, "open rdwr nonblock");
    EXPECT_EQ(one.entry.kind, Entry::Kind::Open);
    EXPECT_EQ(one.result, 0);
    EXPECT_EQ(one.line, 2U);
}

TEST_F(RecordingTest, PassesOverCommentsAndEmptyLines)
{
    const Recording recording = parse("# a comment\n\n1.1 0 /dev/backlight close\n");

    ASSERT_EQ(recording.calls.size(), 1U);
    EXPECT_EQ(recording.calls[0].line, 4U);
}

TEST_F(RecordingTest, HoldsWhatIsAbsentAndTheFilesOfTheUnit)
{
    const Recording recording = parse("absent /dev/backlight\nabsent libjida.so\n"
                                      "file /opt/etc/hxaux.ini \"A=1\\nB=\\\"x\\\"\\n\"\n");

    EXPECT_THAT(recording.absent, ElementsAre("/dev/backlight", "libjida.so"));
    ASSERT_EQ(recording.files.size(), 1U);
    EXPECT_EQ(recording.files.at("/opt/etc/hxaux.ini"), "A=1\nB=\"x\"\n");
}

struct Line : Named {
    const char* text; ///< behind process, thread and time
    Entry::Kind kind;
    std::uint32_t request;
    Bytes in;
    Bytes out;
    std::int64_t result;
};

class LineOfARecording : public RecordingTest, public hxtest::WithRow<Line> {};

ROW_TEST(LineOfARecording, IsUnderstood)
{
    const RecordedCall one = call(std::string{"1.1 0 "} + row().text);

    EXPECT_EQ(one.entry.kind, row().kind);
    EXPECT_EQ(one.entry.request, row().request);
    EXPECT_EQ(one.entry.in, row().in);
    EXPECT_EQ(one.entry.out, row().out);
    EXPECT_EQ(one.result, row().result);
}

ROW_TEST(LineOfARecording, IsWrittenAsItWasRead)
{
    EXPECT_EQ(call(std::string{"1.1 0 "} + row().text).text(), row().text);
}

using Kind = Entry::Kind;

TEST_ROWS(Recording, LineOfARecording, kNameOfRow, Line{{"Open"}, "/dev/backlight open rdwr", Kind::Open, 0, {}, {}, 0},
          Line{{"OpenFails"}, "/dev/backlight open rdwr !EBUSY", Kind::Open, 0, {}, {}, -EBUSY},
          Line{{"Close"}, "/dev/backlight close", Kind::Close, 0, {}, {}, 0},
          Line{{"Request"}, "/dev/backlight 0x80010002 -> 80", Kind::Ioctl, 0x80010002, {}, {0x80}, 0},
          Line{{"RequestTakes"}, "/dev/backlight 0x40010003: 00 80", Kind::Ioctl, 0x40010003, {0, 0x80}, {}, 0},
          Line{{"BothWays"},
               "/dev/adc-id 0xc004003a: 03 00 00 00 -> 03 00 d9 04",
               Kind::Ioctl,
               0xC004003A,
               {3, 0, 0, 0},
               {3, 0, 0xD9, 4},
               0},
          Line{{"RequestWithAResult"}, "/dev/backlight 0x80010002 -> 80 = 5", Kind::Ioctl, 0x80010002, {}, {0x80}, 5},
          Line{{"RequestFails"}, "/dev/backlight 0x40010003: 00 80 !EIO", Kind::Ioctl, 0x40010003, {0, 0x80}, {}, -EIO},
          Line{{"UnknownRequest"}, "/dev/backlight 0x80021234 -> 01 02", Kind::Ioctl, 0x80021234, {}, {1, 2}, 0},
          Line{{"Read"}, "/dev/ttyS0 read 4 -> 79 1f", Kind::Read, 0, {}, {0x79, 0x1F}, 2},
          Line{{"ReadNothing"}, "/dev/ttyS0 read 4", Kind::Read, 0, {}, {}, 0},
          Line{{"ReadText"},
               R"(/etc/firmware.ver read 100 -> "2.1\n\x01\\")",
               Kind::Read,
               0,
               {},
               {'2', '.', '1', '\n', 1, '\\'},
               6},
          Line{{"Write"}, "/dev/ttyS0 write: 7f", Kind::Write, 0, {0x7F}, {}, 1},
          Line{{"ShortWrite"}, "/dev/ttyS0 write: 7f 00 = 1", Kind::Write, 0, {0x7F, 0}, {}, 1},
          Line{{"Fault"}, "sleep fault 100 !EINTR", Kind::Other, 0, {}, {}, -EINTR},
          Line{{"BoardLibrary"}, "libjida.so write: 01 02", Kind::Write, 0, {1, 2}, {}, 2});

TEST_F(RecordingTest, NamesTheBoardLibrarysNodeByTheLibrary)
{
    EXPECT_EQ(call("1.1 0 libjida.so write: 01").entry.subject, "/dev/.hxsim-jida");
}

struct Refusal : Named {
    const char* line;
    const char* text;
};

class BadLineOfARecording : public RecordingTest, public hxtest::WithRow<Refusal> {};

ROW_TEST(BadLineOfARecording, IsRefusedWithItsNumber)
{
    EXPECT_EQ(refusal(kTitle + "# a comment\n" + row().line + "\n1.1 0 /dev/backlight close\n"),
              std::string{"3: "} + row().text);
}

TEST_ROWS(
    Recording, BadLineOfARecording, kNameOfRow, Refusal{{"NoThread"}, "1", "missing PROCESS.THREAD"},
    Refusal{{"NoProcess"}, ".1 0 /dev/backlight close", "'' is not a number"},
    Refusal{{"ProcessZero"}, "0.1 0 /dev/backlight close", "0 is outside 1 to 2147483647"},
    Refusal{{"ThreadZero"}, "1.0 0 /dev/backlight close", "0 is outside 1 to 2147483647"},
    Refusal{{"NoTime"}, "1.1", "missing word"}, Refusal{{"TwoBlanks"}, "1.1  0 /dev/backlight close", "missing word"},
    Refusal{{"BadTime"}, "1.1 now /dev/backlight close", "'now' is not a number"},
    Refusal{{"NegativeTime"}, "1.1 -1 /dev/backlight close", "the time is outside 0 to 1000000000 seconds"},
    Refusal{{"EndlessTime"}, "1.1 1e9 /dev/backlight close", "the time is outside 0 to 1000000000 seconds"},
    Refusal{{"NoDevice"}, "1.1 0", "missing word"}, Refusal{{"NoCall"}, "1.1 0 /dev/backlight", "missing call"},
    Refusal{{"CallOfNothing"}, "1.1 0 /dev/backlight !EIO", "there is no call '!EIO'"},
    Refusal{{"UnknownCall"}, "1.1 0 /dev/backlight lseek 5", "there is no call 'lseek 5'"},
    Refusal{{"UnknownDevice"},
            "1.1 0 /dev/backligth close",
            "the unit has no device \"/dev/backligth\"; did you mean '/dev/backlight'?"},
    Refusal{{"BadRequest"}, "1.1 0 /dev/backlight 0x8001000g", "'0x8001000g' is not a number"},
    Refusal{{"LongRequest"}, "1.1 0 /dev/backlight 0x180010002", "0x180010002 is outside 0 to 4294967295"},
    Refusal{{"NoBytes"}, "1.1 0 /dev/ttyS0 write: ", "'' is not a byte of two digits"},
    Refusal{{"BadBytes"}, "1.1 0 /dev/ttyS0 write: 0g", "'0x0g' is not a number"},
    Refusal{{"HalfAByte"}, "1.1 0 /dev/ttyS0 write: 1", "'1' is not a byte of two digits"},
    Refusal{{"HalfAByteMore"}, "1.1 0 /dev/ttyS0 write: 00 1", "' 1' is not understood"},
    Refusal{{"OpenQuote"}, "1.1 0 /dev/ttyS0 write: \"abc", "missing closing quote"},
    Refusal{{"OpenEscape"}, "1.1 0 /dev/ttyS0 write: \"abc\\", "missing closing quote"},
    Refusal{{"BadEscape"}, "1.1 0 /dev/ttyS0 write: \"\\xg0\"", "'0xg0' is not a number"},
    Refusal{{"CutEscape"}, "1.1 0 /dev/ttyS0 write: \"\\x0", "'0' is not a byte of two digits"},
    Refusal{{"BadResult"}, "1.1 0 /dev/ttyS0 read 4 = -1", "-1 is outside 0 to 2147483647"},
    Refusal{{"BadErrno"}, "1.1 0 /dev/ttyS0 read 4 !EOI", "there is no errno 'EOI'; did you mean 'EIO'?"},
    Refusal{{"Rest"}, "1.1 0 /dev/ttyS0 read 4 !EIO now", "' now' is not understood"},
    Refusal{{"ReadOfNoSize"}, "1.1 0 /dev/ttyS0 read much", "'much' is not a number"},
    Refusal{{"ReadOfMoreThanAsked"},
            "1.1 0 /dev/ttyS0 read 1 -> 00 01",
            "the read returns more than the program requested"},
    Refusal{{"ReadCountsMoreThanItGives"},
            "1.1 0 /dev/ttyS0 read 4 -> 00 = 2",
            "the read returns more than the program requested"},
    Refusal{{"WritesMoreThanGiven"}, "1.1 0 /dev/ttyS0 write: 00 = 2", "the write takes more than the program gave"},
    Refusal{{"MoreThanDeclared"},
            "1.1 0 /dev/backlight 0x80021234 -> 01 02 03",
            "more bytes than the number of the request declares"},
    Refusal{
        {"AbsentNothing"}, "absent /dev/nothing", "the unit has no device, file, library or function \"/dev/nothing\""},
    Refusal{{"UnknownFile"}, "file /etc/passwd \"\"", "the unit has no file \"/etc/passwd\""},
    Refusal{{"FolderAsFile"},
            "file /opt/etc \"\"",
            "the unit has no file \"/opt/etc\"; did you mean '/opt/etc/hxaux.ini'?"},
    Refusal{{"FileWithoutContent"}, "file /opt/etc/hxaux.ini", "'' is not a byte of two digits"},
    Refusal{{"FileWithMore"}, "file /opt/etc/hxaux.ini \"\" 1", "' 1' is not understood"});

TEST_F(RecordingTest, RefusesAFileThatIsThereTwice)
{
    EXPECT_EQ(refusal(kTitle + "file /opt/etc/hxaux.ini \"\"\nfile /opt/etc/hxaux.ini \"A\"\n"),
              "3: the file /opt/etc/hxaux.ini occurs twice");
}

TEST_F(RecordingTest, RefusesMoreBytesThanACallCanHave)
{
    std::string bytes;
    for (int i = 0; i < 65537; ++i)
        bytes += " 00";

    EXPECT_EQ(refusal(kTitle + "1.1 0 /dev/ttyS0 write:" + bytes + "\n"), "2: more than 65536 bytes in one call");
    EXPECT_EQ(refusal(kTitle + "1.1 0 /dev/ttyS0 write:" + bytes.substr(3) + "\n"), "");
}

TEST_F(RecordingTest, RefusesWhatIsNoRecording)
{
    EXPECT_EQ(refusal(""), "1: the file is empty");
    EXPECT_THAT(refusal("# hx-sim recording 1\n"), testing::StartsWith("1: "));
    EXPECT_NE(refusal("\n" + kTitle), "") << "the title is the first line";
    EXPECT_EQ(refusal("hx-sim recording 2\n"), "1: the recording has version 2; this hx-sim knows version 1");
    EXPECT_EQ(refusal("hx-sim recording one\n"), "1: 'one' is not a number");
}

TEST_F(RecordingTest, WritesItsHeadAsItReadsIt)
{
    Recording recording;
    recording.absent = {"/dev/backlight"};
    recording.files["/opt/etc/hxaux.ini"] = "A=1\n";

    const std::string head = recording.headText();

    EXPECT_EQ(head, kTitle + "absent /dev/backlight\nfile /opt/etc/hxaux.ini \"A=1\\n\"\n");
    const Recording again = Recording::parse(head, unit);
    EXPECT_EQ(again.absent, recording.absent);
    EXPECT_EQ(again.files, recording.files);
}

TEST_F(RecordingTest, WritesALineWithMicroseconds)
{
    RecordedCall one = call("2.3 1.5 /dev/backlight close");
    one.entry.time = 1500ms + 7us;

    EXPECT_EQ(one.lineText(), "2.3 1.500007 /dev/backlight close");
}

TEST_F(RecordingTest, ComparesWhatIsAskedAndNotWhatIsAnswered)
{
    const RecordedCall one = call("1.1 0 /dev/backlight 0x80010002 -> 80");

    EXPECT_TRUE(one.makesTheSameCallAs(call("2.5 7 /dev/backlight 0x80010002 -> 81")));
    EXPECT_TRUE(one.makesTheSameCallAs(call("1.1 0 /dev/backlight 0x80010002 !EIO")));
    EXPECT_FALSE(one.makesTheSameCallAs(call("1.1 0 /dev/backlight 0x80010004 -> 80")));
    EXPECT_FALSE(one.makesTheSameCallAs(call("1.1 0 /dev/lightsensor 0x80010002 -> 80")));
    EXPECT_FALSE(call("1.1 0 /dev/ttyS0 write: 01").makesTheSameCallAs(call("1.1 0 /dev/ttyS0 write: 02")));
    EXPECT_FALSE(call("1.1 0 /dev/ttyS0 read 4").makesTheSameCallAs(call("1.1 0 /dev/ttyS0 read 5")));
    EXPECT_FALSE(call("1.1 0 /dev/ttyS0 open rdwr").makesTheSameCallAs(call("1.1 0 /dev/ttyS0 open rdonly")));
}

} // namespace

} // namespace recording_test
