// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

using namespace oldapp;

TEST(DigIOSlots, ReadAndRelease)
{
    unsigned char inputs = 0;

    expectSlot("GetDigIO", 1, 0, {local(0x80010051, "0000"_hex, "0a"_hex)}, &inputs);

    EXPECT_EQ(inputs, 0x0A);
}
