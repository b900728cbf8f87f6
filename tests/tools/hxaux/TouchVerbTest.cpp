// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/OnUnit.h"

using namespace hxtest;
using testing::AllOf;

TEST(TouchVerb, ShowsAndSetsTheMode)
{
    EXPECT_THAT(onUnit("hxaux touch mode; hxaux touch mode 3; hxaux touch mode"),
                AllOf(outputIs("mode: 1\nmode: 3\n"), errorIs(""), statusIs(0)));
}

TEST(TouchVerb, ShowsAndSetsTheRightClickTime)
{
    EXPECT_THAT(onUnit("hxaux touch right-click 999; hxaux touch right-click"),
                AllOf(outputIs("right click: 999\n"), statusIs(0)));
}

TEST(TouchVerb, ShowsAllAdvancedSettings)
{
    EXPECT_THAT(onUnit("hxaux touch advanced"), AllOf(outputMatches("^setting 0: 800\nsetting 1: 120\n"),
                                                      outputMatches("setting 11: 10\n$"), statusIs(0)));
}

TEST(TouchVerb, SetsAnAdvancedSettingInItsOwnUnits)
{
    EXPECT_THAT(onUnit("hxaux touch advanced 3 16383; hxaux touch advanced 3; hx-sim get touch.register.7"),
                AllOf(outputMatches("^setting 3: 16383\n.*65532\n$"), statusIs(0)));
}

TEST(TouchVerb, PassesOnThatAValueIsOutOfItsRangeAndChangesNothing)
{
    EXPECT_THAT(onUnit("hxaux touch advanced 1 4096; echo $?; hxaux touch advanced 1"),
                AllOf(errorIs("touch advanced: Invalid data (range) (8)\n"), outputIs("1\nsetting 1: 120\n")));
}

TEST(TouchVerb, NamesOldFirmware)
{
    EXPECT_THAT(onUnit("hxaux touch advanced 1 100", {"version.front = 0.9.0.0"}),
                AllOf(errorIs("touch advanced: A newer version of Front uc is required (27)\n"), statusIs(1)));
}

TEST(TouchVerb, SaysOnceWhyNothingCouldBeRead)
{
    EXPECT_THAT(onUnit("hxaux touch advanced", {"absent = /dev/front-mcu-id"}),
                AllOf(errorIs("touch advanced: Open failed (1)\n"), outputIs(""), statusIs(1)));
}

TEST(TouchVerb, RefusesAModeThatDoesNotExist)
{
    EXPECT_THAT(run("hxaux touch mode 4"), AllOf(errorIs("touch mode: mode: 4 is outside 0 to 3\n"), statusIs(2)));
}
