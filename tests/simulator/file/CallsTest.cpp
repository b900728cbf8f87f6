// SPDX-License-Identifier: LicenseRef-HXAux
// What happens to every call on its way to a node: failures, counting, the journal.
#include "simulator/file/UnitCalls.h"
#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace calls_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class CallsTest : public modeltest::ModelTest {
protected:
    UnitCalls calls{unit};
    Caller caller{7, 2};

    std::unique_ptr<OpenFile> open(const std::string& path, int flags = O_RDWR)
    {
        return calls.open(caller, path, flags).file;
    }
    std::int64_t ioctl(OpenFile& file, std::uint32_t code, const Bytes& in, std::size_t size = 0)
    {
        out.assign(size, 0);
        return calls.ioctl(caller, file, code, in, out);
    }
    std::string journal()
    {
        std::string text;
        for (const Entry& entry : unit.journal().entries())
            text += entry.text() + '\n';
        return text;
    }

    Bytes out{};
};

TEST_F(CallsTest, OpenWhatTheUnitHas)
{
    EXPECT_NE(open("/dev/backlight"), nullptr);
    EXPECT_EQ(calls.open(caller, "/dev/other", O_RDWR).error, ENOENT);
    unit.describe("absent = /dev/backlight");
    EXPECT_EQ(calls.open(caller, "/dev/backlight", O_RDWR).error, ENOENT);
    EXPECT_EQ(calls.open(caller, "/dev/backlight", O_RDWR).file, nullptr);
}

TEST_F(CallsTest, OpenWhatItsHardwareRefusesWithTheHardwaresErrno)
{
    unit.describe("daemon.running = off");

    EXPECT_EQ(calls.open(caller, "/tmp/hxauxd.fifo", O_WRONLY | O_NONBLOCK).error, ENXIO);
    EXPECT_EQ(journal(), "/tmp/hxauxd.fifo open wronly nonblock !ENXIO\n");
}

TEST_F(CallsTest, AreWrittenIntoTheJournalWithCallerAndTime)
{
    pass(1500ms);
    const auto file = open("/dev/backlight");
    EXPECT_EQ(ioctl(*file, 0x80010002, {}, 1), 0);
    calls.close(caller, *file);

    EXPECT_EQ(journal(), "/dev/backlight open rdwr\n/dev/backlight 0x80010002 -> 80\n/dev/backlight close\n");
    const Entry& last = unit.journal().entries().back();
    EXPECT_EQ(last.time, 1500ms);
    EXPECT_EQ(last.caller.process, 7);
    EXPECT_EQ(last.caller.thread, 2);
}

TEST_F(CallsTest, ShowAttributesAsTexts)
{
    const auto file = open("/etc/firmware.ver", O_RDONLY);
    Bytes buffer(100);
    EXPECT_EQ(calls.read(caller, *file, buffer, 0ns, Calls::Attempt::First).result, 8);

    EXPECT_EQ(unit.journal().entries().back().text(), R"(/etc/firmware.ver read 100 -> "2.1.0.5\n")");
}

TEST_F(CallsTest, CountTheOpeningsOfANode)
{
    const auto first = open("/dev/ttyS0");
    const auto second = open("/dev/ttyS0");
    EXPECT_EQ(node("/dev/ttyS0").openings, 2);

    calls.close(caller, *first);
    calls.close(caller, *second, Calls::Closing::WithProgram);
    EXPECT_EQ(node("/dev/ttyS0").openings, 0);
}

TEST_F(CallsTest, ForgetTheTerminalWithTheFirstOfTheOpenings)
{
    const auto first = open("/dev/ttyS0");
    node("/dev/ttyS0").terminal = {1, 2, 3};
    const auto second = open("/dev/ttyS0");
    EXPECT_EQ(node("/dev/ttyS0").terminal.size(), 3U);

    calls.close(caller, *first);
    calls.close(caller, *second);
    const auto third = open("/dev/ttyS0");
    EXPECT_TRUE(node("/dev/ttyS0").terminal.empty());
}

struct Failure : Named {
    const char* fault;
    std::uint32_t code;
    Bytes in;
    std::int64_t result;
};

class FailedRequest : public CallsTest, public hxtest::WithRow<Failure> {};

ROW_TEST(FailedRequest, IsThatOfTheName)
{
    const auto file = open("/dev/diag-id");
    unit.addFault(row().fault);

    EXPECT_EQ(ioctl(*file, row().code, row().in, 4), row().result);
}

