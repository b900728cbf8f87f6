// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

TEST(BuzzerSlots, StandInTheirOrder)
{
    using Word = unsigned short;
    SimulatedUnit unit;
    const Object buzzer{"GetBuzzer", 7};
    Word value = 0;
    bool on = false;

    EXPECT_EQ(buzzer.call<Word>(3, 701), 0);
    EXPECT_EQ(unit.get("buzzer.frequency"), "701");
    EXPECT_EQ(buzzer.call(0, &value), 0);
    EXPECT_EQ(value, 701);
    EXPECT_EQ(buzzer.call<Word>(4, 11), 0);
    EXPECT_EQ(unit.get("buzzer.volume"), "11");
    EXPECT_EQ(buzzer.call(1, &value), 0);
    EXPECT_EQ(value, 11);
    EXPECT_EQ(buzzer.call<bool>(5, true), 0);
    EXPECT_EQ(unit.get("buzzer.trigger"), "1");
    EXPECT_EQ(buzzer.call(2, &on), 0);
    EXPECT_TRUE(on);
    const auto before = unit.now();
    EXPECT_EQ((buzzer.call<int, bool>(6, 500, true)), 0);
    EXPECT_EQ(unit.now() - before, 500);
}
