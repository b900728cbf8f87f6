// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;

namespace {
const std::vector<std::string> kWithoutModules{"do = forget addon GSM", "do = forget addon WLAN",
                                               "do = forget addon GPS", "do = forget addon BLUETOOTH"};
} // namespace

const CommandRow kTelematicsVerbRows[] = {
    {"ShowsEverything",
     "hxaux telematics status",
     AllOf(outputIs("available: on\ngprs: off\ngprs at start: off\nwlan: off\nwlan at start: off\n"
                    "antenna short-circuit: on\n"),
           errorIs(""), statusIs(0)),
     {"telematics.antenna-short = on"}},
    {"ShowsModulesThatAreNotFittedAsAbsent", "hxaux telematics status",
     AllOf(outputIs("available: off\ngprs: absent\ngprs at start: absent\nwlan: absent\n"
                    "wlan at start: absent\nantenna short-circuit: absent\n"),
           errorIs(""), statusIs(0)),
     kWithoutModules},
    {"SwitchesTheGsmModuleOnAndOff",
     "hxaux telematics gprs on && hx-sim get telematics.gsm && hxaux telematics gprs && "
     "hxaux telematics gprs off && hx-sim get telematics.gsm",
     AllOf(outputMatches("on\ngprs: on\n.*off\n$"), errorIs(""), statusIs(0))},
    {"SwitchesTheGsmModuleOnAnOldBoard",
     "hxaux telematics gprs on && hx-sim get telematics.gsm && hxaux telematics gprs",
     AllOf(outputMatches("on\ngprs: on\n$"), statusIs(0)),
     {"do = forget addon PCB_REV"}},
    {"SwitchesTheWlanModule",
     "hxaux telematics wlan on && hx-sim get telematics.wlan && hxaux telematics wlan off && "
     "hxaux telematics wlan",
     AllOf(outputMatches("on\nwlan: off\n$"), statusIs(0))},
    {"StoresTheWishesForTheStart",
     "hxaux telematics gprs start on && hxaux telematics wlan start off && "
     "hxaux telematics gprs start && hxaux telematics wlan start",
     AllOf(outputIs("gprs at start: on\nwlan at start: off\n"), errorIs(""), statusIs(0))},
    {"ReportsAnExpanderThatDoesNotAnswer",
     "hxaux telematics wlan on",
     AllOf(errorMatches("telematics wlan: I2C expander initialisation failed \\(JIDA\\) \\(24\\)"), statusIs(1)),
     {"fail = libjida.so JidaI2CWriteRegister"}},
};
const TestTable kTelematicsVerb{"TelematicsVerb", checkOnUnit, kTelematicsVerbRows};

TEST(TelematicsVerb, NamesTheMissingModule)
{
    EXPECT_THAT(onUnit("hxaux telematics gprs on", kWithoutModules),
                AllOf(errorIs("telematics gprs: The GSM/GPRS module is not available (28)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux telematics wlan", kWithoutModules),
                AllOf(errorIs("telematics wlan: The WLAN module is not available (29)\n"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux telematics antenna", kWithoutModules),
                AllOf(errorIs("telematics antenna: The GPS module is not available (31)\n"), statusIs(1)));
}

TEST(TelematicsVerb, ASignalWaitsUntilThePowerKeyIsReleased)
{
    const char* const untilHeld = "until hx-sim get telematics.gsm-key | grep -q held; do sleep 0.05; done; ";

    EXPECT_THAT(onUnit(std::string{"hxaux telematics gprs on & "} + untilHeld +
                       "kill -TERM $!; wait $!; echo status $?; hx-sim get telematics.gsm-key; "
                       "hx-sim get telematics.gsm"),
                outputMatches("^status 143\n.*free\n.*on\n$"));
}
