// SPDX-License-Identifier: LicenseRef-HXAux
// Configuration, power, diagnostics, LED and buzzer against answers of a wrong length: no driver path returns them, but
// the library must refuse them where it checks the length, and only there.
#include "devices/Buzzer_Imp.h"
#include "devices/FrontLED_Imp.h"
#include "hx-aux/Config.h"
#include "hx-aux/Diagnostic.h"
#include "hx-aux/Power.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "testing/scripted/ScriptedDevice.h"

#include <gmock/gmock.h>

#include <functional>

using namespace Halvix;
using testing::ElementsAreArray;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// One operation with exactly one request whose count is checked.
struct Row : Named {
    unsigned long code;
    Bytes sent;
    Bytes answer;
    std::function<eErr()> call; ///< also checks that outputs are unchanged unless it succeeds
    bool asksVersion = false;
};

/// Calls a getter; its output must change with success and only then.
template <class Interface, class Value>
std::function<eErr()> getter(Interface* (*make)(), eErr (Interface::*get)(Value*))
{
    return [make, get] {
        Released<Interface> object{make()};
        auto value = static_cast<Value>(77);
        const eErr err = (object.get()->*get)(&value);
        EXPECT_EQ(value == static_cast<Value>(77), err != ERR_SUCCESS);
        return err;
    };
}

template <class Interface, class Value, class Given>
std::function<eErr()> setter(Interface* (*make)(), eErr (Interface::*set)(Value), Given value)
{
    return [make, set, value] {
        Released<Interface> object{make()};
        return (object.get()->*set)(static_cast<Value>(value));
    };
}

eErr callGetTimer()
{
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    TimerType timers{};
    timers.seconds[0] = 77;
    const eErr err = diagnostic->getTimer(&timers);
    EXPECT_EQ(timers.seconds[0] == 77, err != ERR_SUCCESS);
    return err;
}

eErr callGetMinMaxTemp()
{
    Released<Diagnostic> diagnostic{GetDiagnostic()};
    short first = 77;
    short second = 77;
    const eErr err = diagnostic->getMinMaxTemp(&first, &second);
    EXPECT_EQ(first, err == ERR_SUCCESS ? 0x0050 : 77);
    EXPECT_EQ(second, err == ERR_SUCCESS ? 0x0010 : 77);
    return err;
}

eErr callGetColor()
{
    Released<FrontLED> led{GetFrontLED()};
    unsigned char triple[3] = {77, 77, 77};
    const eErr err = led->getColor(&triple[0], &triple[1], &triple[2]);
    EXPECT_EQ(triple[0] == 77 && triple[1] == 77 && triple[2] == 77, err != ERR_SUCCESS);
    return err;
}

eErr callGetStandardColor()
{
    Released<FrontLED> led{GetFrontLED()};
    auto color = static_cast<HXAuxColor>(77);
    const eErr err = led->getColor(&color);
    EXPECT_EQ(color == 77, err != ERR_SUCCESS);
    return err;
}

const Bytes kNone;
constexpr bool kAsksVersion = true;

