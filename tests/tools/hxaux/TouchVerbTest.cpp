// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

const CommandRow kTouchVerbRows[] = {
    {"ShowsAndSetsTheMode", "hxaux touch mode; hxaux touch mode 3; hxaux touch mode",
     AllOf(outputIs("mode: 1\nmode: 3\n"), errorIs(""), statusIs(0))},
    {"ShowsAndSetsTheRightClickTime", "hxaux touch right-click 999; hxaux touch right-click",
     AllOf(outputIs("right click: 999\n"), statusIs(0))},
    {"ShowsAllAdvancedSettings", "hxaux touch advanced",
     AllOf(outputMatches("^setting 0: 800\nsetting 1: 120\n"), outputMatches("setting 11: 10\n$"), statusIs(0))},
    {"SetsAnAdvancedSettingInItsOwnUnits",
     "hxaux touch advanced 3 16383; hxaux touch advanced 3; hx-sim get touch.register.7",
     AllOf(outputMatches("^setting 3: 16383\n.*65532\n$"), statusIs(0))},
    {"PassesOnThatAValueIsOutOfItsRangeAndChangesNothing",
     "hxaux touch advanced 1 4096; echo $?; hxaux touch advanced 1",
     AllOf(errorIs("touch advanced: Invalid data (range) (8)\n"), outputIs("1\nsetting 1: 120\n"))},
    {"NamesOldFirmware",
     "hxaux touch advanced 1 100",
     AllOf(errorIs("touch advanced: A newer version of Front uc is required (27)\n"), statusIs(1)),
     {"version.front = 0.9.0.0"}},
    {"SaysOnceWhyNothingCouldBeRead",
     "hxaux touch advanced",
     AllOf(errorIs("touch advanced: Open failed (1)\n"), outputIs(""), statusIs(1)),
     {"absent = /dev/front-mcu-id"}},
};
const TestTable kTouchVerb{"TouchVerb", checkOnUnit, kTouchVerbRows};

TEST(TouchVerb, RefusesAModeThatDoesNotExist)
{
    EXPECT_THAT(run("hxaux touch mode 4"), AllOf(errorIs("touch mode: mode: 4 is outside 0 to 3\n"), statusIs(2)));
}
