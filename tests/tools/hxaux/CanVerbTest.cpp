// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

const CommandRow kCanVerbRows[] = {
    {"ReadsAllRatesWithTheirUnit",
     "hxaux can get",
     AllOf(outputIs("can 1: 250 kbit/s\ncan 2: 250 kbit/s\ncan 3: 125 kbit/s\ncan 4: 250 kbit/s\n"), errorIs(""),
           statusIs(0)),
     {"can.3.bitrate = 125500"}},
    {"SetsARateAndReadsItBack", "hxaux can set 2 500 && hxaux can get 2 && hx-sim get can.2.bitrate",
     AllOf(outputMatches("can 2: 500 kbit/s\n.*500000"), errorIs(""), statusIs(0))},
    {"SaysWhatToDoWhenTheInterfaceIsUp",
     "hxaux can set 1 500",
     AllOf(outputIs(""), errorMatches("^can set: IoCtrl operation failed \\(7\\)\n.*ip link set can0 down\n$"),
           statusIs(1)),
     {"can.1.up = on"}},
    {"ChangesNothingWhenTheInterfaceIsUp",
     "hxaux can set 1 500; hx-sim get can.1.bitrate",
     outputMatches("250000"),
     {"can.1.up = on"}},
    {"ShowsTheOtherNetworksWhenOneIsMissing",
     "hxaux can get",
     AllOf(outputIs("can 1: 250 kbit/s\ncan 3: 250 kbit/s\ncan 4: 250 kbit/s\n"),
           errorIs("can get: can 2: IoCtrl operation failed (7)\n"), statusIs(1)),
     {"absent = /sys/class/net/can1/can_bittiming/bitrate"}},
};
const TestTable kCanVerb{"CanVerb", checkOnUnit, kCanVerbRows};

TEST(CanVerb, ReportsDifferentCodesForReadingAndSettingAMissingNetwork)
{
    const std::vector<std::string> gone{"absent = /sys/class/net/can0/can_bittiming/bitrate"};
    EXPECT_THAT(onUnit("hxaux can get 1", gone), AllOf(errorIs("can get: IoCtrl operation failed (7)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux can set 1 125", gone), AllOf(errorIs("can set: Open failed (1)\n"), statusIs(1)));
}

TEST(CanVerb, RefusesNetworkAndRateOutOfRange)
{
    EXPECT_THAT(run("hxaux can get 5"), AllOf(errorIs("can get: network: 5 is outside 1 to 4\n"), statusIs(2)));
    EXPECT_THAT(run("hxaux can set 1 1001"), AllOf(errorIs("can set: rate: 1001 is outside 0 to 1000\n"), statusIs(2)));
}

TEST(CanVerb, PassesOnThatFrameTypesAreNotSupported)
{
    EXPECT_THAT(onUnit("hxaux can frame-type 1"), AllOf(errorIs("can frame-type: Not supported (2)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux can frame-type 1 extended"),
                AllOf(errorIs("can frame-type: Not supported (2)\n"), statusIs(1)));
}

TEST(CanVerb, GivesJsonWithUnits)
{
    const auto json = jsonOf(onUnit("hxaux can get 4 --json"));

    EXPECT_EQ(json["result"]["can"][0]["value"], 250);
    EXPECT_EQ(json["units"]["can"], "kbit/s");
}
