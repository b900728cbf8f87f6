// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Adc.h"

#include "devices/Adc_Imp.h"
#include "testing/Released.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cmath>

using namespace Halvix;
using namespace driver;
using testing::ElementsAre;

namespace {

constexpr double kUntouched = -7.5;

/// The value that the library calculates from the supervisor's answer.
double voltageOf(int which, std::uint16_t raw)
{
    Script script{{readsRegister(static_cast<std::uint8_t>(which), raw)}};
    const Released adc{GetAdc()};
    double voltage = kUntouched;
    EXPECT_EQ(adc->getVoltage(static_cast<VoltageEnum>(which), &voltage), ERR_SUCCESS);
    EXPECT_EQ(script.complaint(), "");
    return voltage;
}

/// factor x 33 x raw / 40960, correctly rounded: the numerator is an integer and 40960 is 5 x 2^13, so dividing the
/// integer by 5 in one rounded step is exact to the last digit.
double correctlyRounded(int factor, std::uint16_t raw)
{
    return std::ldexp(static_cast<double>(factor * 33 * raw) / 5.0, -13);
}

} // namespace

TEST(Adc, ScalesTheFirstTwoVoltagesBy12)
{
    EXPECT_EQ(voltageOf(0, 40960), 396.0);
    EXPECT_NEAR(voltageOf(0, 1241), 11.998, 0.0005);
    EXPECT_EQ(voltageOf(1, 40960), 396.0);
}

TEST(Adc, ScalesTheOthersBy5AndBy2)
{
    for (const int which : {2, 3})
        EXPECT_EQ(voltageOf(which, 40960), 165.0);
    for (const int which : {4, 5, 6, 7})
        EXPECT_EQ(voltageOf(which, 40960), 66.0);
}

TEST(Adc, SendsAnUnknownNumberUnchangedAndScalesItBy1)
{
    EXPECT_EQ(voltageOf(8, 40960), 33.0);
    EXPECT_EQ(voltageOf(9, 40960), 33.0);
}

TEST(Adc, AddressesTheRegisterByTheLowByteOfANumberOutsideTheEnumeration)
{
    EXPECT_EQ(voltageOf(-1, 40960), 33.0);
    EXPECT_EQ(voltageOf(0x12345605, 40960), 33.0);
}

TEST(Adc, RoundsEveryCountCorrectly)
{
    const int factors[][2] = {{0, 12}, {2, 5}, {4, 2}, {9, 1}};
    for (const auto& [which, factor] : factors)
        for (unsigned raw = 0; raw <= 0xFFFF; raw += 7) {
            const auto count = static_cast<std::uint16_t>(raw);
            ASSERT_EQ(voltageOf(which, count), correctlyRounded(factor, count)) << which << " " << raw;
        }
}

TEST(Adc, RefusesANullPointerBeforeAnythingElse)
{
    Script script;
    script.deviceIsAbsent();
    const Released adc{GetAdc()};

    EXPECT_EQ(adc->getVoltage(Voltage0, nullptr), ERR_INVALID_PARAMETER);

    EXPECT_TRUE(script.calls().empty());
}

TEST(Adc, CannotBeReadWithoutTheDevice)
{
    Script script;
    script.deviceIsAbsent();
    const Released adc{GetAdc()};
    double voltage = kUntouched;

    EXPECT_EQ(adc->getVoltage(Voltage0, &voltage), ERR_OPEN_FAILED);

    EXPECT_EQ(voltage, kUntouched);
    EXPECT_THAT(script.opened(), ElementsAre("/dev/adc-id"));
}

TEST(Adc, LeavesTheVoltageWhenTheDriverRefuses)
{
    Script script{{readsRegister(0, 5)}};
    script.failAt(0, EIO);
    const Released adc{GetAdc()};
    double voltage = kUntouched;

    EXPECT_EQ(adc->getVoltage(Voltage0, &voltage), ERR_IOCTRL_FAILED);

    EXPECT_EQ(voltage, kUntouched);
}
