// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/I2cBus.h"

#include "simulator/model/Eeprom.h"
#include "simulator/model/ProductionData.h"
#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"

#include <gmock/gmock.h>

#include <array>
#include <numeric>

namespace i2c_bus_test {

using namespace hxsim;
using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A bus with one EEPROM at 0xA0.
struct Board {
    Clock clock;
    I2cBus bus{clock};
    Memory memory{Bytes(Eeprom::kSize, 0xFF), false};
    Eeprom part{memory};

    Board() { bus.attach(0xA0, part); }

    bool write(std::uint16_t offset, const Bytes& data)
    {
        Bytes message{static_cast<std::uint8_t>(offset >> 8), static_cast<std::uint8_t>(offset)};
        message.insert(message.end(), data.begin(), data.end());
        return bus.transfer(0xA0, message, {}).acknowledged;
    }
    Bytes read(std::uint16_t offset, std::size_t count)
    {
        Bytes answer(count);
        const std::array<std::uint8_t, 2> position{static_cast<std::uint8_t>(offset >> 8),
                                                   static_cast<std::uint8_t>(offset)};
        EXPECT_TRUE(bus.transfer(0xA1, position, answer).acknowledged);
        return answer;
    }
    void wait(Time time) { clock.advanceTo(clock.now() + time); }
};

TEST(SimulatedI2c, TakesNineClocksAByteAndOneEachForStartAndStop)
{
    Board board;

    EXPECT_EQ(board.bus.transfer(0xA0, Bytes{0, 0, 1}, {}).end, (4 * 9 + 2) * 10us);
}

TEST(SimulatedI2c, CountsTheSecondAddressOfACombinedTransfer)
{
    Board board;
    Bytes answer(128);

    EXPECT_EQ(board.bus.transfer(0xA0, Bytes{0, 0}, answer).end, ((1 + 2 + 1 + 128) * 9 + 3) * 10us);
}

TEST(SimulatedI2c, FollowsTheBussClock)
{
    Board board;
    board.bus.hertz = 400000;

    EXPECT_EQ(board.bus.transfer(0xA0, Bytes{0, 0, 1}, {}).end, (4 * 9 + 2) * 2500ns);
}

TEST(SimulatedI2c, DelaysATransferUntilThePreviousOneEnds)
{
    Board board;
    const Time first = board.bus.transfer(0xA0, Bytes{0, 0}, {}).end;

    EXPECT_EQ(board.bus.transfer(0xA0, Bytes{0, 0}, {}).end, 2 * first);
}

TEST(SimulatedI2c, EndsAfterTheAddressWithoutAnAcknowledgement)
{
    Board board;
    const I2cBus::Transfer transfer = board.bus.transfer(0x50, Bytes{0, 0, 1}, {});

    EXPECT_FALSE(transfer.acknowledged);
    EXPECT_EQ(transfer.end, 11 * 10us);
}

TEST(SimulatedEeprom, KeepsWhatWasWritten)
{
    Board board;
    ASSERT_TRUE(board.write(0x0123, {1, 2, 3}));
    board.wait(10ms);

    EXPECT_THAT(board.read(0x0122, 5), ElementsAre(0xFF, 1, 2, 3, 0xFF));
    EXPECT_TRUE(board.memory.changed);
}

TEST(SimulatedEeprom, WrapsAWriteInsideItsPage)
{
    Board board;
    Bytes data(33);
    std::iota(data.begin(), data.end(), std::uint8_t{1});
    ASSERT_TRUE(board.write(0x0040 + 30, data));
    board.wait(10ms);

    EXPECT_THAT(board.read(0x0040, 2), ElementsAre(3, 4));
    EXPECT_THAT(board.read(0x0040 + 29, 3), ElementsAre(32, 33, 2)); // the 33rd byte came over the first
    EXPECT_THAT(board.read(0x0060, 1), ElementsAre(0xFF));
}

TEST(SimulatedEeprom, DoesNotAnswerForFiveMillisecondsAfterAWrite)
{
    Board board;
    ASSERT_TRUE(board.write(0, {1}));
    const Time written = (4 * 9 + 2) * 10us;

    board.clock.advanceTo(written + 5ms - 1ns);
    EXPECT_FALSE(board.part.answers(board.clock.now()));
    board.clock.advanceTo(written + 5ms);
    EXPECT_TRUE(board.write(1, {2}));
}

TEST(SimulatedEeprom, AnswersAtOnceAfterAnOffsetAlone)
{
    Board board;
    ASSERT_TRUE(board.write(0x10, {}));

    EXPECT_TRUE(board.write(0x20, {}));
}

TEST(SimulatedEeprom, ContinuesReadingWhereItStopped)
{
    Board board;
    std::iota(board.memory.bytes.begin(), board.memory.bytes.end(), std::uint8_t{0});
    (void)board.read(0x10, 2);
    Bytes next(2);

    ASSERT_TRUE(board.bus.transfer(0xA1, {}, next).acknowledged);

    EXPECT_THAT(next, ElementsAre(0x12, 0x13));
}

TEST(SimulatedEeprom, ReadsOnFromItsStartBehindItsEnd)
{
    Board board;
    board.memory.bytes.front() = 1;
    board.memory.bytes.back() = 2;

    EXPECT_THAT(board.read(Eeprom::kSize - 1, 2), ElementsAre(2, 1));
}

// Production data.

std::string mainText(const char* description)
{
    Unit unit;
    unit.describe(description);
    return unit.get<ProductionData>().main.text();
}

TEST(SimulatedProductionText, CanBeStatedWhole)
{
    EXPECT_EQ(mainText("eeprom.main.text = A:1\\r\\nB:\\x41\\\\\\r\\n"), "A:1\r\nB:A\\\r\n");
}

TEST(SimulatedProductionText, ShowsWhatItTakes)
{
    Unit unit;
    unit.describe("eeprom.addon.text = A:1\\r\\n");

    EXPECT_EQ(unit.properties().get("eeprom.addon.text"), "A:1\\r\\n");
}

TEST(SimulatedProductionText, ChangesOneLine)
{
    EXPECT_EQ(mainText("eeprom.main.text = AB:1\\r\\nB:2\\r\\nC:3\\r\\n\ndo = production main B longer"),
              "AB:1\r\nB:longer\r\nC:3\r\n");
}

TEST(SimulatedProductionText, AddsALine)
{
    EXPECT_EQ(mainText("eeprom.main.text = A:1\\r\\n\ndo = production main B 2"), "A:1\r\nB:2\r\n");
}

TEST(SimulatedProductionText, ForgetsALine)
{
    EXPECT_EQ(mainText("eeprom.main.text = A:1\\r\\nB:2\\r\\n\ndo = forget main A"), "B:2\r\n");
}

TEST(SimulatedProductionText, RefusesToForgetAMissingLine)
{
    EXPECT_THROW(mainText("do = forget main NOTHING"), BadText);
}

TEST(SimulatedProductionText, CanBeErased)
{
    Unit unit;
    unit.describe("do = erase main 0x00");

    EXPECT_THAT(unit.get<ProductionData>().main.bytes(), Each(0));
}

TEST(SimulatedProductionText, OutlastsTheUnitInItsMemory)
{
    Unit unit;
    unit.describe("do = production main UNIT_SERIAL kept");

    const Memory& memory = unit.memories().at("eeprom-main");
    EXPECT_TRUE(memory.changed);
    EXPECT_NE(std::string(memory.bytes.begin(), memory.bytes.begin() + 512).find("UNIT_SERIAL:kept"),
              std::string::npos);
}

} // namespace

} // namespace i2c_bus_test
