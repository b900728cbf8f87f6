// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/SimulatedUnit.h"
#include "upgrade/STM32/serial_posix.h"

#include <memory>
#include <termios.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr char kPort[] = "/dev/ttyS0";

struct Close {
    void operator()(serial_port* h) const { serial_close(h); }
};
using Port = std::unique_ptr<serial_port, Close>;

int setUp(const Port& port, unsigned baud = SERIAL_BAUD_115200, unsigned bits = SERIAL_BITS_8,
          unsigned parity = SERIAL_PARITY_EVEN, unsigned stop = SERIAL_STOP_1)
{
    return serial_setup(port.get(), baud, bits, parity, stop);
}

/// The set-up of the port after opening it again.
std::string settingsAfter(SimulatedUnit& unit, unsigned baud, unsigned bits, unsigned parity, unsigned stop)
{
    const Port port{serial_open(kPort)};
    unit.clearJournal();
    EXPECT_EQ(setUp(port, baud, bits, parity, stop), SERIAL_OK);
    return unit.callsTo(kPort).at(1);
}

} // namespace

TEST(SerialPort, IsOpenedWithoutBecomingTheControllingTerminal)
{
    SimulatedUnit unit;

    const Port port{serial_open(kPort)};

    ASSERT_NE(port, nullptr);
    EXPECT_THAT(unit.callsTo(kPort), ElementsAre("open rdwr nonblock noctty", "tcgetattr"));
}

TEST(SerialPort, IsNullWhenItCannotBeOpened)
{
    SimulatedUnit unit{"absent = /dev/ttyS0"};

    EXPECT_EQ(serial_open(kPort), nullptr);
}

TEST(SerialPort, IsSetUpRawWithATimeLimitOfThreeSeconds)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    unit.clearJournal();

    EXPECT_EQ(setUp(port), SERIAL_OK);

    EXPECT_THAT(unit.callsTo(kPort),
                ElementsAre("tcflush input", "tcsetattr now 115200 8e1 vmin 0 vtime 30", "tcgetattr"));
}

TEST(SerialPort, TakesEveryRate)
{
    SimulatedUnit unit;
    const char* const rates[] = {"1200 ",  "2400 ",  "4800 ",   "9600 ",  "19200 ",
                                 "38400 ", "57600 ", "115200 ", "230400 "};
    for (unsigned baud = 0; baud < 9; ++baud)
        EXPECT_THAT(settingsAfter(unit, baud, SERIAL_BITS_8, SERIAL_PARITY_EVEN, SERIAL_STOP_1),
                    HasSubstr(rates[baud]));
}

TEST(SerialPort, TakesEveryParityAndStop)
{
    SimulatedUnit unit;

    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_8, SERIAL_PARITY_NONE, SERIAL_STOP_1), HasSubstr(" 8n1 "));
    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_8, SERIAL_PARITY_ODD, SERIAL_STOP_1), HasSubstr(" 8o1 "));
    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_8, SERIAL_PARITY_NONE, SERIAL_STOP_2), HasSubstr(" 8n2 "));
}

TEST(SerialPort, TakesEveryCharacterSizeWithoutParity)
{
    SimulatedUnit unit;

    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_5, SERIAL_PARITY_NONE, SERIAL_STOP_1), HasSubstr(" 5n1 "));
    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_6, SERIAL_PARITY_NONE, SERIAL_STOP_1), HasSubstr(" 6n1 "));
    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_7, SERIAL_PARITY_NONE, SERIAL_STOP_1), HasSubstr(" 7n1 "));
}

TEST(SerialPort, GetsOneBitMoreWithParityAndFiveOrSevenBits)
{
    SimulatedUnit unit;

    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_5, SERIAL_PARITY_EVEN, SERIAL_STOP_1), HasSubstr(" 6e1 "));
    EXPECT_THAT(settingsAfter(unit, 7, SERIAL_BITS_7, SERIAL_PARITY_ODD, SERIAL_STOP_1), HasSubstr(" 8o1 "));
}

TEST(SerialPort, RefusesParametersOutsideTheirTablesInTheirOrder)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    unit.clearJournal();

    EXPECT_EQ(setUp(port, 9, 4, 3, 2), SERIAL_INVALID_BAUD);
    EXPECT_EQ(setUp(port, 8, 4, 3, 2), SERIAL_INVALID_BITS);
    EXPECT_EQ(setUp(port, 8, 3, 3, 2), SERIAL_INVALID_PARITY);
    EXPECT_EQ(setUp(port, 8, 3, 2, 2), SERIAL_INVALID_STOP);

    EXPECT_THAT(unit.callsTo(kPort), IsEmpty());
}

TEST(SerialPort, IsNotTouchedByASecondIdenticalSetUp)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port), SERIAL_OK);
    unit.clearJournal();

    EXPECT_EQ(setUp(port), SERIAL_OK);

    EXPECT_THAT(unit.callsTo(kPort), IsEmpty());
}

