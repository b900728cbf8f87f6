// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

namespace {

int state(const Object& telematics, unsigned slot)
{
    int status = -7;
    EXPECT_EQ(telematics.call(slot, &status), 0) << slot;
    return status;
}

} // namespace

// One test: the library reads once per process which modules are fitted.
TEST(TelematicsSlots, StandInTheirOrder)
{
    SimulatedUnit unit;
    const Object telematics{"GetTelematics", 10};

    EXPECT_EQ(state(telematics, 0), 1);
    EXPECT_EQ(telematics.call<int>(6, 1), 0);
    EXPECT_EQ(unit.get("telematics.gsm"), "on");
    EXPECT_EQ(state(telematics, 1), 1);
    EXPECT_EQ(telematics.call<int>(8, 1), 0);
    EXPECT_EQ(state(telematics, 3), 1);
    EXPECT_EQ(telematics.call<int>(8, 0), 0);
    EXPECT_EQ(state(telematics, 3), 0);
    EXPECT_EQ(telematics.call<int>(7, 1), 0);
    EXPECT_EQ(telematics.call<int>(9, 0), 0);
    EXPECT_EQ(state(telematics, 2), 1);
    EXPECT_EQ(state(telematics, 4), 0);
    const int antenna = state(telematics, 5);
    unit.set("telematics.antenna-short", "on");
    EXPECT_NE(state(telematics, 5), antenna);
}
