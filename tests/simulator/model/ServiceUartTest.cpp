// SPDX-License-Identifier: LicenseRef-HXAux
// The wire of the service UART: what passes, when, and what a read waits for. The other end is the supervisor's
// bootloader, which answers 0x79 to its first 0x7F.
#include "simulator/model/ServiceUart.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace service_uart_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

/// A byte of eight bits, even parity, a start and a stop bit at 115200 baud.
constexpr Time kByte{95486};

class ServiceUartTest : public modeltest::ModelTest {
protected:
    ServiceUart& uart = unit.get<ServiceUart>();
    Node& port = node("/dev/ttyS0");
    std::unique_ptr<OpenFile> file = port.open(O_RDWR);
    LineSettings line{115200, 8, 'e', 1, 0, 30, false};

    void SetUp() override
    {
        ASSERT_EQ(put("/dev/uart-redir", 0x4001004C, {0x96}), 0);
        ASSERT_EQ(put("/dev/uart-redir", 0x4001004B, {1}), 0);
        port.setLine(line);
    }
    void send(const Bytes& bytes)
    {
        EXPECT_EQ(port.write(*file, bytes).result, static_cast<std::int64_t>(bytes.size()));
    }
    Outcome read(std::size_t size, Time started)
    {
        Bytes out(size);
        const Outcome outcome = port.read(*file, out, started);
        got.assign(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(std::max<std::int64_t>(outcome.result, 0)));
        return outcome;
    }
    bool isReadable() { return port.readable(*file, unit.clock().now()); }

    Bytes got{};
};

TEST_F(ServiceUartTest, TakesTheTimeOfElevenBitsInEachDirection)
{
    send({0x7F});

    pass(2 * kByte - 1ns);
    EXPECT_FALSE(isReadable());
    pass(1ns);
    EXPECT_TRUE(isReadable());
    (void)read(10, unit.clock().now());
    EXPECT_EQ(got, Bytes{0x79});
}

TEST_F(ServiceUartTest, TakesNoTimeWhenItIsNotPaced)
{
    set("uart.paced", "off");

    send({0x7F});

    EXPECT_TRUE(isReadable());
}

TEST_F(ServiceUartTest, DrainsWhenTheLastByteHasLeft)
{
    send({0x7F, 0x00});
    const Outcome draining = port.drain();
    EXPECT_TRUE(draining.waits);
    EXPECT_EQ(draining.wakeAt, 2 * kByte);

    pass(2 * kByte);
    EXPECT_FALSE(port.drain().waits);
}

TEST_F(ServiceUartTest, WaitsForItsTimeInTenthsOfASecondAndGivesNothingThen)
{
    const Outcome waiting = read(1, 0ns);
    EXPECT_TRUE(waiting.waits);
    EXPECT_EQ(waiting.wakeAt, Time{3s});

    pass(3s);
    const Outcome over = read(1, 0ns);
    EXPECT_FALSE(over.waits);
    EXPECT_EQ(over.result, 0);
}

TEST_F(ServiceUartTest, GivesAtOnceWhatIsThere)
{
    send({0x7F, 0x00, 0xFF});
    pass(1s);

    EXPECT_EQ(read(3, unit.clock().now()).result, 3);
    EXPECT_EQ(got, (Bytes{0x79, 0x79, 0x0B})) << "the rest of the answer stays";
    EXPECT_EQ(read(100, unit.clock().now()).result, 13);
}

TEST_F(ServiceUartTest, WaitsForAsManyBytesAsAreWanted)
{
    line.vmin = 2;
    port.setLine(line);
    send({0x7F});
    pass(1s);

    EXPECT_FALSE(isReadable());
    const Outcome waiting = read(10, 0ns);
    EXPECT_TRUE(waiting.waits);
    EXPECT_EQ(waiting.wakeAt, std::nullopt);
    EXPECT_EQ(read(1, 0ns).result, 1) << "who asks for one gets it";
}

TEST_F(ServiceUartTest, ForgetsWhatCameWhenItsInputIsFlushed)
{
    send({0x7F});
    pass(1s);
    port.flush(false, true);
    EXPECT_TRUE(isReadable()) << "that was the output";

    port.flush(true, false);
    EXPECT_FALSE(isReadable());
}

TEST_F(ServiceUartTest, LosesTheByteTowardsTheTargetThatItWasAskedToLose)
{
    set("uart.drop-to-target", "2");
    send({0x7F, 0x00, 0x00, 0xFF});
    pass(1s);

    EXPECT_EQ(read(100, 0ns).result, 16) << "as if the second byte had not been sent";
    EXPECT_EQ(property("uart.drop-to-target"), "0");
}

TEST_F(ServiceUartTest, LosesTheByteTowardsTheUnitThatItWasAskedToLose)
{
    set("uart.drop-to-unit", "2");
    send({0x7F, 0x00, 0xFF});
    pass(1s);

    EXPECT_EQ(read(100, 0ns).result, 15);
    EXPECT_EQ(got[0], 0x79);
    EXPECT_EQ(got[1], 0x0B) << "without the acknowledgement of the command";
}

TEST_F(ServiceUartTest, LosesTheNextByteByAnAction)
{
    act("drop", {"serial"});
    send({0x7F});
    pass(1s);

    EXPECT_FALSE(isReadable());
    EXPECT_EQ(refusalOfAct("drop", {}), "drop serial");
    EXPECT_EQ(refusalOfAct("drop", {"parallel"}), "drop serial");
}

struct Settings : Named {
    LineSettings line;
    bool understood;
};

class LineOfTheServiceUart : public ServiceUartTest, public hxtest::WithRow<Settings> {};

ROW_TEST(LineOfTheServiceUart, IsUnderstoodAsTheBootloaderListens)
{
    port.setLine(row().line);
    send({0x7F});
    pass(1s);

    EXPECT_EQ(isReadable(), row().understood);
}

TEST_ROWS(ServiceUart, LineOfTheServiceUart, kNameOfRow, Settings{{"Usual"}, {115200, 8, 'e', 1, 0, 30, false}, true},
          Settings{{"Slowest"}, {1200, 8, 'e', 1, 0, 30, false}, true},
          Settings{{"TooFast"}, {230400, 8, 'e', 1, 0, 30, false}, false},
          Settings{{"NoParity"}, {115200, 8, 'n', 1, 0, 30, false}, false},
          Settings{{"OddParity"}, {115200, 8, 'o', 1, 0, 30, false}, false},
          Settings{{"SevenBits"}, {115200, 7, 'e', 1, 0, 30, false}, false});

} // namespace

} // namespace service_uart_test
