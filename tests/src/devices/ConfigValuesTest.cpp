// SPDX-License-Identifier: LicenseRef-HXAux
// The ranges and the arithmetic of single configuration settings.
#include "hx-aux/Config.h"
#include "simulator/model/Supervisor.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace config_values_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kDevice = "/dev/conf-id";

void hold(SimulatedUnit& unit, std::uint8_t number, int value)
{
    unit.model<hxsim::Supervisor>()->configuration[number] = static_cast<std::uint16_t>(value);
}

int held(SimulatedUnit& unit, std::uint8_t number)
{
    return unit.model<hxsim::Supervisor>()->configuration[number];
}

TEST(StartupTrigger, AcceptsOneToThreeOnly)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (const int value : {-1, 0, 4, 257, 65537})
        EXPECT_EQ(config->setStartupTriggerConfig(static_cast<TriggerConf>(value)), ERR_INVALID_DATA) << value;
    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());

    for (const int value : {1, 2, 3})
        EXPECT_EQ(config->setStartupTriggerConfig(static_cast<TriggerConf>(value)), ERR_SUCCESS) << value;
}

TEST(StartupTrigger, IsNotReportedWhenTheSupervisorHoldsAnotherValue)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (const int value : {0, 4, 65535}) {
        hold(unit, 19, value);
        auto trigger = static_cast<TriggerConf>(77);
        EXPECT_EQ(config->getStartupTriggerConfig(&trigger), ERR_INVALID_DATA) << value;
        EXPECT_EQ(trigger, static_cast<TriggerConf>(77));
    }
}

TEST(StartupTrigger, ChecksTheVersionBeforeTheRange)
{
    SimulatedUnit unit{"version.ss = 0.99.99.99"};
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setStartupTriggerConfig(static_cast<TriggerConf>(0)), ERR_NEWER_SS_VERSION_REQUIRED);
}

struct ActionSetting {
    std::uint8_t number;
    eErr (Config::*get)(PowerAction*);
    eErr (Config::*set)(PowerAction);
};

class PowerActions : public hxtest::TestWithRow<ActionSetting> {};
TEST_ROWS(Of, PowerActions, hxtest::kNumbered,
          ActionSetting{16, &Config::getShortButtonPressAction, &Config::setShortButtonPressAction},
          ActionSetting{17, &Config::getLongButtonPressAction, &Config::setLongButtonPressAction},
          ActionSetting{18, &Config::getOnOffSigAction, &Config::setOnOffSigAction});

ROW_TEST(PowerActions, AcceptZeroToTwoOnly)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (const int value : {-1, 3, 256, 65536})
        EXPECT_EQ((config.get()->*row().set)(static_cast<PowerAction>(value)), ERR_INVALID_DATA) << value;
    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());

    for (const int value : {0, 1, 2})
        EXPECT_EQ((config.get()->*row().set)(static_cast<PowerAction>(value)), ERR_SUCCESS) << value;
}

ROW_TEST(PowerActions, AreNotReportedWhenTheSupervisorHoldsAnotherValue)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (const int value : {3, 256, 65535}) {
        hold(unit, row().number, value);
        auto action = static_cast<PowerAction>(77);
        EXPECT_EQ((config.get()->*row().get)(&action), ERR_INVALID_DATA) << value;
        EXPECT_EQ(action, static_cast<PowerAction>(77));
    }
}

ROW_TEST(PowerActions, LookAtTheVersionBeforeTheRange)
{
    SimulatedUnit unit{"version.ss = 0.99.99.99"};
    Released<Config> config{GetConfig()};

    EXPECT_EQ((config.get()->*row().set)(static_cast<PowerAction>(3)), ERR_NEWER_SS_VERSION_REQUIRED);
}

TEST(FrontButtonTime, WritesNothingWhenItsReadFails)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "get 1");
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setFrontBtnTrigTime(9), ERR_IOCTRL_FAILED);

    EXPECT_THAT(unit.requestsTo(kDevice), testing::Each(testing::StartsWith("get")));
}

TEST(FrontButtonTime, KeepsTheWordBesideIt)
{
    SimulatedUnit unit;
    hold(unit, 0, 0xABCD);
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setFrontBtnTrigTime(9), ERR_SUCCESS);

    EXPECT_EQ(held(unit, 0), 0xABCD);
    EXPECT_EQ(held(unit, 1), 9);
}

TEST(SuspendTime, IsWrittenWithoutReadingFirst)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setSuspendMaxTime(300), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 4 = 300"));
}

TEST(StartupLoads, PassTheirWordsOnUnchecked)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setCanStartupPowerConfig(static_cast<HXStatus>(-1)), ERR_SUCCESS);
    EXPECT_EQ(config->setExtFanStartupPowerConfig(static_cast<HXStatus>(65537)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 7 = 65535", "put 9 = 1"));
}

TEST(StartupVideo, RefusesAFifthChannel)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (const int mask : {16, 31, 255})
        EXPECT_EQ(config->setVideoStartupPowerConfig(static_cast<unsigned char>(mask)), ERR_INVALID_DATA) << mask;

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(StartupVideo, ReadsBackEveryMask)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (unsigned char mask = 0; mask < 16; ++mask) {
        unsigned char read = 77;
        EXPECT_EQ(config->setVideoStartupPowerConfig(mask), ERR_SUCCESS);
        EXPECT_EQ(config->getVideoStartupPowerConfig(&read), ERR_SUCCESS);
        EXPECT_EQ(read, mask);
    }
}

