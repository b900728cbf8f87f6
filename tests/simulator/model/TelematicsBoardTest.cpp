// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/TelematicsBoard.h"

#include <gmock/gmock.h>

#include <array>

namespace telematics_board_test {

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

constexpr std::uint8_t kExpander = 0x40;

/// A unit whose expander is set up as the library does it; time passes as the test says.
class Board {
public:
    Board()
    {
        write(GpioExpander::kDirections, 0xFC);
        write(GpioExpander::kPins, 0x00);
    }

    void write(std::uint8_t reg, std::uint8_t value)
    {
        const std::array<std::uint8_t, 2> bytes{reg, value};
        EXPECT_TRUE(unit.i2c().transfer(kExpander, bytes, {}).acknowledged);
    }

    std::uint8_t read(std::uint8_t reg)
    {
        std::array<std::uint8_t, 1> value{};
        EXPECT_TRUE(unit.i2c().transfer(kExpander, std::array{reg}, value).acknowledged);
        return value[0];
    }

    void pass(Time time) { unit.clock().advanceTo(unit.clock().now() + time); }

    void press(Time time)
    {
        write(GpioExpander::kPins, 0x01);
        pass(time);
        write(GpioExpander::kPins, 0x00);
        pass(1s);
    }

    std::string get(const std::string& property) { return unit.properties().get(property); }

    Unit unit;
};

} // namespace

TEST(TelematicsBoard, BeginsWithAllPinsAsInputs)
{
    Unit unit;

    EXPECT_EQ(unit.properties().get("expander.directions"), "255");
    EXPECT_EQ(unit.properties().get("telematics.wlan"), "off");
}

TEST(TelematicsBoard, TheGsmModuleWantsItsKeyForASecondToSwitchOn)
{
    Board board;

    board.press(900ms);
    EXPECT_EQ(board.get("telematics.gsm"), "off");

    board.press(1100ms);
    EXPECT_EQ(board.get("telematics.gsm"), "on");
}

TEST(TelematicsBoard, TheGsmModuleWantsItsKeyForTwoSecondsToSwitchOff)
{
    Board board;
    board.press(1100ms);

    board.press(1900ms);
    EXPECT_EQ(board.get("telematics.gsm"), "on");

    board.press(2100ms);
    EXPECT_EQ(board.get("telematics.gsm"), "off");
}

TEST(TelematicsBoard, OnePressSwitchesOnceHoweverLongItIs)
{
    Board board;

    board.press(10s);

    EXPECT_EQ(board.get("telematics.gsm"), "on");
}

TEST(TelematicsBoard, ShortPressesDoNotAddUp)
{
    Board board;

    for (int i = 0; i < 5; ++i)
        board.press(600ms);

    EXPECT_EQ(board.get("telematics.gsm"), "off");
}

TEST(TelematicsBoard, AModuleThatIsNotFittedIgnoresItsKey)
{
    Board board;
    board.unit.describe("do = forget addon GSM");

    board.press(1100ms);

    EXPECT_EQ(board.get("telematics.gsm"), "off");
}

TEST(TelematicsBoard, OnlyNewBoardsHaveTheStatusLine)
{
    Board board;
    board.press(1100ms);
    EXPECT_EQ(board.read(GpioExpander::kPins) & 0x04, 0x04);

    board.unit.describe("eeprom.addon.PCB_REV = A");

    EXPECT_EQ(board.read(GpioExpander::kPins) & 0x04, 0);
}

TEST(TelematicsBoard, AKeyThatIsAnInputPressesNothing)
{
    Board board;
    board.write(GpioExpander::kDirections, 0xFD);

    board.press(1100ms);

    EXPECT_EQ(board.get("telematics.gsm"), "off");
}

TEST(TelematicsBoard, WlanNeedsPowerAndItsAuxiliaryLineLow)
{
    Board board;
    board.write(GpioExpander::kPins, 0x02);
    EXPECT_EQ(board.get("telematics.wlan-power"), "on");
    EXPECT_EQ(board.get("telematics.wlan"), "off");

    board.write(GpioExpander::kDirections, 0x7C);

    EXPECT_EQ(board.get("telematics.wlan"), "on");
}

TEST(GpioExpander, WritingPinsSetsTheLatchAndReadingThemMixesInputs)
{
    Board board;
    board.unit.properties().set("telematics.antenna-short", "on");

    board.write(GpioExpander::kPins, 0xF3);

    EXPECT_EQ(board.read(GpioExpander::kLatch), 0xF3);
    EXPECT_EQ(board.read(GpioExpander::kPins), 0x8B) << "outputs 0 and 1, antenna, pulled-up auxiliary line";
}

TEST(GpioExpander, ContinuesWithTheNextRegister)
{
    Board board;
    const std::array<std::uint8_t, 3> bytes{1, 0x11, 0x22};
    board.unit.i2c().transfer(kExpander, bytes, {});

    std::array<std::uint8_t, 3> read{};
    board.unit.i2c().transfer(kExpander, std::array<std::uint8_t, 1>{0}, read);

    EXPECT_THAT(read, testing::ElementsAre(0xFC, 0x11, 0x22));
}

} // namespace telematics_board_test
