// SPDX-License-Identifier: LicenseRef-HXAux
// The expander by itself: eleven registers, of which 0 are the directions, 9 the pins and 10 the latch.
#include "simulator/model/GpioExpander.h"

#include "tests/simulator/model/ModelTest.h"

namespace gpio_expander_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class GpioExpanderTest : public testing::Test {
protected:
    GpioExpander expander;

    void write(const Bytes& message) { expander.write(message, 0ns); }
    Bytes read(std::uint8_t reg, std::size_t count = 1)
    {
        write({reg});
        Bytes bytes(count);
        expander.read(bytes);
        return bytes;
    }
};

TEST_F(GpioExpanderTest, BeginsWithAllPinsAsInputs)
{
    EXPECT_EQ(read(0, 11), (Bytes{0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(GpioExpanderTest, DrivesOutputsFromItsLatch)
{
    write({0, 0xF0});
    write({10, 0xAA});

    EXPECT_EQ(read(9), Bytes{0x0A});
    EXPECT_TRUE(expander.drives(1, true));
    EXPECT_TRUE(expander.drives(0, false));
    EXPECT_FALSE(expander.drives(1, false));
    EXPECT_FALSE(expander.drives(5, true)) << "an input";
    EXPECT_FALSE(expander.drives(4, false)) << "an input";
}

TEST_F(GpioExpanderTest, ReadsInputsFromTheBoard)
{
    expander.inputs = [] { return std::uint8_t{0x3C}; };
    write({0, 0x0F});
    write({10, 0xFF});

    EXPECT_EQ(read(9), Bytes{0xFC});
    EXPECT_EQ(read(10), Bytes{0xFF}) << "the latch keeps what was written";
}

TEST_F(GpioExpanderTest, WrapsFromItsLastRegisterToItsFirst)
{
    write({10, 0x11, 0x22});

    EXPECT_EQ(read(10, 2), (Bytes{0x11, 0x22}));
    EXPECT_EQ(read(0), Bytes{0x22});
}

TEST_F(GpioExpanderTest, GivesOnesBehindItsRegisters)
{
    write({11, 0x00});
    write({200, 0x00});

    EXPECT_EQ(read(11), Bytes{0xFF});
    EXPECT_EQ(read(200), Bytes{0xFF});
    EXPECT_EQ(read(0), Bytes{0xFF}) << "nothing else was written";
}

TEST_F(GpioExpanderTest, ReportsEachChangeWithItsTimeAndNoReading)
{
    std::vector<Time> changes;
    expander.changed = [&](Time time) { changes.push_back(time); };

    expander.write(Bytes{9}, 1ms);
    expander.write(Bytes{}, 2ms);
    expander.write(Bytes{9, 0}, 3ms);

    EXPECT_THAT(changes, testing::ElementsAre(Time{3ms}));
}

} // namespace

} // namespace gpio_expander_test
