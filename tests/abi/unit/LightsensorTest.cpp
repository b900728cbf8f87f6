// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

TEST(LightsensorSlots, MeasureInTheirOrder)
{
    SimulatedUnit unit;
    unit.set("light", 250);
    const Object sensor{"GetLightsensor", 7};
    unsigned short lux = 0;
    unsigned short same = 0;
    unsigned char channel0 = 0;
    unsigned char channel1 = 0;

    EXPECT_EQ(sensor.call(0, &lux), 0);
    EXPECT_EQ(sensor.call(1, &same, &channel0, &channel1), 0);
    EXPECT_NE(lux, 0);
    EXPECT_EQ(same, lux);
    EXPECT_NE(channel0, 0);
}

TEST(LightsensorSlots, AverageInTheirOrder)
{
    using Size = unsigned long;
    SimulatedUnit unit;
    const Object sensor{"GetLightsensor", 7};
    unsigned short lux = 0;

    EXPECT_EQ(sensor.call(2, &lux), 21) << "nothing runs";
    EXPECT_EQ((sensor.call<Size, Size, Size, int>(3, 2, 0, 50, 0)), 0);
    unit.sleepFor(5000);
    EXPECT_EQ(sensor.call(2, &lux), 0);
    EXPECT_EQ(sensor.call(4), 0);
    unit.sleepFor(5000);
    EXPECT_EQ(sensor.call(2, &lux), 21);
}

TEST(LightsensorSlots, SetTheRangeInTheirOrder)
{
    SimulatedUnit unit;
    const Object sensor{"GetLightsensor", 7};
    int range = 9;

    EXPECT_EQ(sensor.call<int>(6, 1), 0);
    EXPECT_EQ(unit.get("light.range"), "1");
    EXPECT_EQ(sensor.call(5, &range), 0);
    EXPECT_EQ(range, 1);
}
