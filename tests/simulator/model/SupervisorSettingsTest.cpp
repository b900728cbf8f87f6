// SPDX-License-Identifier: LicenseRef-HXAux
// The registers of "/dev/conf-id": which setting each one is, and what the firmware takes for it.
#include "simulator/model/SupervisorSettings.h"

#include "simulator/model/Supervisor.h"
#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace supervisor_settings_test {

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

constexpr char kPath[] = "/dev/conf-id";

struct Setting : Named {
    std::uint8_t number;
    const char* property;
    unsigned value;
};

class SupervisorSetting : public modeltest::ModelTest, public hxtest::WithRow<Setting> {};

ROW_TEST(SupervisorSetting, IsTheRegisterThatProgramsReadAndWrite)
{
    ASSERT_NE(property(row().property), std::to_string(row().value));

    EXPECT_EQ(setReg(kPath, row().number, row().value), 0);
    EXPECT_EQ(property(row().property), std::to_string(row().value));
    EXPECT_EQ(reg(kPath, row().number), static_cast<int>(row().value));
}

ROW_TEST(SupervisorSetting, IsReadAsItWasSetFromOutside)
{
    set(row().property, std::to_string(row().value));

    EXPECT_EQ(reg(kPath, row().number), static_cast<int>(row().value));
}

TEST_ROWS(Settings, SupervisorSetting, kNameOfRow, Setting{{"ButtonDebounce"}, 0, "config.button-debounce", 65535},
          Setting{{"ButtonTime"}, 1, "config.button-time", 3000},
          Setting{{"SignalTimeLow"}, 3, "config.signal-time.low", 0x1234},
          Setting{{"SignalTimeHigh"}, 20, "config.signal-time.high", 1},
          Setting{{"SuspendTime"}, 4, "config.suspend-time", 1440},
          Setting{{"StartupVoltage"}, 10, "config.voltage", 1241}, Setting{{"HeatingLimit"}, 14, "config.heating", 31},
          Setting{{"ShortPress"}, 16, "config.short-press", 2}, Setting{{"LongPress"}, 17, "config.long-press", 0},
          Setting{{"Signal"}, 18, "config.signal", 1}, Setting{{"Trigger"}, 19, "config.trigger", 2});

struct Switch : Named {
    std::uint8_t number;
    const char* property;
};

class SupervisorSwitch : public modeltest::ModelTest, public hxtest::WithRow<Switch> {};

ROW_TEST(SupervisorSwitch, ShowsOnAndOffAndAnyOtherNumberAsItIs)
{
    const std::uint8_t number = row().number;
    const char* const switched = row().property;

    EXPECT_EQ(setReg(kPath, number, 0), 0);
    EXPECT_EQ(property(switched), "off");
    EXPECT_EQ(setReg(kPath, number, 1), 0);
    EXPECT_EQ(property(switched), "on");
    EXPECT_EQ(setReg(kPath, number, 0xFFFF), 0);
    EXPECT_EQ(property(switched), "65535");
}

ROW_TEST(SupervisorSwitch, TakesOnAndOffAndNumbers)
{
    const std::uint8_t number = row().number;
    const char* const switched = row().property;

    set(switched, "on");
    EXPECT_EQ(reg(kPath, number), 1);
    set(switched, "off");
    EXPECT_EQ(reg(kPath, number), 0);
    set(switched, "300");
    EXPECT_EQ(reg(kPath, number), 300);
    EXPECT_NE(refusalOfSet(switched, "65536"), "");
    EXPECT_NE(refusalOfSet(switched, "perhaps"), "");
    EXPECT_NE(refusalOfSet(switched, ""), "");
    EXPECT_EQ(reg(kPath, number), 300);
}

TEST_ROWS(Settings, SupervisorSwitch, kNameOfRow, Switch{{"Can"}, 7, "config.can"},
          Switch{{"FirstVideo"}, 8, "config.video.1"}, Switch{{"SecondVideo"}, 11, "config.video.2"},
          Switch{{"ThirdVideo"}, 12, "config.video.3"}, Switch{{"FourthVideo"}, 13, "config.video.4"},
          Switch{{"Fan"}, 9, "config.fan"}, Switch{{"PowerOn"}, 21, "config.power-on"});

struct Edge : Named {
    std::uint8_t number;
    unsigned low;
    unsigned high;
};

class LimitedSetting : public modeltest::ModelTest, public hxtest::WithRow<Edge> {};

ROW_TEST(LimitedSetting, TakesItsRangeAndNoMore)
{
    EXPECT_EQ(setReg(kPath, row().number, row().low), 0);
    EXPECT_EQ(setReg(kPath, row().number, row().high), 0);
    EXPECT_EQ(setReg(kPath, row().number, row().high + 1), -EINVAL);
    EXPECT_EQ(reg(kPath, row().number), static_cast<int>(row().high)) << "a refused value changes nothing";
    if (row().low > 0) {
        EXPECT_EQ(setReg(kPath, row().number, row().low - 1), -EINVAL);
    }
}

TEST_ROWS(Settings, LimitedSetting, kNameOfRow, Edge{{"TriggersOneToThree"}, 19, 1, 3}, Edge{{"ShortPress"}, 16, 0, 2},
          Edge{{"LongPress"}, 17, 0, 2}, Edge{{"Signal"}, 18, 0, 2}, Edge{{"TwelveBitsOfVoltage"}, 10, 0, 4095},
          Edge{{"HeatingFromMinus25To5Degrees"}, 14, 31, 61});

class SettingsTest : public modeltest::ModelTest {
protected:
    SupervisorSettings& settings = unit.get<Supervisor>().configuration;
};

TEST_F(SettingsTest, JoinBothWordsOfTheSignalTime)
{
    set("config.signal-time.low", "4660");
    set("config.signal-time.high", "1");

    EXPECT_EQ(settings.signalTime(), 0x11234 * 1ms);
}

TEST_F(SettingsTest, CountMillisecondsForTheButtonAndMinutesOfSuspension)
{
    set("config.button-time", "65535");
    set("config.suspend-time", "2");

    EXPECT_EQ(settings.buttonTime(), 65535ms);
    EXPECT_EQ(settings.suspendTime(), 2min);
}

TEST_F(SettingsTest, MeasureTheStartupVoltageBehindADividerOfTwelve)
{
    set("config.voltage", "1241");

    EXPECT_NEAR(settings.startupVolts(), 11.99794921875, 1e-9);
}

TEST_F(SettingsTest, CountTheHeatingLimitFromMinus56Degrees)
{
    set("config.heating", "31");
    EXPECT_EQ(settings.heatingCelsius(), -25);
    set("config.heating", "61");
    EXPECT_EQ(settings.heatingCelsius(), 5);
}

TEST_F(SettingsTest, KeepRegistersThatAreNoSetting)
{
    EXPECT_EQ(setReg(kPath, 200, 0xBEEF), 0);
    EXPECT_EQ(reg(kPath, 200), 0xBEEF);
}

TEST_F(SettingsTest, AreNotAnsweredWithoutTheSupervisor)
{
    act("cut", {"ss"});

    EXPECT_EQ(setReg(kPath, 16, 0), -EIO);
    EXPECT_EQ(reg(kPath, 16), -1);
    act("restore", {"ss"});
    EXPECT_EQ(reg(kPath, 16), 1);
}

TEST_F(SettingsTest, OutlastTheSupply)
{
    EXPECT_EQ(setReg(kPath, 16, 0), 0);
    supplyOffAndOn();
    EXPECT_EQ(reg(kPath, 16), 0);
}

} // namespace

} // namespace supervisor_settings_test