TEST(StartupVideo, ChecksTheDeviceBeforeTheRange)
{
    SimulatedUnit unit{"absent = /dev/conf-id"};
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setVideoStartupPowerConfig(16), ERR_OPEN_FAILED);
}

TEST(PowerOnStartup, IsEnabledByEveryLowByteExceptZero)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};
    const auto read = [&](int word) {
        hold(unit, 21, word);
        auto status = static_cast<HXStatus>(77);
        EXPECT_EQ(config->getPowerOnStartup(&status), ERR_SUCCESS);
        return status;
    };

    EXPECT_EQ(read(0), HXStatusDisabled);
    EXPECT_EQ(read(2), HXStatusEnabled);
    EXPECT_EQ(read(0x0100), HXStatusDisabled); // only the low byte arrives
}

TEST(PowerOnStartup, SendsItsLowByteSignExtended)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setPowerOnStartup(static_cast<HXStatus>(0xFF)), ERR_SUCCESS);
    EXPECT_EQ(config->setPowerOnStartup(static_cast<HXStatus>(0x17F)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 21 = 65535", "put 21 = 127"));
}

TEST(StartupVoltage, IsRefusedOutsideNineToTwentyEightVolts)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};
    const double infinity = std::numeric_limits<double>::infinity();

    for (const double volts :
         {8.99, std::nextafter(9.0, 0.0), std::nextafter(28.0, 29.0), 28.01, -12.0, infinity, -infinity})
        EXPECT_EQ(config->setStartupVoltageConfig(volts), ERR_INVALID_DATA) << volts;

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(StartupVoltage, AcceptsItsLimits)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setStartupVoltageConfig(9.0), ERR_SUCCESS);
    EXPECT_EQ(config->setStartupVoltageConfig(28.0), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 10 = 930", "put 10 = 2896"));
}

TEST(StartupVoltage, ChecksTheDeviceBeforeTheRange)
{
    SimulatedUnit unit{"absent = /dev/conf-id"};
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setStartupVoltageConfig(8.0), ERR_OPEN_FAILED);
}

TEST(StartupVoltage, StoresNotANumberAsZero)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setStartupVoltageConfig(std::nan("")), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("put 10 = 0"));
}

TEST(StartupVoltage, ReadsItsLowestSettingBackAsItWasSet)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};
    double volts = 0;

    EXPECT_EQ(config->setStartupVoltageConfig(9.0), ERR_SUCCESS);
    EXPECT_EQ(config->getStartupVoltageConfig(&volts), ERR_SUCCESS);

    EXPECT_EQ(volts, 9.0);
}

TEST(StartupVoltage, ReadsEveryWordAsTheDividerGivesIt)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (int raw = 0; raw <= 0xFFFF; ++raw) {
        hold(unit, 10, raw);
        double volts = 77;
        ASSERT_EQ(config->getStartupVoltageConfig(&volts), ERR_SUCCESS);
        // 3.3 V through 1:12 over 4096 counts, as one fraction of integers.
        const double exact = static_cast<double>(raw * 99) / 10240.0;
        ASSERT_EQ(volts, std::max(exact, 9.0)) << raw;
    }
}

TEST(StartupVoltage, StoresEveryReadValueBackAsTheSameWord)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (int raw = 931; raw <= 2896; ++raw) {
        hold(unit, 10, raw);
        double volts = 0;
        ASSERT_EQ(config->getStartupVoltageConfig(&volts), ERR_SUCCESS);
        ASSERT_EQ(config->setStartupVoltageConfig(volts), ERR_SUCCESS);
        ASSERT_EQ(held(unit, 10), raw);
    }
}

TEST(StartupVoltage, CutsEveryMillivoltDownToAStep)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (int millivolts = 9000; millivolts <= 28000; ++millivolts) {
        ASSERT_EQ(config->setStartupVoltageConfig(millivolts / 1000.0), ERR_SUCCESS);
        ASSERT_EQ(held(unit, 10), millivolts * 256 / 2475) << millivolts;
    }
}

TEST(HeatingLimit, AcceptsMinusTwentyFiveToFiveOnly)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (int celsius = INT16_MIN; celsius <= INT16_MAX; ++celsius) {
        const bool inRange = celsius >= -25 && celsius <= 5;
        hold(unit, 14, 9);
        ASSERT_EQ(config->setHeatingTempLimit(static_cast<short>(celsius)), inRange ? ERR_SUCCESS : ERR_INVALID_DATA);
        ASSERT_EQ(held(unit, 14), inRange ? celsius + 56 : 9) << celsius;
    }
}

TEST(HeatingLimit, IsNotReportedWhenTheSupervisorHoldsAnotherValue)
{
    SimulatedUnit unit;
    Released<Config> config{GetConfig()};

    for (int raw = 0; raw <= 0xFFFF; ++raw) {
        const bool inRange = raw >= 31 && raw <= 61;
        hold(unit, 14, raw);
        short celsius = 77;
        ASSERT_EQ(config->getHeatingTempLimit(&celsius), inRange ? ERR_SUCCESS : ERR_INVALID_DATA) << raw;
        ASSERT_EQ(celsius, inRange ? raw - 56 : 77);
    }
}

TEST(HeatingLimit, ChecksTheVersionBeforeTheRange)
{
    SimulatedUnit unit{"version.ss = 0.8.99.99"};
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setHeatingTempLimit(6), ERR_NEWER_SS_VERSION_REQUIRED);
}

} // namespace

} // namespace config_values_test