TEST_ROWS(Calls, FailedRequest, kNameOfRow,
          Failure{{"ByRegister"}, "/dev/diag-id get 5 EBUSY", 0xC004003A, {5, 0, 0, 0}, -EBUSY},
          Failure{{"OtherRegister"}, "/dev/diag-id get 5 EBUSY", 0xC004003A, {6, 0, 0, 0}, 0},
          Failure{{"EachRegister"}, "/dev/diag-id get EBUSY", 0xC004003A, {6, 0, 0, 0}, -EBUSY},
          Failure{{"ByCode"}, "/dev/diag-id 0xC004003A EBUSY", 0xC004003A, {6, 0, 0, 0}, -EBUSY},
          Failure{{"Put"}, "/dev/diag-id put 40 EPERM", 0xC004003B, {40, 0, 1, 0}, -EPERM},
          Failure{{"GetIsNoPut"}, "/dev/diag-id get 40 EPERM", 0xC004003B, {40, 0, 1, 0}, 0},
          Failure{{"Any"}, "* * ENODEV", 0xC004003A, {6, 0, 0, 0}, -ENODEV});

TEST_F(CallsTest, ThatAreAskedToFailReachNoHardware)
{
    const auto file = open("/dev/backlight");
    unit.addFault("/dev/backlight 0x40010003 EIO 1");

    EXPECT_EQ(ioctl(*file, 0x40010003, {0, 9}), -EIO);
    EXPECT_EQ(property("backlight.level"), "128");
    EXPECT_EQ(unit.journal().entries().back().text(), "/dev/backlight 0x40010003: 00 09 !EIO");
    EXPECT_EQ(ioctl(*file, 0x40010003, {0, 9}), 0);
}

TEST_F(CallsTest, OnARegisterCountOnceForAFaultThatLetsSomePass)
{
    const auto file = open("/dev/diag-id");
    unit.faults().add(Fault{.subject = "/dev/diag-id", .call = "*", .error = EIO, .count = 1, .skip = 1});

    EXPECT_EQ(ioctl(*file, 0xC004003A, {5, 0, 0, 0}, 4), 0);
    EXPECT_EQ(ioctl(*file, 0xC004003A, {5, 0, 0, 0}, 4), -EIO);
    EXPECT_EQ(ioctl(*file, 0xC004003A, {5, 0, 0, 0}, 4), 0);
}

TEST_F(CallsTest, ThatWaitAreWrittenDownWhenTheyEndAndMeetOneFault)
{
    const auto file = open("/dev/ttyS0");
    node("/dev/ttyS0").setLine(LineSettings{115200, 8, 'e', 1, 0, 10, false});
    unit.journal().clear();
    Bytes buffer(4);

    EXPECT_TRUE(calls.read(caller, *file, buffer, 0ns, Calls::Attempt::First).waits);
    EXPECT_EQ(journal(), "");
    unit.addFault("/dev/ttyS0 read EIO");
    pass(1s);
    EXPECT_EQ(calls.read(caller, *file, buffer, 0ns, Calls::Attempt::Again).result, 0);
    EXPECT_EQ(journal(), "/dev/ttyS0 read 4\n");
    EXPECT_EQ(calls.read(caller, *file, buffer, 1s, Calls::Attempt::First).result, -EIO);
}

TEST_F(CallsTest, ThatWriteCanFailToo)
{
    const auto file = open("/tmp/hxauxd.fifo");
    unit.addFault("/tmp/hxauxd.fifo write ENOSPC 1");

    EXPECT_EQ(calls.write(caller, *file, Bytes{1, 0, 0, 0}).result, -ENOSPC);
    EXPECT_EQ(property("daemon.commands"), "");
    EXPECT_EQ(calls.write(caller, *file, Bytes{1, 0, 0, 0}).result, 4);
    EXPECT_EQ(unit.journal().entries().back().text(), "/tmp/hxauxd.fifo write: 01 00 00 00");
}

TEST_F(CallsTest, OfTheBoardLibrarysNodeStayOutOfTheJournal)
{
    const auto file = open("/dev/.hxsim-jida");
    EXPECT_EQ(calls.write(caller, *file, Bytes(3)).result, -EINVAL);
    calls.close(caller, *file);

    EXPECT_EQ(journal(), "");
}

TEST_F(CallsTest, NoteWhatIsNoCallOnANode)
{
    calls.note(caller, "sleep", "100 ms", {}, EINTR);

    EXPECT_EQ(journal(), "sleep 100 ms !EINTR\n");
    EXPECT_EQ(unit.journal().entries().back().caller.process, 7);
}

TEST_F(CallsTest, KnowWhatIsPresent)
{
    EXPECT_TRUE(calls.present("/dev/backlight"));
    EXPECT_TRUE(calls.present("libjida.so"));
    unit.describe("absent = /dev/backlight\nabsent = libjida.so");
    EXPECT_FALSE(calls.present("/dev/backlight"));
    EXPECT_FALSE(calls.present("libjida.so"));
}

TEST_F(CallsTest, KnowTheShapeOfARequest)
{
    const auto file = open("/dev/buzzer");

    EXPECT_EQ(calls.shape(*file, 0x40010041)->takes, 4U);
    EXPECT_EQ(calls.shape(*file, 0x8004003E)->gives, 4U);
    EXPECT_FALSE(calls.shape(*file, 0x80010002));
}

} // namespace

} // namespace calls_test
