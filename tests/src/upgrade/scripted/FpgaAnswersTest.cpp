// SPDX-License-Identifier: LicenseRef-HXAux
// Answers of the configuration flash that no driver path gives.
#include "platform/File.h"
#include "testing/scripted/ScriptedDevice.h"
#include "upgrade/Flasher_FPGA.h"

#include <gtest/gtest.h>

using namespace Halvix;

TEST(File, IsClosedOnce)
{
    ScriptedDevice device;
    {
        const File file{"firmware.mcs"};
        EXPECT_TRUE(file.isOpen());
    }

    EXPECT_EQ(device.closed, 1);
}

TEST(FpgaAnswers, OfAStatusThatIsNotOneByteLongAreRefused)
{
    ScriptedDevice device;
    device.answers({0}, 2);
    Flasher_FPGA flasher;

    EXPECT_EQ(flasher.initHW(), ERR_BUFFER_SIZE);
}

TEST(FpgaAnswers, OfTheStatusComeInTheByteThatWasPassed)
{
    ScriptedDevice device;
    device.answers({1}, 1);
    Flasher_FPGA flasher;

    EXPECT_EQ(flasher.initHW(), ERR_INIT_FAILED);
    ASSERT_EQ(device.requests.size(), 1U);
    EXPECT_EQ(device.requests[0].code, 0x4001004dU);
    EXPECT_EQ(device.requests[0].outLength, 1);
}
