// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

TEST(DiagnosticSlots, MeasureTheProcessorModuleInSlot2)
{
    SimulatedUnit unit;
    const Object diagnostic{"GetDiagnostic", 10};
    short temperature = -999;
    int type = -1;

    EXPECT_EQ((diagnostic.call<unsigned char, short*, int*>(2, 0, &temperature, &type)), 0);

    EXPECT_NE(temperature, -999);
    EXPECT_NE(type, -1);
    EXPECT_THAT(unit.callsTo("/dev/diag-id"), testing::IsEmpty()) << "the board library measures it";
}
