// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that are passed on to this machine: to a file and a terminal that stand in for devices.
#include "simulator/record/MachineCalls.h"

#include "testing/FileContent.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <array>
#include <iterator>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace machine_calls_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

constexpr Caller kCaller{1, 1};
constexpr auto kFirst = Calls::Attempt::First;

class MachineCallsTest : public modeltest::ModelTest {
protected:
    std::unique_ptr<OpenFile> open(const std::string& path, int flags = O_RDWR)
    {
        return calls.open(kCaller, unit.addNode(path), flags).file;
    }

    MachineCalls calls{unit};
    const TemporaryFolder folder{};
};

TEST_F(MachineCallsTest, ReachesTheFileOfTheMachine)
{
    const std::string path = folder.file("device", "old");
    const auto file = open(path);
    ASSERT_NE(file, nullptr);
    Bytes read(10);

    EXPECT_EQ(calls.read(kCaller, *file, read, 0s, kFirst).result, 3);
    EXPECT_EQ(std::string(read.begin(), read.begin() + 3), "old");
    EXPECT_EQ(calls.write(kCaller, *file, Bytes{'n', 'e', 'w'}).result, 3);
    EXPECT_EQ(fileContent(path), "oldnew");
}

TEST_F(MachineCallsTest, PassesErrorsOn)
{
    const std::string path = folder.file("device", "x");
    Node& missing = unit.addNode(folder / "missing");
    const auto readOnly = open(path, O_RDONLY);
    ASSERT_NE(readOnly, nullptr);

    EXPECT_EQ(calls.open(kCaller, missing, O_RDWR).error, ENOENT);
    EXPECT_EQ(calls.write(kCaller, *readOnly, Bytes{1}).result, -EBADF);
    EXPECT_EQ(calls.ioctl(kCaller, *readOnly, TCGETS, {}, {}), -ENOTTY);
}

TEST_F(MachineCallsTest, ClosesOnceAndForAll)
{
    const auto file = open(folder.file("device", "x"));
    ASSERT_NE(file, nullptr);

    calls.close(kCaller, *file, Calls::Closing::ByProgram);

    EXPECT_EQ(calls.write(kCaller, *file, Bytes{1}).result, -EBADF);
    calls.close(kCaller, *file, Calls::Closing::WithProgram);
}

TEST_F(MachineCallsTest, HasTheDevicesThatTheMachineHas)
{
    const std::string path = folder / "device";
    (void)unit.addNode(path);

    EXPECT_FALSE(calls.present(path));
    (void)folder.file("device", "x");
    EXPECT_TRUE(calls.present(path));
    EXPECT_TRUE(calls.present("/opt/etc/hxaux.ini")) << "the unit's own files can be made";
}

TEST_F(MachineCallsTest, WaitsInsteadOfBlocking)
{
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    const auto file = open(folder / "fifo");
    ASSERT_NE(file, nullptr);
    Bytes read(10);

    const Outcome waiting = calls.read(kCaller, *file, read, 0s, kFirst);
    EXPECT_FALSE(calls.readable(*file));
    ASSERT_EQ(calls.write(kCaller, *file, Bytes{7}).result, 1);

    EXPECT_TRUE(waiting.waits);
    EXPECT_EQ(waiting.wakeAt, Time{1ms});
    EXPECT_TRUE(calls.readable(*file));
    EXPECT_EQ(calls.read(kCaller, *file, read, 0s, Calls::Attempt::Again).result, 1);
    EXPECT_EQ(read[0], 7);
}

struct Code : Named {
    std::uint32_t code;
    std::size_t takes;
    std::size_t gives;
};

class UnknownRequest : public MachineCallsTest, public hxtest::WithRow<Code> {};

ROW_TEST(UnknownRequest, HasTheShapeThatItsNumberDeclares)
{
    const auto file = open(folder.file("device", "x"));
    ASSERT_NE(file, nullptr);

    const std::optional<Node::Shape> shape = calls.shape(*file, row().code);

    ASSERT_TRUE(shape.has_value());
    EXPECT_EQ(shape->takes, row().takes);
    EXPECT_EQ(shape->gives, row().gives);
}