const std::vector<Row> kRows{
    {"getStartupTriggerConfig",
     0x8001005E,
     kNone,
     {2, 0},
     getter(GetConfig, &Config::getStartupTriggerConfig),
     kAsksVersion},
    {"getShortButtonPressAction",
     0x80010058,
     kNone,
     {2, 0},
     getter(GetConfig, &Config::getShortButtonPressAction),
     kAsksVersion},
    {"getLongButtonPressAction",
     0x8001005A,
     kNone,
     {2, 0},
     getter(GetConfig, &Config::getLongButtonPressAction),
     kAsksVersion},
    {"getOnOffSigAction", 0x8001005C, kNone, {2, 0}, getter(GetConfig, &Config::getOnOffSigAction), kAsksVersion},
    {"getFrontBtnTrigTime", 0x80010026, kNone, {1, 0, 2, 0}, getter(GetConfig, &Config::getFrontBtnTrigTime)},
    {"getExtOnOffSigTrigTime", 0x80010060, kNone, {1, 2, 3, 4}, getter(GetConfig, &Config::getExtOnOffSigTrigTime)},
    {"getSuspendMaxTime", 0x8001002A, kNone, {0, 0, 2, 0}, getter(GetConfig, &Config::getSuspendMaxTime)},
    {"getCanStartupPowerConfig", 0x8001002C, kNone, {1, 0}, getter(GetConfig, &Config::getCanStartupPowerConfig)},
    {"getVideoStartupPowerConfig", 0x8001002E, kNone, {9, 0}, getter(GetConfig, &Config::getVideoStartupPowerConfig)},
    {"getExtFanStartupPowerConfig", 0x80010030, kNone, {1, 0}, getter(GetConfig, &Config::getExtFanStartupPowerConfig)},
    {"getStartupVoltageConfig", 0x80010032, kNone, {0, 8}, getter(GetConfig, &Config::getStartupVoltageConfig)},
    {"getHeatingTempLimit", 0x80010054, kNone, {56, 0}, getter(GetConfig, &Config::getHeatingTempLimit), kAsksVersion},
    {"getPowerOnStartup", 0x80010067, kNone, {1, 0}, getter(GetConfig, &Config::getPowerOnStartup), kAsksVersion},
    {"setStartupTriggerConfig",
     0x4001005F,
     {2, 0},
     kNone,
     setter(GetConfig, &Config::setStartupTriggerConfig, 2),
     kAsksVersion},
    {"setShortButtonPressAction",
     0x40010059,
     {2, 0},
     kNone,
     setter(GetConfig, &Config::setShortButtonPressAction, 2),
     kAsksVersion},
    {"setLongButtonPressAction",
     0x4001005B,
     {1, 0},
     kNone,
     setter(GetConfig, &Config::setLongButtonPressAction, 1),
     kAsksVersion},
    {"setOnOffSigAction", 0x4001005D, {0, 0}, kNone, setter(GetConfig, &Config::setOnOffSigAction, 0), kAsksVersion},
    {"setExtOnOffSigTrigTime",
     0x40010061,
     {0x78, 0x56, 0x34, 0x12},
     kNone,
     setter(GetConfig, &Config::setExtOnOffSigTrigTime, 0x12345678)},
    {"setSuspendMaxTime",
     0x4001002B,
     {0x01, 0x00, 0x2C, 0x01},
     kNone,
     setter(GetConfig, &Config::setSuspendMaxTime, 300)},
    {"setCanStartupPowerConfig",
     0x4001002D,
     {0x2C, 0x01},
     kNone,
     setter(GetConfig, &Config::setCanStartupPowerConfig, 300)},
    {"setVideoStartupPowerConfig",
     0x4001002F,
     {15, 0},
     kNone,
     setter(GetConfig, &Config::setVideoStartupPowerConfig, 15)},
    {"setExtFanStartupPowerConfig",
     0x40010031,
     {1, 0},
     kNone,
     setter(GetConfig, &Config::setExtFanStartupPowerConfig, 1)},
    {"setStartupVoltageConfig",
     0x40010033,
     {0xA2, 0x03},
     kNone,
     setter(GetConfig, &Config::setStartupVoltageConfig, 9.0)},
    {"setHeatingTempLimit",
     0x40010055,
     {31, 0},
     kNone,
     setter(GetConfig, &Config::setHeatingTempLimit, -25),
     kAsksVersion},
    {"setPowerOnStartup",
     0x40010068,
     {0x2C, 0x01},
     kNone,
     setter(GetConfig, &Config::setPowerOnStartup, 300),
     kAsksVersion},

    {"getBLPowerStatus", 0x8001001E, kNone, {1}, getter(GetPower, &Power::getBLPowerStatus)},
    {"getCanPowerStatus", 0x80010020, kNone, {1}, getter(GetPower, &Power::getCanPowerStatus)},
    {"getVideoPowerStatus", 0x80010022, kNone, {1}, getter(GetPower, &Power::getVideoPowerStatus)},
    {"getExtFanPowerStatus", 0x80010024, kNone, {1}, getter(GetPower, &Power::getExtFanPowerStatus)},
    {"setBLPowerStatus", 0x4001001F, {1}, kNone, setter(GetPower, &Power::setBLPowerStatus, 1)},
    {"setCanPowerStatus", 0x40010021, {0}, kNone, setter(GetPower, &Power::setCanPowerStatus, 2)},
    {"setVideoPowerStatus", 0x40010023, {15}, kNone, setter(GetPower, &Power::setVideoPowerStatus, 15)},
    {"setExtFanPowerStatus", 0x40010025, {1}, kNone, setter(GetPower, &Power::setExtFanPowerStatus, 1)},
    {"getButtonPowerTransitionStatus",
     0x80010034,
     kNone,
     {6},
     getter(GetPower, &Power::getButtonPowerTransitionStatus),
     kAsksVersion},

    {"getSSTemp", 0x80010014, kNone, {0xEC, 0xFF}, getter(GetDiagnostic, &Diagnostic::getSSTemp)},
    {"getPCBTemp", 0x80010015, kNone, {1, 0}, getter(GetDiagnostic, &Diagnostic::getPCBTemp)},
    {"getStartupReason", 0x80010017, kNone, {1, 0}, getter(GetDiagnostic, &Diagnostic::getStartupReason)},
    {"getShutDownReason", 0x80010018, kNone, {1, 0}, getter(GetDiagnostic, &Diagnostic::getShutDownReason)},
    {"getHwErrorStatus", 0x80010019, kNone, {1, 0}, getter(GetDiagnostic, &Diagnostic::getHwErrorStatus)},
    {"getPowerCycles", 0x8001001A, kNone, {1, 0}, getter(GetDiagnostic, &Diagnostic::getPowerCycles)},
    {"getMinMaxTemp", 0x8001001B, kNone, {0x10, 0x00, 0x50, 0x00}, callGetMinMaxTemp},
    {"getTimer", 0x80010016, kNone, Bytes(28, 1), callGetTimer},

    {"getOnTime", 0x80040042, kNone, {1, 2, 3, 4}, getter(GetFrontLED, &FrontLED::getOnTime)},
    {"getOffTime", 0x80040042, kNone, {1, 2, 3, 4}, getter(GetFrontLED, &FrontLED::getOffTime)},
    {"getIdleTime", 0x80040042, kNone, {1, 2, 3, 4}, getter(GetFrontLED, &FrontLED::getIdleTime)},
    {"getNrOfPulses", 0x80040042, kNone, {1, 2, 3, 4}, getter(GetFrontLED, &FrontLED::getNrOfPulses)},
    {"getColor", 0x80030044, kNone, {1, 2, 3}, callGetColor},
    {"getStandardColor", 0x80030044, kNone, {1, 2, 3}, callGetStandardColor},
    {"getEnabledDuringStartup", 0x80010046, kNone, {1}, getter(GetFrontLED, &FrontLED::getEnabledDuringStartup)},

    {"getFrequency", 0x8004003E, kNone, {1, 2, 3, 4}, getter(GetBuzzer, &Buzzer::getFrequency)},
    {"getVolume", 0x8004003E, kNone, {1, 2, 3, 4}, getter(GetBuzzer, &Buzzer::getVolume)},
};

