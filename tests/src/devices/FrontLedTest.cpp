// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/FrontLed.h"

#include "devices/FrontLED_Imp.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

namespace front_led_test {

using namespace Halvix;

namespace {

constexpr const char* kDevice = "/dev/frontled";
constexpr unsigned char kUntouched = 77;

struct Part : Named {
    eErr (FrontLED::*get)(unsigned char*);
    eErr (FrontLED::*set)(unsigned char);
    unsigned char held;
    const char* written; ///< the pattern after 0xee was set
};

// On an LED with the pattern 1, 2, 3, 4.
const Part kParts[] = {
    {"OnTime", &FrontLED::getOnTime, &FrontLED::setOnTime, 1, "0x40040043: ee 02 03 04"},
    {"OffTime", &FrontLED::getOffTime, &FrontLED::setOffTime, 2, "0x40040043: 01 ee 03 04"},
    {"IdleTime", &FrontLED::getIdleTime, &FrontLED::setIdleTime, 3, "0x40040043: 01 02 ee 04"},
    {"NrOfPulses", &FrontLED::getNrOfPulses, &FrontLED::setNrOfPulses, 4, "0x40040043: 01 02 03 ee"},
};

class LedPart : public hxtest::TestWithRow<Part> {
protected:
    eErr get(unsigned char* value) const { return (led.get()->*row().get)(value); }
    eErr set(unsigned char value) const { return (led.get()->*row().set)(value); }

    SimulatedUnit unit{"led.timing = 1 2 3 4"};
    Released<FrontLED> led{GetFrontLED()};
};
TEST_ROWS_IN(Each, LedPart, kNameOfRow, kParts);

ROW_TEST(LedPart, IsReadFromThePattern)
{
    unsigned char value = kUntouched;

    EXPECT_EQ(get(&value), ERR_SUCCESS);

    EXPECT_EQ(value, row().held);
    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80040042 -> 01 02 03 04"));
}

ROW_TEST(LedPart, IsSetWithoutChangingTheOthers)
{
    EXPECT_EQ(set(0xEE), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80040042 -> 01 02 03 04", row().written));
}

ROW_TEST(LedPart, WritesNothingWhenItsReadFails)
{
    unit.fail(kDevice, 0x80040042);

    EXPECT_EQ(set(1), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.requestsTo(kDevice).size(), 1U);
}

ROW_TEST(LedPart, ReportsWhenTheWriteIsRefused)
{
    unit.fail(kDevice, 0x40040043);

    EXPECT_EQ(set(1), ERR_IOCTRL_FAILED);
}

ROW_TEST(LedPart, LeavesItsOutputWhenTheReadFails)
{
    unit.fail(kDevice, 0x80040042);
    unsigned char value = kUntouched;

    EXPECT_EQ(get(&value), ERR_IOCTRL_FAILED);

    EXPECT_EQ(value, kUntouched);
}

TEST(FrontLed, CannotBeUsedWithoutTheDevice)
{
    SimulatedUnit unit{"absent = /dev/frontled"};
    Released<FrontLED> led{GetFrontLED()};
    unsigned char byte = kUntouched;
    double hertz = kUntouched;
    HXAuxColor color = ColorOther;
    auto status = static_cast<HXStatus>(77);

    EXPECT_EQ(led->getOnTime(&byte), ERR_OPEN_FAILED);
    EXPECT_EQ(led->getSignal(&hertz, &byte), ERR_OPEN_FAILED);
    EXPECT_EQ(led->getColor(&byte, &byte, &byte), ERR_OPEN_FAILED);
    EXPECT_EQ(led->getColor(&color), ERR_OPEN_FAILED);
    EXPECT_EQ(led->getEnabledDuringStartup(&status), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setSignal(1.0, 50), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setIdleTime(1), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setColor(1, 2, 3), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setColor(ColorRed), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setOff(), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setEnabledDuringStartup(HXStatusEnabled), ERR_OPEN_FAILED);

    EXPECT_EQ(byte, kUntouched);
    EXPECT_EQ(hertz, kUntouched);
    EXPECT_EQ(color, ColorOther);
    EXPECT_EQ(status, 77);
}

TEST(FrontLed, OpensItsDeviceOnceAndDoesNotTryAgain)
{
    SimulatedUnit unit;
    unit.fail(kDevice, "open", ENOENT, 1);
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setOff(), ERR_OPEN_FAILED);
    EXPECT_EQ(led->setOff(), ERR_OPEN_FAILED);

    EXPECT_EQ(unit.callsTo(kDevice).size(), 1U);
}

TEST(FrontLed, IsOneObjectForAllItsUsers)
{
    SimulatedUnit unit;
    FrontLED* first = GetFrontLED();
    FrontLED* second = GetFrontLED();
    EXPECT_EQ(first, second);

    first->Release();
    EXPECT_EQ(second->setColor(1, 2, 3), ERR_SUCCESS);
    second->Release();

    EXPECT_THAT(unit.callsTo(kDevice), Requests("open rdwr nonblock", "0x40030045: 01 02 03", "close"));
}

TEST(FrontLed, SwitchesOffByItsOnTimeAlone)
{
    SimulatedUnit unit{{"led.timing = 1 2 3 4", "led.color = 5 6 7"}};
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setOff(), ERR_SUCCESS);

