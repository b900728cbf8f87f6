// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/file/Terminal.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace terminal_test {

using namespace hxsim;
using modeltest::Bytes;

namespace {

struct Control : Named {
    tcflag_t flags;
    int dataBits;
    char parity;
    int stopBits;
};

class LineOfATerminal : public hxtest::TestWithRow<Control> {};

ROW_TEST(LineOfATerminal, IsWhatItsFlagsSay)
{
    termios settings{};
    settings.c_cflag = row().flags;

    const LineSettings line = lineOf(settings);

    EXPECT_EQ(line.dataBits, row().dataBits);
    EXPECT_EQ(line.parity, row().parity);
    EXPECT_EQ(line.stopBits, row().stopBits);
}

TEST_ROWS(Terminal, LineOfATerminal, kNameOfRow, Control{{"Usual"}, CS8, 8, 'n', 1},
          Control{{"Even"}, CS8 | PARENB, 8, 'e', 1}, Control{{"Odd"}, CS8 | PARENB | PARODD, 8, 'o', 1},
          Control{{"OddWithoutParity"}, CS8 | PARODD, 8, 'n', 1}, Control{{"TwoStopBits"}, CS8 | CSTOPB, 8, 'n', 2},
          Control{{"Seven"}, CS7, 7, 'n', 1}, Control{{"Six"}, CS6, 6, 'n', 1}, Control{{"Five"}, CS5, 5, 'n', 1},
          Control{{"ParityWithABitOfTheSize"}, CS8 | 0x110, 8, 'e', 1});

struct Baud : Named {
    speed_t code;
    std::uint32_t baud;
};

class BaudOfATerminal : public hxtest::TestWithRow<Baud> {};

ROW_TEST(BaudOfATerminal, IsANumber)
{
    termios settings{};
    cfsetospeed(&settings, row().code);

    EXPECT_EQ(lineOf(settings).baud, row().baud);
}

ROW_TEST(BaudOfATerminal, ComesBackAsItsCode)
{
    termios settings{};
    setLineOf(settings, LineSettings{.baud = row().baud});

    EXPECT_EQ(cfgetospeed(&settings), row().code);
    EXPECT_EQ(cfgetispeed(&settings), row().code);
}

TEST_ROWS(Terminal, BaudOfATerminal, kNameOfRow, Baud{{"B1200"}, B1200, 1200}, Baud{{"B2400"}, B2400, 2400},
          Baud{{"B4800"}, B4800, 4800}, Baud{{"B9600"}, B9600, 9600}, Baud{{"B19200"}, B19200, 19200},
          Baud{{"B38400"}, B38400, 38400}, Baud{{"B57600"}, B57600, 57600}, Baud{{"B115200"}, B115200, 115200},
          Baud{{"B230400"}, B230400, 230400});

TEST(Terminal, IsAtFirstAsAFreshPortIs)
{
    const LineSettings line = lineOf(freshTerminal());

    EXPECT_EQ(line, (LineSettings{9600, 8, 'n', 1, 1, 0, true}));
    EXPECT_EQ(freshTerminal().c_cflag & (CREAD | CLOCAL), tcflag_t{CREAD | CLOCAL});
}

TEST(Terminal, MakesSettingsThatComeToTheSameLine)
{
    for (const LineSettings& line :
         {LineSettings{115200, 8, 'e', 1, 0, 30, false}, LineSettings{1200, 5, 'o', 2, 7, 1, false},
          LineSettings{57600, 7, 'n', 1, 255, 255, false}}) {
        termios settings = freshTerminal();
        setLineOf(settings, line);
        EXPECT_EQ(lineOf(settings), line);
    }
}

TEST(Terminal, KeepsABaudRateThatHasNoCode)
{
    termios settings{};
    cfsetspeed(&settings, B9600);
    setLineOf(settings, LineSettings{.baud = 31250});

    EXPECT_EQ(cfgetospeed(&settings), speed_t{B9600});
}

TEST(Terminal, IsKeptByItsDeviceAsBytes)
{
    termios settings = freshTerminal();
    settings.c_cc[VTIME] = 30;

    const std::optional<termios> kept = terminalFrom(terminalBytes(settings));
    ASSERT_TRUE(kept);
    EXPECT_EQ(lineOf(*kept), lineOf(settings));
    EXPECT_EQ(kept->c_iflag, settings.c_iflag);
}

TEST(Terminal, IsNotMadeOfBytesOfAnotherSize)
{
    EXPECT_FALSE(terminalFrom({}));
    EXPECT_FALSE(terminalFrom(Bytes(sizeof(termios) - 1)));
    EXPECT_FALSE(terminalFrom(Bytes(sizeof(termios) + 1)));
    EXPECT_TRUE(terminalFrom(Bytes(sizeof(termios))));
}

} // namespace

} // namespace terminal_test
