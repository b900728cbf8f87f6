// SPDX-License-Identifier: LicenseRef-HXAux
// Mistyped names and impossible values in descriptions and commands.
#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"

#include <gmock/gmock.h>

namespace name_check_test {

using hxsim::BadText;
using hxsim::Unit;
using testing::Eq;

namespace {

/// The unit's error for a line of a description, or nothing.
std::string refusalOf(const std::string& line)
{
    Unit unit;
    try {
        unit.describe(line);
    } catch (const BadText& bad) {
        return std::string{bad.what()}.substr(sizeof "line 1: " - 1);
    }
    return {};
}

struct Case {
    const char* line;
    const char* refusal;
};

constexpr Case kCases[] = {
    {"absent = /dev/backligth",
     "the unit has no device, file, library or function \"/dev/backligth\"; did you mean '/dev/backlight'?"},
    {"absent = JidaI2Cwrite",
     "the unit has no device, file, library or function \"JidaI2Cwrite\"; did you mean 'JidaI2CWrite'?"},
    {"absent = /etc/passwd", "the unit has no device, file, library or function \"/etc/passwd\""},
    {"absent =", "the unit has no device, file, library or function \"\""},
    {"absent = *", "the unit has no device, file, library or function \"*\""},
    {"absent = /dev/backlight", ""},
    {"absent = /opt/etc/hxaux.ini", ""},
    {"absent = libjida.so", ""},
    {"absent = JidaI2CWrite", ""},
    {"fail = /dev/adcid open", "nothing on the unit is called \"/dev/adcid\"; did you mean '/dev/adc-id'?"},
    {"fail = semaphore open", "nothing on the unit is called \"semaphore\""},
    {"fail = /dev/adc-id oepn", "no call \"oepn\" on /dev/adc-id can fail; did you mean 'open'?"},
    {"fail = /dev/adc-id close", "no call \"close\" on /dev/adc-id can fail"},
    {"fail = /dev/adc-id tcdrain", "no call \"tcdrain\" on /dev/adc-id can fail"},
    {"fail = /dev/backlight get 3", "no call \"get\" on /dev/backlight can fail"},
    {"fail = /dev/backlight 0x40010004",
     "no call \"0x40010004\" on /dev/backlight can fail; did you mean '0x40010003'?"},
    {"fail = /dev/adc-id get 256", "256 is outside 0 to 255"},
    {"fail = /dev/adc-id get 3 EOI", "there is no errno 'EOI'; did you mean 'EIO'?"},
    {"fail = /dev/adc-id get 3 X9", "there is no errno 'X9'"},
    {"fail = /dev/adc-id get 3 E4096", "4096 is outside 1 to 4095"},
    {"fail = /dev/adc-id get 3 EIO 0", "0 is outside 1 to 1000000"},
    {"fail = /dev/adc-id get 3 EIO 1 1", "too many arguments: '1'; a fault is written as: NODE CALL [ERRNO] [COUNT]"},
    {"fail = /dev/adc-id", "a fault is written as: NODE CALL [ERRNO] [COUNT]"},
    {"fail = * oepn", "no call \"oepn\" on * can fail; did you mean 'open'?"},
    {"fail = thread strt", "no call \"strt\" on thread can fail; did you mean 'start'?"},
    {"fail = sleep long", "'long' is not a number"},
    {"fail = libjida.so dloepn", "no call \"dloepn\" on libjida.so can fail; did you mean 'dlopen'?"},
    {"fail = /dev/ttyS0 tcdrain", ""},
    {"fail = /any/semaphore sem_wait ETIMEDOUT 3", ""},
    {"fail = /hxSema.XXXXXX mkstemp", ""},
    {"fail = /opt/etc/hxaux.ini close", ""},
    {"fail = /opt/etc/hxaux.ini rename EROFS", ""},
    {"fail = /opt/etc/hxaux.ini truncate ENOSPC 1", ""},
    {"fail = /opt/etc mkdir", ""},
    {"fail = /opt/etc/hxaux.ini renam", "no call \"renam\" on /opt/etc/hxaux.ini can fail; did you mean 'rename'?"},
    {"fail = /opt/etc/XXXXXX mkdtemp", ""},
    {"fail = /dev/adc-id rename", "no call \"rename\" on /dev/adc-id can fail"},
    {"fail = sleep 1500", ""},
    {"fail = * *", ""},
    {"do = prss front", "the unit has no action 'prss'; did you mean 'press'?"},
    {"voltag.0 = 1", "the unit has no property 'voltag.0'; did you mean 'voltage.0'?"},
    {"voltage.0 = 40", "voltage.0: the converter measures 0 to 39.590 volts here"},
    {"voltage.7 = -1", "voltage.7: the converter measures 0 to 6.598 volts here"},
    {"temperature.pm.0 = -274", "temperature.pm.0: '-274' is not a temperature"},
    {"led.color = 0 16 0", "led.color: 16 is outside 0 to 15"},
};

} // namespace

TEST(NameCheck, RefusesWhatTheUnitDoesNotHaveWithTheNearestThatItHas)
{
    for (const Case& each : kCases)
        EXPECT_THAT(refusalOf(each.line), Eq(each.refusal)) << each.line;
}

TEST(Faults, CountWhatTheyHitAndStayToBeSeenWhenUsedUp)
{
    Unit unit;
    unit.addFault("/dev/adc-id open EBUSY 2");

    EXPECT_EQ(unit.faults().take("/dev/adc-id", "open rdwr"), EBUSY);
    EXPECT_EQ(unit.faults().all().front().state(), "1 left, hit 1 time");
    EXPECT_EQ(unit.faults().take("/dev/adc-id", "open rdwr"), EBUSY);
    EXPECT_EQ(unit.faults().take("/dev/adc-id", "open rdwr"), 0);
    EXPECT_EQ(unit.faults().all().front().state(), "none left, hit 2 times");
}

TEST(Faults, ThatAreUsedUpGiveWayToNewOnesOfTheirKind)
{
    Unit unit;
    for (int i = 0; i < 1000; ++i) {
        unit.addFault("/dev/adc-id open EBUSY 1");
        (void)unit.faults().take("/dev/adc-id", "open rdwr");
    }

    EXPECT_EQ(unit.faults().all().size(), 1U);
}

} // namespace name_check_test
