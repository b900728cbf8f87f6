// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/OnUnit.h"

using namespace hxtest;
using testing::AllOf;

namespace {
const std::vector<std::string> kWithoutModules{"do = forget addon GSM", "do = forget addon WLAN",
                                               "do = forget addon GPS", "do = forget addon BLUETOOTH"};
} // namespace

TEST(TelematicsVerb, ShowsEverything)
{
    EXPECT_THAT(onUnit("hxaux telematics status", {"telematics.antenna-short = on"}),
                AllOf(outputIs("available: on\ngprs: off\ngprs at start: off\nwlan: off\nwlan at start: off\n"
                               "antenna short-circuit: on\n"),
                      errorIs(""), statusIs(0)));
}

TEST(TelematicsVerb, ShowsModulesThatAreNotFittedAsAbsent)
{
    EXPECT_THAT(onUnit("hxaux telematics status", kWithoutModules),
                AllOf(outputIs("available: off\ngprs: absent\ngprs at start: absent\nwlan: absent\n"
                               "wlan at start: absent\nantenna short-circuit: absent\n"),
                      errorIs(""), statusIs(0)));
}

TEST(TelematicsVerb, NamesTheMissingModule)
{
    EXPECT_THAT(onUnit("hxaux telematics gprs on", kWithoutModules),
                AllOf(errorIs("telematics gprs: The GSM/GPRS module is not available (28)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux telematics wlan", kWithoutModules),
                AllOf(errorIs("telematics wlan: The WLAN module is not available (29)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux telematics antenna", kWithoutModules),
                AllOf(errorIs("telematics antenna: The GPS module is not available (31)\n"), statusIs(1)));
}

TEST(TelematicsVerb, SwitchesTheGsmModuleOnAndOff)
{
    EXPECT_THAT(onUnit("hxaux telematics gprs on && hx-sim get telematics.gsm && hxaux telematics gprs && "
                       "hxaux telematics gprs off && hx-sim get telematics.gsm"),
                AllOf(outputMatches("on\ngprs: on\n.*off\n$"), errorIs(""), statusIs(0)));
}

TEST(TelematicsVerb, SwitchesTheGsmModuleOnAnOldBoard)
{
    EXPECT_THAT(onUnit("hxaux telematics gprs on && hx-sim get telematics.gsm && hxaux telematics gprs",
                       {"do = forget addon PCB_REV"}),
                AllOf(outputMatches("on\ngprs: on\n$"), statusIs(0)));
}

TEST(TelematicsVerb, SwitchesTheWlanModule)
{
    EXPECT_THAT(onUnit("hxaux telematics wlan on && hx-sim get telematics.wlan && hxaux telematics wlan off && "
                       "hxaux telematics wlan"),
                AllOf(outputMatches("on\nwlan: off\n$"), statusIs(0)));
}

TEST(TelematicsVerb, StoresTheWishesForTheStart)
{
    EXPECT_THAT(onUnit("hxaux telematics gprs start on && hxaux telematics wlan start off && "
                       "hxaux telematics gprs start && hxaux telematics wlan start"),
                AllOf(outputIs("gprs at start: on\nwlan at start: off\n"), errorIs(""), statusIs(0)));
}

TEST(TelematicsVerb, ASignalWaitsUntilThePowerKeyIsReleased)
{
    const char* const untilHeld = "until hx-sim get telematics.gsm-key | grep -q held; do sleep 0.05; done; ";

    EXPECT_THAT(onUnit(std::string{"hxaux telematics gprs on & "} + untilHeld +
                       "kill -TERM $!; wait $!; echo status $?; hx-sim get telematics.gsm-key; "
                       "hx-sim get telematics.gsm"),
                outputMatches("^status 143\n.*free\n.*on\n$"));
}

TEST(TelematicsVerb, ReportsAnExpanderThatDoesNotAnswer)
{
    EXPECT_THAT(
        onUnit("hxaux telematics wlan on", {"fail = libjida.so JidaI2CWriteRegister"}),
        AllOf(errorMatches("telematics wlan: I2C expander initialisation failed \\(JIDA\\) \\(24\\)"), statusIs(1)));
}