class CountedRequest : public hxtest::TestWithRow<Row> {
protected:
    static void expectVersion(ScriptedDevice& device)
    {
        if (row().asksVersion)
            device.answers({1, 0, 3, 0}, 4);
    }
    static int length() { return static_cast<int>(row().sent.size() + row().answer.size()); }

    SimulatedUnit unit; // for the buzzer's lock
};
TEST_ROWS_IN(Of, CountedRequest, kNameOfRow, kRows);

ROW_TEST(CountedRequest, CarriesItsPayloadUnderItsCode)
{
    ScriptedDevice device;
    expectVersion(device);
    device.answers(row().answer, length());

    EXPECT_EQ(row().call(), ERR_SUCCESS);

    EXPECT_EQ(device.requests.size(), row().asksVersion ? 2U : 1U);
    EXPECT_EQ(device.requests.back().code, row().code);
    EXPECT_THAT(device.requests.back().in, ElementsAreArray(row().sent));
    EXPECT_EQ(device.requests.back().outLength, static_cast<int>(row().answer.size()));
}

ROW_TEST(CountedRequest, RefusesAnyOtherCount)
{
    for (const int count : {0, length() - 1, length() + 1, -1}) {
        ScriptedDevice device;
        expectVersion(device);
        device.answers(row().answer, count);

        EXPECT_EQ(row().call(), ERR_BUFFER_SIZE) << count;
    }
}