TEST_ROWS(That, UnknownRequest, kNameOfRow, Code{"Reads", _IOC(_IOC_READ, 'x', 1, 12), 0, 12},
          Code{"Writes", _IOC(_IOC_WRITE, 'x', 1, 7), 7, 0},
          Code{"DoesBoth", _IOC(_IOC_READ | _IOC_WRITE, 'x', 1, 4), 4, 4},
          Code{"DoesNothing", _IOC(_IOC_NONE, 'x', 1, 0), 0, 0},
          Code{"IsLargerThanAnyBlock", _IOC(_IOC_READ, 'x', 1, 16383), 0, 4096});

TEST(KnownRequest, KeepsTheShapeOfItsDriver)
{
    Unit unit;
    MachineCalls calls{unit};
    OpenFile file{*unit.findNode("/dev/backlight"), O_RDWR};

    EXPECT_EQ(calls.shape(file, 0x40010003)->takes, 2U) << "one more than its number declares";
}

// A serial port of the machine, with its other end.
class MachineSerialPort : public MachineCallsTest {
protected:
    MachineSerialPort()
    {
        int slave = -1;
        std::array<char, 64> name{};
        termios raw{};
        cfmakeraw(&raw);
        EXPECT_EQ(openpty(&peer, &slave, name.data(), &raw, nullptr), 0);
        Node& node = unit.addNode(name.data());
        node.serialLine([](const LineSettings&) {}, [](bool, bool) {}, [] { return Outcome{}; });
        file = calls.open(kCaller, node, O_RDWR).file;
        close(slave);
    }
    ~MachineSerialPort() override
    {
        file.reset();
        close(peer);
    }

