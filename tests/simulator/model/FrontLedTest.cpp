// SPDX-License-Identifier: LicenseRef-HXAux
// What the driver of the status LED takes and gives; PanelTest.cpp looks at how it shines.
#include "simulator/model/FrontLed.h"

#include "tests/simulator/model/ModelTest.h"

namespace front_led_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/frontled";
constexpr std::uint32_t kGetTiming = 0x80040042;
constexpr std::uint32_t kSetTiming = 0x40040043;
constexpr std::uint32_t kGetColor = 0x80030044;
constexpr std::uint32_t kSetColor = 0x40030045;
constexpr std::uint32_t kGetStartup = 0x80010046;
constexpr std::uint32_t kSetStartup = 0x40010047;

class FrontLedTest : public modeltest::ModelTest {
protected:
    bool lit() { return property("led.lit") == "on"; }
};

TEST_F(FrontLedTest, GivesOnOffIdleAndPulsesInThisOrder)
{
    set("led.timing", "1 2 3 4");

    EXPECT_EQ(get(kPath, kGetTiming, 4), (Bytes{1, 2, 3, 4}));
}

TEST_F(FrontLedTest, TakesAnyFourBytesAsTiming)
{
    EXPECT_EQ(put(kPath, kSetTiming, {255, 0, 255, 7}), 0);

    EXPECT_EQ(property("led.timing"), "255 0 255 7");
}

TEST_F(FrontLedTest, GivesRedGreenAndBlueInThisOrder)
{
    set("led.color", "12 0 4");

    EXPECT_EQ(get(kPath, kGetColor, 3), (Bytes{12, 0, 4}));
}

TEST_F(FrontLedTest, TakesColorsOfFourBitsEach)
{
    EXPECT_EQ(put(kPath, kSetColor, {15, 5, 0}), 0);
    EXPECT_EQ(property("led.color"), "15 5 0");

    for (const Bytes& bad : {Bytes{16, 0, 0}, Bytes{0, 16, 0}, Bytes{0, 0, 16}})
        EXPECT_EQ(put(kPath, kSetColor, bad), -EINVAL);
    EXPECT_EQ(property("led.color"), "15 5 0") << "a refused color changes nothing";
}

TEST_F(FrontLedTest, TakesAnyByteButZeroForStartup)
{
    EXPECT_EQ(put(kPath, kSetStartup, {0}), 0);
    EXPECT_EQ(get(kPath, kGetStartup, 1), Bytes{0});
    EXPECT_EQ(property("led.startup"), "off");

    EXPECT_EQ(put(kPath, kSetStartup, {2}), 0);
    EXPECT_EQ(get(kPath, kGetStartup, 1), Bytes{1});
}

TEST_F(FrontLedTest, BeginsItsPatternWhenTheTimingIsWritten)
{
    pass(12345ms);
    EXPECT_EQ(put(kPath, kSetTiming, {10, 10, 0, 1}), 0);

    EXPECT_TRUE(lit());
    pass(99ms);
    EXPECT_TRUE(lit());
    pass(1ms);
    EXPECT_FALSE(lit());
    pass(100ms);
    EXPECT_TRUE(lit());
}

TEST_F(FrontLedTest, BeginsItsPatternWhenTheTimingIsSetFromOutside)
{
    pass(12345ms);
    set("led.timing", "10 10 0 1");

    EXPECT_TRUE(lit());
    pass(100ms);
    EXPECT_FALSE(lit());
}

TEST_F(FrontLedTest, GoesOnWithItsPatternInAnotherColor)
{
    set("led.timing", "10 10 0 1");
    pass(150ms);
    EXPECT_EQ(put(kPath, kSetColor, {1, 1, 1}), 0);

    EXPECT_FALSE(lit());
}

TEST_F(FrontLedTest, RefusesTextsThatAreNoPatternAndNoColor)
{
    EXPECT_EQ(refusalOfSet("led.timing", "1 2 3"), "led.timing: '1 2 3' is not 4 numbers");
    EXPECT_EQ(refusalOfSet("led.timing", "1 2 3 256"), "led.timing: 256 is outside 0 to 255");
    EXPECT_EQ(refusalOfSet("led.color", "1 2 3 4"), "led.color: '1 2 3 4' is not 3 numbers");
    EXPECT_EQ(property("led.timing"), "100 0 0 1") << "one bad number spoils all of them";
}

} // namespace

} // namespace front_led_test
