// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

using namespace oldapp;

TEST(AdcSlots, MeasureAndRelease)
{
    double volts = 0;

    expectSlot("GetAdc", 1, 0, {readsRegister(2, 40960)}, 2, &volts);

    EXPECT_EQ(volts, 165.0);
}