ROW_TEST(CountedRequest, IsRefusedByTheDriverBeforeItsCount)
{
    ScriptedDevice device;
    expectVersion(device);
    device.refuses();

    EXPECT_EQ(row().call(), ERR_IOCTRL_FAILED);
}

// Requests whose count is not checked.

class UncountedRequest : public hxtest::TestWithRow<Row> {
protected:
    SimulatedUnit unit;
};
TEST_ROWS(
    Of, UncountedRequest, kNameOfRow,
    Row{"ackPowerRequest",
        0x40010035,
        {0},
        {},
        [] {
            Released<Power> power{GetPower()};
            return power->ackPowerRequest();
        }},
    Row{"clearHwErrorStatus",
        0x40010063,
        {},
        {},
        [] {
            Released<Diagnostic> diagnostic{GetDiagnostic()};
            return diagnostic->clearHwErrorStatus();
        }},
    Row{"setTiming",
        0x40040043,
        {1, 2, 3, 4},
        {},
        [] {
            Released<FrontLED> led{GetFrontLED()};
            return static_cast<FrontLED_Imp*>(led.get())->setTiming({1, 2, 3, 4});
        }},
    Row{"setColor",
        0x40030045,
        {1, 2, 3},
        {},
        [] {
            Released<FrontLED> led{GetFrontLED()};
            return led->setColor(1, 2, 3);
        }},
    Row{"setEnabledDuringStartup", 0x40010047, {1}, {}, setter(GetFrontLED, &FrontLED::setEnabledDuringStartup, 1)},
    Row{"setSetup", 0x4004003F, {0xE8, 0x03, 51, 0}, {}, [] {
            Released<Buzzer> buzzer{GetBuzzer()};
            return static_cast<Buzzer_Imp*>(buzzer.get())->setSetup({1000, 51});
        }});

ROW_TEST(UncountedRequest, SucceedsWhateverTheCount)
{
    for (const int count : {0, 1, 99}) {
        ScriptedDevice device;
        device.answers({}, count);

        EXPECT_EQ(row().call(), ERR_SUCCESS) << count;

        EXPECT_EQ(device.requests.back().code, row().code);
        EXPECT_THAT(device.requests.back().in, ElementsAreArray(row().sent));
    }
}

ROW_TEST(UncountedRequest, ReportsWhenTheDriverRefuses)
{
    ScriptedDevice device;
    device.refuses();

    EXPECT_EQ(row().call(), ERR_IOCTRL_FAILED);
}

// Operations of two requests.

TEST(FrontButtonTime, IsNotWrittenAfterAReadOfAnotherLength)
{
    for (const int count : {2, 3, 5}) {
        ScriptedDevice device;
        device.answers({1, 0, 2, 0}, count);
        Released<Config> config{GetConfig()};

        EXPECT_EQ(config->setFrontBtnTrigTime(9), ERR_BUFFER_SIZE);

        EXPECT_EQ(device.requests.size(), 1U);
    }
}

