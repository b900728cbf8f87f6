// SPDX-License-Identifier: LicenseRef-HXAux
// The EEPROM part by itself, and the memory behind it; I2cBusTest.cpp asks it over the bus.
#include "simulator/model/Eeprom.h"

#include "tests/simulator/model/ModelTest.h"

namespace eeprom_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class EepromTest : public testing::Test {
protected:
    Memory memory{Bytes(8192, 0xFF)};
    Eeprom part{memory};

    void write(const Bytes& message) { part.write(message, 0ns); }
    Bytes read(std::size_t offset, std::size_t count)
    {
        write({static_cast<std::uint8_t>(offset >> 8), static_cast<std::uint8_t>(offset)});
        Bytes bytes(count);
        part.read(bytes);
        return bytes;
    }
};

TEST_F(EepromTest, TakesItsOffsetHighByteFirst)
{
    write({0x12, 0x34, 0xAB});

    EXPECT_EQ(memory.bytes[0x1234], 0xAB);
}

TEST_F(EepromTest, LooksAtThirteenBitsOfItsOffset)
{
    write({0xFF, 0xE0, 0xAB});

    EXPECT_EQ(memory.bytes[0x1FE0], 0xAB);
}

TEST_F(EepromTest, WritesAWholePage)
{
    Bytes message{0, 32};
    for (int i = 0; i < 32; ++i)
        message.push_back(static_cast<std::uint8_t>(i));
    write(message);

    EXPECT_EQ(memory.bytes[31], 0xFF);
    EXPECT_EQ(memory.bytes[32], 0);
    EXPECT_EQ(memory.bytes[63], 31);
    EXPECT_EQ(memory.bytes[64], 0xFF);
}

TEST_F(EepromTest, OverwritesThePagesBeginWithWhatIsTooMuch)
{
    Bytes message{0, 0};
    for (int i = 0; i < 34; ++i)
        message.push_back(static_cast<std::uint8_t>(i));
    write(message);

    EXPECT_EQ(memory.bytes[0], 32);
    EXPECT_EQ(memory.bytes[1], 33);
    EXPECT_EQ(memory.bytes[2], 2);
    EXPECT_EQ(memory.bytes[32], 0xFF);
}

TEST_F(EepromTest, ChangesNothingForAnOffsetThatIsCutShort)
{
    write({});
    write({0x00});
    write({0x00, 0x00});

    EXPECT_FALSE(memory.changed);
    EXPECT_TRUE(part.answers(0ns)) << "and is not busy";
}

TEST_F(EepromTest, IsBusyForFiveMillisecondsBehindTheEndOfAWrite)
{
    part.write(Bytes{0, 0, 1}, 2ms);

    EXPECT_FALSE(part.answers(6'999'999ns));
    EXPECT_TRUE(part.answers(7ms));
}

TEST_F(EepromTest, ShowsThatItsMemoryHasChanged)
{
    EXPECT_FALSE(memory.changed);
    write({0, 0, 0xFF});
    EXPECT_TRUE(memory.changed);
    memory.changed = false;
    part.fill(0);
    EXPECT_TRUE(memory.changed);
}

TEST_F(EepromTest, ReadsWithoutAnEnd)
{
    memory.bytes[8191] = 1;
    memory.bytes[0] = 2;

    EXPECT_EQ(read(8191, 2), (Bytes{1, 2}));
}

TEST_F(EepromTest, EndsItsTextAtAZeroOrAnErasedByte)
{
    part.setText("abc");
    EXPECT_EQ(part.text(), "abc");
    memory.bytes[2] = 0;
    EXPECT_EQ(part.text(), "ab");
    part.fill(0xFF);
    EXPECT_EQ(part.text(), "");
    part.fill('x');
    EXPECT_EQ(part.text(), std::string(8192, 'x'));
}

TEST_F(EepromTest, CutsATextThatIsLargerThanThePart)
{
    part.setText(std::string(9000, 'x'));

    EXPECT_EQ(memory.bytes.size(), 8192U);
    EXPECT_EQ(part.text().size(), 8192U);
}

TEST_F(EepromTest, ErasesWhatWasBehindAShorterText)
{
    part.setText("abcdef");
    part.setText("x");

    EXPECT_EQ(memory.bytes[1], 0xFF);
    EXPECT_EQ(memory.bytes[5], 0xFF);
}

class MemoriesTest : public modeltest::ModelTest {};

TEST_F(MemoriesTest, AreTheTwoEeproms)
{
    ASSERT_EQ(unit.memories().size(), 2U);
    EXPECT_EQ(unit.memories().at("eeprom-main").bytes.size(), 8192U);
    EXPECT_EQ(unit.memories().at("eeprom-addon").bytes.size(), 8192U);
}

TEST_F(MemoriesTest, HoldTheProductionTextsOfEach)
{
    act("production", {"addon", "PCB_SERIAL", "X-1"});

    EXPECT_TRUE(unit.memories().at("eeprom-addon").changed);
    EXPECT_EQ(property("eeprom.addon.PCB_SERIAL"), "X-1");
    EXPECT_EQ(property("eeprom.main.PCB_SERIAL"), "M-2031-00417");
}

} // namespace

} // namespace eeprom_test
