// SPDX-License-Identifier: LicenseRef-HXAux
// Properties that change evenly over the unit's time.
#include "simulator/server/Ramps.h"

#include "tests/simulator/model/ModelTest.h"

#include <gmock/gmock.h>

namespace ramps_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::refusalOf;

class RampsTest : public testing::Test {
protected:
    std::string after(Time time)
    {
        unit.clock().advanceTo(unit.clock().now() + time);
        return unit.properties().get("light");
    }
    std::string light() { return unit.properties().get("light"); }

    Unit unit{};
    Ramps ramps{unit};
};

TEST_F(RampsTest, BeginsAtOnceAndEndsInTime)
{
    ramps.start("light", 100, 200, 1s);

    EXPECT_EQ(light(), "100");
    EXPECT_EQ(after(500ms), "150");
    EXPECT_EQ(after(499ms), "198");
    EXPECT_EQ(after(1ms), "200");
}

TEST_F(RampsTest, ChangesInStepsOfTwentyMilliseconds)
{
    ramps.start("light", 0, 1000, 1s);

    EXPECT_EQ(after(19ms), "0");
    EXPECT_EQ(after(1ms), "20");
    EXPECT_EQ(unit.clock().nextDeadline(), Time{40ms});
}

TEST_F(RampsTest, FallsAsItRises)
{
    ramps.start("light", 200, 100, 1s);

    EXPECT_EQ(after(250ms), "176");
    EXPECT_EQ(after(750ms), "100");
}

TEST_F(RampsTest, LeavesThePropertyAloneAfterwards)
{
    ramps.start("light", 100, 200, 100ms);
    (void)after(100ms);

    unit.properties().set("light", "7");

    EXPECT_EQ(after(10s), "7");
}

TEST_F(RampsTest, UsesFractionsBesideTheLargestValue)
{
    ramps.start("light.infrared", 0.899, 0.9, 1s);
    EXPECT_EQ(unit.properties().get("light.infrared"), "0.899");
    unit.clock().advanceTo(1s);
    EXPECT_EQ(unit.properties().get("light.infrared"), "0.9");

    ramps.start("light.infrared", 0.0004, 0, 1s);
    EXPECT_EQ(unit.properties().get("light.infrared"), "0.0004");
}

TEST_F(RampsTest, WithoutADurationIsItsEnd)
{
    ramps.start("light", 100, 200, 0s);

    EXPECT_EQ(light(), "200");
    unit.properties().set("light", "7");
    EXPECT_EQ(after(1s), "7");
}

TEST_F(RampsTest, ReplacesTheOneOfTheSameProperty)
{
    ramps.start("light", 100, 200, 1s);
    (void)after(500ms);

    ramps.start("light", 10, 20, 1s);

    EXPECT_EQ(light(), "10");
    EXPECT_EQ(after(500ms), "15");
    EXPECT_EQ(after(10s), "20");
}

TEST_F(RampsTest, RunsBesideThoseOfOtherProperties)
{
    ramps.start("light", 100, 200, 1s);
    ramps.start("light.infrared", 0.1, 0.3, 2s);

    (void)after(1s);

    EXPECT_EQ(light(), "200");
    EXPECT_EQ(unit.properties().get("light.infrared"), "0.2");
}

TEST_F(RampsTest, UsesFractionsWhereThePropertyTakesThem)
{
    ramps.start("light.infrared", 0.1, 0.2, 1s);

    unit.clock().advanceTo(20ms);

    EXPECT_EQ(unit.properties().get("light.infrared"), "0.102");
}

TEST_F(RampsTest, UsesWholeNumbersWhereItTakesNoOthers)
{
    ramps.start("backlight.level", 0, 3, 1s);

    unit.clock().advanceTo(160ms);
    EXPECT_EQ(unit.properties().get("backlight.level"), "0");
    unit.clock().advanceTo(180ms);
    EXPECT_EQ(unit.properties().get("backlight.level"), "1");
    unit.clock().advanceTo(1s);
    EXPECT_EQ(unit.properties().get("backlight.level"), "3");
}

TEST_F(RampsTest, ChangesNothingWhenAnEndIsRefused)
{
    const std::string before = unit.properties().get("backlight.level");

    EXPECT_NE(refusalOf([this] { ramps.start("backlight.level", 0, 256, 1s); }), "");
    EXPECT_NE(refusalOf([this] { ramps.start("backlight.level", -1, 255, 1s); }), "");
    EXPECT_NE(refusalOf([this] { ramps.start("backlight.levle", 0, 1, 1s); }), "");
    EXPECT_NE(refusalOf([this] { ramps.start("led.lit", 0, 1, 1s); }), "");

    EXPECT_EQ(unit.properties().get("backlight.level"), before);
    unit.clock().advanceTo(2s);
    EXPECT_EQ(unit.properties().get("backlight.level"), before);
}

TEST_F(RampsTest, ContinuesWhenAnotherOfTheSamePropertyIsRefused)
{
    ramps.start("backlight.level", 0, 100, 1s);
    unit.clock().advanceTo(500ms);

    EXPECT_NE(refusalOf([this] { ramps.start("backlight.level", 0, 1000, 1s); }), "");

    EXPECT_EQ(unit.properties().get("backlight.level"), "50");
    unit.clock().advanceTo(1s);
    EXPECT_EQ(unit.properties().get("backlight.level"), "100");
}

} // namespace ramps_test