    EXPECT_EQ(unit.get("led.timing"), "0 2 3 4");
    EXPECT_EQ(unit.get("led.color"), "5 6 7");
}

TEST(FrontLed, ReadsItsColorInOrder)
{
    SimulatedUnit unit{"led.color = 5 6 7"};
    Released<FrontLED> led{GetFrontLED()};
    unsigned char red = kUntouched;
    unsigned char green = kUntouched;
    unsigned char blue = kUntouched;

    EXPECT_EQ(led->getColor(&red, &green, &blue), ERR_SUCCESS);

    EXPECT_EQ(red, 5);
    EXPECT_EQ(green, 6);
    EXPECT_EQ(blue, 7);
    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80030044 -> 05 06 07"));
}

TEST(FrontLed, LeavesTheColorWhenTheDriverRefuses)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x80030044);
    Released<FrontLED> led{GetFrontLED()};
    unsigned char red = kUntouched;
    unsigned char green = kUntouched;
    unsigned char blue = kUntouched;
    auto color = static_cast<HXAuxColor>(77);

    EXPECT_EQ(led->getColor(&red, &green, &blue), ERR_IOCTRL_FAILED);
    EXPECT_EQ(led->getColor(&color), ERR_IOCTRL_FAILED);

    EXPECT_THAT((std::array{red, green, blue}), testing::Each(kUntouched));
    EXPECT_EQ(color, 77);
}

TEST(FrontLed, AcceptsComponentsUpToFifteen)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setColor(15, 0, 15), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x40030045: 0f 00 0f"));
}

TEST(FrontLed, RefusesSixteenEvenWhenTheDeviceIsClosed)
{
    SimulatedUnit unit{"absent = /dev/frontled"};
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setColor(16, 0, 0), ERR_INVALID_PARAMETER);
    EXPECT_EQ(led->setColor(0, 16, 0), ERR_INVALID_PARAMETER);
    EXPECT_EQ(led->setColor(0, 0, 255), ERR_INVALID_PARAMETER);
}

TEST(FrontLed, ReportsWhenTheColorIsRefused)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x40030045);
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setColor(1, 2, 3), ERR_IOCTRL_FAILED);
    EXPECT_EQ(led->setColor(ColorBlue), ERR_IOCTRL_FAILED);
}

TEST(FrontLed, MayShineDuringStartup)
{
    SimulatedUnit unit{"led.startup = off"};
    Released<FrontLED> led{GetFrontLED()};
    auto status = static_cast<HXStatus>(77);

    EXPECT_EQ(led->getEnabledDuringStartup(&status), ERR_SUCCESS);
    EXPECT_EQ(status, HXStatusDisabled);
    EXPECT_EQ(led->setEnabledDuringStartup(HXStatusEnabled), ERR_SUCCESS);
    EXPECT_EQ(led->getEnabledDuringStartup(&status), ERR_SUCCESS);
    EXPECT_EQ(status, HXStatusEnabled);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80010046 -> 00", "0x40010047: 01", "0x80010046 -> 01"));
}

TEST(FrontLed, StaysDarkDuringStartupForEveryValueExceptOne)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    for (const int value : {0, 2, 257, -1})
        EXPECT_EQ(led->setEnabledDuringStartup(static_cast<HXStatus>(value)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), testing::Each("0x40010047: 00"));
}

TEST(FrontLed, ReportsWhenTheStartupSettingIsRefused)
{
    SimulatedUnit unit;
    unit.fail(kDevice, 0x80010046);
    unit.fail(kDevice, 0x40010047);
    Released<FrontLED> led{GetFrontLED()};
    auto status = static_cast<HXStatus>(77);

    EXPECT_EQ(led->getEnabledDuringStartup(&status), ERR_IOCTRL_FAILED);
    EXPECT_EQ(led->setEnabledDuringStartup(HXStatusEnabled), ERR_IOCTRL_FAILED);

    EXPECT_EQ(status, 77);
}

TEST(FrontLed, ReturnsItsWholePatternAtOnce)
{
    SimulatedUnit unit{"led.timing = 9 8 7 6"};
    Released<FrontLED> led{GetFrontLED()};
    auto* implementation = static_cast<FrontLED_Imp*>(led.get());
    _TimingType pattern{};

    EXPECT_EQ(implementation->getTiming(&pattern), ERR_SUCCESS);
    pattern.nrOfPulses = 1;
    EXPECT_EQ(implementation->setTiming(pattern), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80040042 -> 09 08 07 06", "0x40040043: 09 08 07 01"));
}

} // namespace

} // namespace front_led_test
