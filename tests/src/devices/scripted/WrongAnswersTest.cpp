// SPDX-License-Identifier: LicenseRef-HXAux
// Answers of a wrong length or for another question: no driver path returns them, but the library must refuse them.
#include "hx-aux/Adc.h"
#include "hx-aux/AuxVersion.h"
#include "hx-aux/DigIO.h"
#include "hx-aux/version-gates.h"
#include "testing/Released.h"
#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

using namespace Halvix;

namespace {

using Getter = eErr (AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);

const Getter kDeviceVersions[] = {&AuxVersion::getFPGAVersion, &AuxVersion::getSSVersion, &AuxVersion::getFrontVersion,
                                  &AuxVersion::getHXAuxDrvVersion};

} // namespace

TEST(AuxVersion, RefusesAVersionOfAnotherLengthThanFourBytes)
{
    for (const Getter get : kDeviceVersions) {
        for (const int count : {0, 3, 5}) {
            ScriptedDevice device;
            device.answers({1, 2, 3, 4}, count);
            const Released versions{GetAuxVersion()};
            unsigned char v[4] = {7, 7, 7, 7};

            EXPECT_EQ(((*versions).*get)(&v[0], &v[1], &v[2], &v[3]), ERR_BUFFER_SIZE);

            EXPECT_THAT(v, testing::Each(7));
        }
    }
}

TEST(AuxVersion, RefusesASystemVersionThatCannotBeReadAndClosesItsFile)
{
    ScriptedDevice device;
    const Released versions{GetAuxVersion()};
    unsigned char v[4] = {7, 7, 7, 7};

    EXPECT_EQ(versions->getOSVersion(&v[0], &v[1], &v[2], &v[3]), ERR_COMMAND_FAILED);

    EXPECT_THAT(v, testing::Each(7));
    EXPECT_EQ(device.closed, 1);
    EXPECT_EQ(device.opened.back(), "/etc/firmware.ver");
}

TEST(VersionGates, AreClosedForAVersionOfAnotherLength)
{
    ScriptedDevice device;
    device.answers({9, 9, 9, 9}, 3);

    EXPECT_FALSE(DoesSystemHaveAtLeastSSVersion(0, 0, 0, 0));

    EXPECT_EQ(device.closed, 1);
}

TEST(DigIO, RefusesAnAnswerOfAnotherLengthThanOneByte)
{
    for (const int count : {0, 2}) {
        ScriptedDevice device;
        device.answers({5}, count);
        const Released digital{GetDigIO()};
        unsigned char inputs = 0x77;

        EXPECT_EQ(digital->getDigIO(&inputs), ERR_BUFFER_SIZE);

        EXPECT_EQ(inputs, 0x77);
    }
}

TEST(Adc, RefusesAnAnswerOfAnotherLengthThanEightBytes)
{
    for (const int count : {0, 6, 9}) {
        ScriptedDevice device;
        device.answers({0, 0, 0, 0, 1, 0, 0, 0}, count);
        const Released adc{GetAdc()};
        double voltage = -7.5;

        EXPECT_EQ(adc->getVoltage(Voltage0, &voltage), ERR_BUFFER_SIZE);

        EXPECT_EQ(voltage, -7.5);
    }
}

TEST(Adc, RefusesAnAnswerForAnotherVoltage)
{
    ScriptedDevice device;
    device.answers({2, 0, 0, 0, 1, 0, 0, 0}, 8);
    const Released adc{GetAdc()};
    double voltage = -7.5;

    EXPECT_EQ(adc->getVoltage(Voltage1, &voltage), ERR_DATATYPE_MISMATCH);

    EXPECT_EQ(voltage, -7.5);
}

TEST(Adc, ChecksTheLengthOfAnAnswerBeforeItsEcho)
{
    ScriptedDevice device;
    device.answers({2, 0, 0, 0, 1, 0, 0, 0}, 7);
    const Released adc{GetAdc()};
    double voltage = -7.5;

    EXPECT_EQ(adc->getVoltage(Voltage1, &voltage), ERR_BUFFER_SIZE);
}

TEST(Adc, AcceptsTheEchoOfANumberOutsideTheEnumeration)
{
    ScriptedDevice device;
    device.answers({0xff, 0xff, 0xff, 0xff, 0, 0xa0, 0, 0}, 8);
    const Released adc{GetAdc()};
    double voltage = -7.5;

    EXPECT_EQ(adc->getVoltage(static_cast<VoltageEnum>(-1), &voltage), ERR_SUCCESS);

    EXPECT_EQ(voltage, 33.0);
}