    void setTimes(std::uint8_t vmin, std::uint8_t vtime)
    {
        LineSettings line;
        line.canonical = false;
        line.vmin = vmin;
        line.vtime = vtime;
        calls.setLine(*file, line);
    }
    // Until the machine has them: it passes them on in its own time.
    void send(const std::string& text)
    {
        const std::uint32_t before = waiting();
        ASSERT_EQ(::write(peer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        while (waiting() < before + text.size())
            std::this_thread::yield();
    }
    std::uint32_t waiting()
    {
        Bytes out(4);
        EXPECT_EQ(calls.ioctl(kCaller, *file, FIONREAD, {}, out), 0);
        return out[0] + 256U * out[1];
    }
    // Of a read that begins now; "waits" while it is not over.
    std::string read(std::size_t size, Time started)
    {
        Bytes bytes(size);
        const Outcome outcome = calls.read(kCaller, *file, bytes, started, kFirst);
        if (outcome.waits)
            return "waits";
        return outcome.result < 0
                   ? "fails"
                   : std::string(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(outcome.result));
    }
    // The same at a later time of the unit.
    std::string readAt(Time time, std::size_t size, Time started)
    {
        unit.clock().advanceTo(time);
        return read(size, started);
    }

    int peer = -1;
    std::unique_ptr<OpenFile> file{};
};

TEST_F(MachineSerialPort, WaitsForAByte)
{
    setTimes(1, 0);
    EXPECT_EQ(read(10, 0s), "waits");

    send("ab");

    EXPECT_EQ(read(10, 0s), "ab");
    EXPECT_EQ(read(10, 0s), "waits");
}

TEST_F(MachineSerialPort, WaitsForAsManyBytesAsItIsSet)
{
    setTimes(3, 0);
    send("ab");
    EXPECT_EQ(read(10, 0s), "waits");

    send("c");

    EXPECT_EQ(read(10, 0s), "abc");
}

TEST_F(MachineSerialPort, WaitsForNoMoreThanTheReadWants)
{
    setTimes(5, 0);
    send("abc");

    EXPECT_EQ(read(2, 0s), "ab");
    EXPECT_EQ(read(1, 0s), "c");
}

TEST_F(MachineSerialPort, ReturnsAtOnceWhenNothingIsWaitedFor)
{
    setTimes(0, 0);

    EXPECT_EQ(read(10, 0s), "");
}

TEST_F(MachineSerialPort, ReturnsAfterItsTimeWithoutAByte)
{
    setTimes(0, 2);

    EXPECT_EQ(readAt(0s, 10, 0s), "waits");
    EXPECT_EQ(readAt(199ms, 10, 0s), "waits");
    EXPECT_EQ(readAt(200ms, 10, 0s), "");
}

TEST_F(MachineSerialPort, ReturnsWithAByteBeforeItsTime)
{
    setTimes(0, 2);
    EXPECT_EQ(readAt(0s, 10, 0s), "waits");

    send("a");

    EXPECT_EQ(readAt(100ms, 10, 0s), "a");
}

TEST_F(MachineSerialPort, ReturnsWhatHasComeWhenNoMoreFollows)
{
    setTimes(5, 1);
    EXPECT_EQ(readAt(10s, 10, 0s), "waits") << "for the first byte, however long";
    send("ab");

    EXPECT_EQ(readAt(10s, 10, 0s), "waits");
    EXPECT_EQ(readAt(10s + 99ms, 10, 0s), "waits");
    EXPECT_EQ(readAt(10s + 100ms, 10, 0s), "ab");
    EXPECT_EQ(readAt(20s, 10, 20s), "waits") << "the next read waits for its own first byte";
}

TEST_F(MachineSerialPort, IsReadableWhileItHoldsBytesThatNobodyHasTaken)
{
    setTimes(3, 0);
    EXPECT_FALSE(calls.readable(*file));

    send("ab");
    EXPECT_EQ(read(10, 0s), "waits");

    EXPECT_TRUE(calls.readable(*file)) << "they are here, and not in the machine any more";
}

TEST_F(MachineSerialPort, WritesAndDrainsToItsOtherEnd)
{
    EXPECT_EQ(calls.write(kCaller, *file, Bytes{'x', '\n'}).result, 2);
    std::array<char, 10> got{};

    EXPECT_EQ(::read(peer, got.data(), got.size()), 2);
    EXPECT_EQ(calls.drain(*file).result, 0);
}

TEST_F(MachineSerialPort, DiscardsWhatHasComeButWasNotRead)
{
    setTimes(1, 0);
    send("ab");
    EXPECT_TRUE(calls.readable(*file));

    calls.flush(*file, true, false);

    EXPECT_EQ(read(10, 0s), "waits");
}

TEST_F(MachineSerialPort, DiscardsWhatAReadHadCollected)
{
    setTimes(3, 0);
    send("ab");
    EXPECT_EQ(read(10, 0s), "waits");

    calls.flush(*file, true, false);
    send("c");

    EXPECT_EQ(read(10, 0s), "waits") << "for three bytes from now on";
}

TEST_F(MachineSerialPort, SetsTheLineOfTheMachine)
{
    LineSettings line;
    line.baud = 115200;
    line.stopBits = 2;
    line.canonical = false;
    line.vmin = 4;
    line.vtime = 3;

    calls.setLine(*file, line);

    termios now{};
    ASSERT_EQ(tcgetattr(peer, &now), 0);
    EXPECT_EQ(cfgetospeed(&now), speed_t{B115200});
    EXPECT_NE(now.c_cflag & CSTOPB, 0U);
    EXPECT_EQ(now.c_cc[VMIN], 4);
    EXPECT_EQ(now.c_cc[VTIME], 3);
}

TEST_F(MachineSerialPort, AnswersRequestsOfTheMachine)
{
    Bytes out(4);
    EXPECT_EQ(calls.ioctl(kCaller, *file, TIOCEXCL, {}, {}), 0);

    EXPECT_EQ(calls.ioctl(kCaller, *file, TIOCGEXCL, {}, out), 0);
    EXPECT_EQ(out, (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(calls.ioctl(kCaller, *file, TIOCNXCL, {}, {}), 0);
}

} // namespace machine_calls_test
