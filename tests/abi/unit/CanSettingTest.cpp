// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

TEST(CanSettingSlots, StandInTheirOrder)
{
    using Byte = unsigned char;
    using Word = unsigned short;
    SimulatedUnit unit;
    const Object can{"GetCanSetting", 4};
    Word kbit = 0;
    int* none = nullptr;

    EXPECT_EQ((can.call<Byte, Word>(2, 1, 250)), 0);
    EXPECT_EQ(unit.get("can.1.bitrate"), "250000");
    EXPECT_EQ((can.call<Byte, Word*>(0, 1, &kbit)), 0);
    EXPECT_EQ(kbit, 250);
    EXPECT_EQ((can.call<Byte, int*>(1, 1, none)), 9) << "only the getter has a pointer";
    EXPECT_EQ((can.call<Byte, int>(3, 1, 0)), 2);
}
