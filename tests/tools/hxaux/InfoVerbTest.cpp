// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

const CommandRow kInfoVerbRows[] = {
    {"ShowsTheProductionData", "hxaux info",
     AllOf(statusIs(0), errorIs(""),
           outputIs("unit serial: U-77-004711\n"
                    "product article: 700-2240\n"
                    "product revision: B\n"
                    "manufactured: 2014-03-18\n"
                    "main board serial: M-2031-00417\n"
                    "main board article: 500-1107\n"
                    "main board revision: C2\n"
                    "ethernet connectors: 2\n"
                    "can connectors: 4\n"
                    "video connectors: 2\n"
                    "usb connectors: 3\n"
                    "serial connectors: 1\n"
                    "add-on board serial: A-1104-00093\n"
                    "add-on board article: 500-1210\n"
                    "add-on board manufactured: 2014-02-27\n"
                    "add-on board revision: 2\n"
                    "wlan fitted: yes\n"
                    "gps fitted: yes\n"
                    "gprs fitted: yes\n"
                    "bluetooth fitted: yes\n"))},
    {"ShowsAMissingPropertyAsAbsent",
     "hxaux info",
     AllOf(statusIs(0), errorIs(""), outputMatches("main board article: absent\n"),
           outputMatches("wlan fitted: absent\n")),
     {"do = forget main PCB_ART", "do = forget addon WLAN"}},
    {"ShowsAModuleThatIsNotFitted", "hxaux info", outputMatches("gps fitted: no\n"), {"eeprom.addon.GPS = 0"}},
    {"ShowsAWholeMissingAddOnBoardAsAbsent",
     "hxaux info",
     AllOf(statusIs(0), outputMatches("add-on board serial: absent\n"), outputMatches("unit serial: U-77-004711\n")),
     {"do = erase addon"}},
    {"FailsWhenNothingCanBeRead",
     "hxaux info",
     AllOf(statusIs(1), errorMatches("^info: Failed to access eeprom \\(JIDA\\) \\(18\\)\n")),
     {"absent = libjida.so"}},
};
const TestTable kInfoVerb{"InfoVerb", checkOnUnit, kInfoVerbRows};

TEST(InfoVerb, GivesJsonWithNullForWhatIsAbsent)
{
    const auto json = jsonOf(onUnit("hxaux info --json", {"do = forget main CAN"}))["result"];

    EXPECT_EQ(json["unit_serial"], "U-77-004711");
    EXPECT_EQ(json["ethernet_connectors"], 2);
    EXPECT_TRUE(json["can_connectors"].is_null());
    EXPECT_EQ(json["wlan_fitted"], true);
}

TEST(InfoVerb, ShowsUnknownAndTheCauseWithoutTheBoardLibrary)
{
    const Outcome outcome = onUnit("hxaux info", {"absent = libjida.so"});

    EXPECT_THAT(outcome, AllOf(outputMatches("^unit serial: unknown\n"), outputMatches("wlan fitted: unknown\n"),
                               errorMatches("\nthe board library cannot be loaded; 'hxaux doctor board-library'")));
    EXPECT_TRUE(jsonOf(onUnit("hxaux info --json", {"absent = libjida.so"}))["result"]["unit_serial"].is_null());
}
