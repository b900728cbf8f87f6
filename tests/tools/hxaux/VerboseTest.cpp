// SPDX-License-Identifier: LicenseRef-HXAux
// --verbose: each request to a device on standard error, and nothing else.
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/hxaux/OnUnit.h"

namespace verbose_test {

using namespace hxtest;
using testing::AllOf;

struct Shown : Named {
    const char* command;
    std::vector<std::string> settings;
    const char* output;
    const char* requests;
};

class VerboseCommand : public hxtest::TestWithRow<Shown> {};

ROW_TEST(VerboseCommand, PrintsItsRequests)
{
    EXPECT_THAT(onUnit(std::string("hxaux --verbose ") + row().command, row().settings),
                AllOf(outputIs(row().output), errorIs(row().requests)));
}

TEST_ROWS(
    That, VerboseCommand, kNameOfRow,
    Shown{
        "ReadsAByte", "backlight get", {}, "level: 128\n", "/dev/backlight open\n/dev/backlight 0x80010002 00 -> 80\n"},
    Shown{"WritesAByteBehindThePayload",
          "backlight set 255",
          {},
          "",
          "/dev/backlight open\n/dev/backlight 0x40010003 00 ff\n"},
    Shown{"ReadsARegister",
          "voltage 7",
          {"voltage.7.raw=16"},
          "voltage 7: 0.026 V\n",
          "/dev/adc-id open\n/dev/adc-id 0xc004003a 07 00 00 00 -> 07 00 10 00\n"},
    Shown{"CannotOpen",
          "backlight get",
          {"absent=/dev/backlight"},
          "",
          "/dev/backlight open: No such file or directory\nbacklight get: Open failed (1)\n"},
    Shown{"IsRefused",
          "backlight get",
          {"fail=/dev/backlight 0x80010002 EBUSY"},
          "",
          "/dev/backlight open\n/dev/backlight 0x80010002 00: Device or resource busy\n"
          "backlight get: IoCtrl operation failed (7)\n"},
    Shown{"OpensDevicesAlone", "settings list", {}, "", "/dev/backlight open\n/dev/diag-id open\n"},
    Shown{"UsesTheBoardLibrary", "eeprom get CF", {}, "CF: 1\n", "/dev/backlight open\n/dev/diag-id open\n"});

TEST(Verbose, LeavesJsonAlone)
{
    const Outcome outcome = onUnit("hxaux backlight get --verbose --json");

    EXPECT_EQ(jsonOf(outcome)["result"]["level"], 128);
    EXPECT_THAT(outcome, errorIs("/dev/backlight open\n/dev/backlight 0x80010002 00 -> 80\n"));
}

} // namespace verbose_test