TEST(FrontButtonTime, ChecksTheCountOfItsWrite)
{
    ScriptedDevice device;
    device.answers({0xCD, 0xAB, 2, 0}, 4);
    device.answers({}, 2);
    Released<Config> config{GetConfig()};

    EXPECT_EQ(config->setFrontBtnTrigTime(9), ERR_BUFFER_SIZE);

    EXPECT_THAT(device.requests.back().in, testing::ElementsAre(0xCD, 0xAB, 9, 0));
}

TEST(LedTiming, IsNotWrittenAfterAReadOfAnotherLength)
{
    ScriptedDevice device;
    device.answers({1, 2, 3, 4}, 3);
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setOnTime(9), ERR_BUFFER_SIZE);
    EXPECT_EQ(led->setOff(), ERR_BUFFER_SIZE);
    EXPECT_EQ(led->setSignal(1.0, 50), ERR_BUFFER_SIZE);

    EXPECT_EQ(device.requests.size(), 3U);
}

TEST(LedTiming, LeavesWhatArrivedInTheCallersBlock)
{
    ScriptedDevice device;
    device.answers({1, 2, 3, 4}, 3);
    Released<FrontLED> led{GetFrontLED()};
    _TimingType timing{7, 7, 7, 7};

    EXPECT_EQ(static_cast<FrontLED_Imp*>(led.get())->getTiming(&timing), ERR_BUFFER_SIZE);

    EXPECT_EQ(timing.onTime, 1);
}

TEST(BuzzerSetup, LeavesWhatArrivedInTheCallersBlock)
{
    SimulatedUnit unit;
    ScriptedDevice device;
    device.answers({0xE8, 0x03, 5, 0}, 3);
    Released<Buzzer> buzzer{GetBuzzer()};
    _SetupType setup{7, 7};

    EXPECT_EQ(static_cast<Buzzer_Imp*>(buzzer.get())->getSetup(&setup), ERR_BUFFER_SIZE);

    EXPECT_EQ(setup.frequency, 1000);
}

TEST(BuzzerTrigger, IsNotSwitchedAfterASetupOfAnotherLength)
{
    SimulatedUnit unit;
    ScriptedDevice device;
    device.answers({0xE8, 0x03, 5, 0}, 3);
    Released<Buzzer> buzzer{GetBuzzer()};

    EXPECT_EQ(buzzer->setTrigger(true), ERR_BUFFER_SIZE);
    EXPECT_EQ(buzzer->setFrequency(1000), ERR_BUFFER_SIZE);
    EXPECT_EQ(buzzer->setVolume(1), ERR_BUFFER_SIZE);
    EXPECT_EQ(buzzer->buzze(10, true), ERR_BUFFER_SIZE);

    EXPECT_EQ(device.requests.size(), 4U);
}

TEST(BuzzerTrigger, IsReadAsOneByte)
{
    SimulatedUnit unit;
    for (const int count : {0, 2, 4}) {
        ScriptedDevice device;
        device.answers({1}, count);
        Released<Buzzer> buzzer{GetBuzzer()};
        bool on = false;

        EXPECT_EQ(buzzer->getTrigger(&on), ERR_BUFFER_SIZE);

        EXPECT_FALSE(on);
    }
}

TEST(Unopened, DevicesOfPowerAndDiagnosticsAreTriedAgain)
{
    ScriptedDevice device;
    device.isAbsent();
    device.answers({1}, 1);
    Released<Power> power{GetPower()};
    auto status = HXStatusDisabled;
    EXPECT_EQ(power->getCanPowerStatus(&status), ERR_OPEN_FAILED);

    device.returns();

    EXPECT_EQ(power->getCanPowerStatus(&status), ERR_SUCCESS);
    EXPECT_THAT(device.opened, testing::ElementsAre("/dev/power-id", "/dev/power-id"));
}

} // namespace
