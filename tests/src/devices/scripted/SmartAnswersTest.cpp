// SPDX-License-Identifier: LicenseRef-HXAux
// Answers of the service registers that no driver path returns, but that the library must refuse.
#include "devices/HXAuxPrivate_Imp.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"
#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

using namespace Halvix;

TEST(SmartRegister, WhoseAnswerNamesAnotherRegisterIsAMismatch)
{
    SimulatedUnit unit; // for the semaphores
    ScriptedDevice device;
    device.answers({7, 0, 1, 2}, 4);
    Released service{GetHXAuxPrivate()};
    unsigned short value = 4711;

    EXPECT_EQ(service->getFromSmart(8, &value), ERR_DATATYPE_MISMATCH);

    EXPECT_EQ(value, 4711);
}

TEST(SmartRegister, OfANegativeNumberIsComparedAsTheWordThatWasSent)
{
    SimulatedUnit unit; // for the semaphores
    ScriptedDevice device;
    device.answers({0xFF, 0xFF, 0x34, 0x12}, 4);
    Released service{GetHXAuxPrivate()};
    unsigned short value = 0;

    EXPECT_EQ(service->getFromSmart(-1, &value), ERR_SUCCESS);

    EXPECT_EQ(value, 0x1234);
}

TEST(SmartRegister, RefusesAnAnswerOfAnotherLengthThanFour)
{
    for (const int count : {0, 2, 5}) {
        SimulatedUnit unit;
        ScriptedDevice device;
        device.answers({8, 0, 1, 2}, count);
        Released service{GetHXAuxPrivate()};
        unsigned short value = 4711;

        EXPECT_EQ(service->getFromSmart(8, &value), ERR_BUFFER_SIZE);
        EXPECT_EQ(service->setToSmart(8, 1), ERR_BUFFER_SIZE);

        EXPECT_EQ(value, 4711);
    }
}