TEST(SerialPort, KeepsOddParityAndTwoStopBitsInALaterSetUp)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port, 7, 3, SERIAL_PARITY_ODD, SERIAL_STOP_2), SERIAL_OK);
    unit.clearJournal();

    ASSERT_EQ(setUp(port, 7, 3, SERIAL_PARITY_EVEN, SERIAL_STOP_1), SERIAL_OK);

    EXPECT_THAT(unit.callsTo(kPort), Contains(HasSubstr(" 8o2 ")));
}

TEST(SerialPort, ReportsThatTheSettingsCouldNotBeApplied)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    unit.fail(kPort, "tcsetattr", EIO, 1);

    EXPECT_EQ(setUp(port), SERIAL_SYSTEM_CALL_FAILED);
    EXPECT_EQ(setUp(port), SERIAL_OK) << "a failed set-up does not count as done";
}

TEST(SerialPort, ReportsThatThePortReadsBackOtherSettings)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    unit.fail(kPort, "tcgetattr", EIO, 1);

    EXPECT_EQ(setUp(port), SERIAL_SETTINGS_NOT_TAKEN);
}

TEST(SerialPort, RestoresItsEarlierSettingsAtClose)
{
    SimulatedUnit unit;
    serial_port* port = serial_open(kPort);
    ASSERT_EQ(serial_setup(port, SERIAL_BAUD_115200, SERIAL_BITS_8, SERIAL_PARITY_EVEN, SERIAL_STOP_1), SERIAL_OK);
    unit.clearJournal();

    serial_close(port);

    EXPECT_THAT(unit.callsTo(kPort),
                ElementsAre("tcflush input", testing::StartsWith("tcsetattr now 9600 8n1"), "close"));
}

TEST(SerialPort, WritesEverythingInOneCall)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port), SERIAL_OK);
    unit.clearJournal();

    EXPECT_EQ(serial_write(port.get(), "\x01\x02\x03", 3), SERIAL_OK);

    EXPECT_THAT(unit.callsTo(kPort), ElementsAre("write: 01 02 03"));
}

TEST(SerialPort, ReportsThatNothingCameWithinThreeSeconds)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port), SERIAL_OK);
    const auto before = unit.now();
    char byte = 'x';

    EXPECT_EQ(serial_read(port.get(), &byte, 1), SERIAL_NO_DATA);

    EXPECT_EQ(unit.now() - before, 3000);
    EXPECT_EQ(byte, 'x');
}

TEST(SerialPort, ReportsThatASystemCallFailed)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port), SERIAL_OK);
    char byte = 0;
    unit.fail(kPort, "read", EIO, 1);
    unit.fail(kPort, "write", EIO, 1);

    EXPECT_EQ(serial_read(port.get(), &byte, 1), SERIAL_SYSTEM_CALL_FAILED);
    EXPECT_EQ(serial_write(port.get(), &byte, 1), SERIAL_SYSTEM_CALL_FAILED);
}

TEST(SerialPort, ContinuesAfterASignal)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    ASSERT_EQ(setUp(port), SERIAL_OK);
    char byte = 0;
    unit.fail(kPort, "read", EINTR, 3);
    unit.fail(kPort, "write", EINTR, 3);

    EXPECT_EQ(serial_write(port.get(), "\x01", 1), SERIAL_OK);
    EXPECT_EQ(serial_read(port.get(), &byte, 1), SERIAL_NO_DATA);

    EXPECT_THAT(unit.callsTo(kPort), testing::Contains("write: 01"));
}

TEST(SerialPort, IsFlushedOfInput)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    unit.clearJournal();

    EXPECT_EQ(serial_flush(port.get()), 0);

    EXPECT_THAT(unit.callsTo(kPort), ElementsAre("tcflush input"));
}

TEST(SerialPort, HasAnEmptySetUpText)
{
    EXPECT_STREQ(serial_get_setup_str(), "");
}

TEST(SerialPortDeathTest, AbortsWithoutAPort)
{
    EXPECT_DEATH(serial_close(nullptr), "h && h->fd > -1");
    EXPECT_DEATH(serial_flush(nullptr), "h && h->fd > -1");
    EXPECT_DEATH(serial_setup(nullptr, 9, 4, 3, 2), "h && h->fd > -1");
    EXPECT_DEATH((void)serial_read(nullptr, nullptr, 0), "h && h->fd > -1 && h->configured");
}

TEST(SerialPortDeathTest, AbortsWhenAPortIsUsedBeforeItIsSetUp)
{
    SimulatedUnit unit;
    const Port port{serial_open(kPort)};
    char byte = 0;

    EXPECT_DEATH((void)serial_read(port.get(), &byte, 1), "h && h->fd > -1 && h->configured");
    EXPECT_DEATH((void)serial_write(port.get(), &byte, 1), "h && h->fd > -1 && h->configured");
}
