// SPDX-License-Identifier: LicenseRef-HXAux
// Answers of a wrong length or for another register: no driver path returns them, but the library must refuse them.
#include "backlight/BacklightIDrv.h"
#include "backlight/LightsensorIDrv.h"
#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

using namespace Halvix;

TEST(BacklightDriver, RefusesALevelOrStatusOfAnotherLengthThanOne)
{
    for (const int count : {0, 2}) {
        ScriptedDevice device;
        device.answers({9}, count);
        BacklightIDrv driver;
        unsigned char output = 77;

        EXPECT_EQ(driver.getIntensity(&output), ERR_BUFFER_SIZE);
        EXPECT_EQ(driver.getStatus(&output), ERR_BUFFER_SIZE);
        EXPECT_EQ(driver.setIntensity(1), ERR_BUFFER_SIZE);

        EXPECT_EQ(output, 77);
    }
}

TEST(LightsensorDriver, RefusesAReadingOfAnotherLengthThanTwo)
{
    for (const int count : {0, 1, 3}) {
        ScriptedDevice device;
        device.answers({0xC5, 0xA3}, count);
        LightsensorIDrv driver;
        unsigned short lux = 4711;
        unsigned char channels[2] = {1, 2};
        LightSensorOperationRange range = RangeExtended;

        EXPECT_EQ(driver.getIlluminance(&lux, &channels[0], &channels[1], &range), ERR_BUFFER_SIZE);

        EXPECT_EQ(lux, 4711);
        EXPECT_THAT(channels, testing::ElementsAre(1, 2));
    }
}

TEST(LightsensorDriver, RefusesARangeOfAnotherLengthThanOne)
{
    ScriptedDevice device;
    device.answers({1}, 2);
    LightsensorIDrv driver;
    LightSensorOperationRange range = RangeStandard;

    EXPECT_EQ(driver.getOperatingRange(&range), ERR_BUFFER_SIZE);

    EXPECT_EQ(range, RangeStandard);
}

TEST(LightsensorDriver, WhoseRangeFailsTakesTheReadingInTheRangeOfTheCaller)
{
    for (const LightSensorOperationRange before : {RangeStandard, RangeExtended}) {
        ScriptedDevice device;
        device.answers({0xC5, 0xA3}, 2);
        device.answers({1}, 0);
        LightsensorIDrv driver;
        unsigned short lux = 4711;
        unsigned char channels[2] = {};
        LightSensorOperationRange range = before;

        EXPECT_EQ(driver.getIlluminance(&lux, &channels[0], &channels[1], &range), ERR_BUFFER_SIZE);

        EXPECT_EQ(lux, before == RangeExtended ? 510 : 102);
        EXPECT_EQ(range, before);
    }
}

TEST(LightsensorDriver, DoesNotLookAtTheLengthOfARangeThatWasSet)
{
    ScriptedDevice device;
    device.answers({}, 99);
    LightsensorIDrv driver;

    EXPECT_EQ(driver.setOperatingRange(RangeExtended), ERR_SUCCESS);
}

TEST(LightsensorDriver, IsClosedInEveryCase)
{
    ScriptedDevice device;
    device.isAbsent();
    {
        const LightsensorIDrv driver;
        (void)driver;
    }

    EXPECT_EQ(device.closed, 1);
}

TEST(BacklightDriver, IsClosedOnlyWhenItWasOpened)
{
    ScriptedDevice device;
    device.isAbsent();
    {
        const BacklightIDrv driver;
        (void)driver;
    }

    EXPECT_EQ(device.closed, 0);
}
