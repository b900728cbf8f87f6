// SPDX-License-Identifier: LicenseRef-HXAux
#include "devices/Telematics_Imp.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"
#include "tests/src/devices/ExpanderPins.h"

#include <functional>

namespace telematics_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr HXStatus kUntouched = static_cast<HXStatus>(-77);

/// The library reads once per process which modules are fitted; a test that needs another answer resets the cache.
class Forgetting : public Telematics_Imp {
public:
    static void modules()
    {
        for (Availability* module : {&gprs_, &wlan_, &gps_, &bt_}) {
            module->computed = false;
            module->value = false;
        }
    }
};

/// A unit whose modules this process has not read yet.
class FreshUnit : public SimulatedUnit {
public:
    explicit FreshUnit(std::initializer_list<const char*> description = {}) : SimulatedUnit{description}
    {
        Forgetting::modules();
    }
};

struct Operation {
    const char* name;
    const char* absent; ///< description line of a unit without its module
    eErr missing;
    std::function<eErr(Telematics&, HXStatus*)> call;
};

const char* const kNoGsm = "do = forget addon GSM";
const char* const kNoWlan = "do = forget addon WLAN";
const char* const kNoGps = "do = forget addon GPS";
const char* const kNoBluetooth = "do = forget addon BLUETOOTH";

const Operation kExpanderOperations[] = {
    {"getGPRSPowerStatus", kNoGsm, ERR_TELEMATICS_GPRS_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus* status) { return telematics.getGPRSPowerStatus(status); }},
    {"getWLANPowerStatus", kNoWlan, ERR_TELEMATICS_WLAN_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus* status) { return telematics.getWLANPowerStatus(status); }},
    {"getGPSAntennaStatus", kNoGps, ERR_TELEMATICS_GPS_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus* status) { return telematics.getGPSAntennaStatus(status); }},
    {"setGPRSPowerStatus", kNoGsm, ERR_TELEMATICS_GPRS_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus*) { return telematics.setGPRSPowerStatus(HXStatusEnabled); }},
    {"setWLANPowerStatus", kNoWlan, ERR_TELEMATICS_WLAN_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus*) { return telematics.setWLANPowerStatus(HXStatusEnabled); }},
};

const Operation kWishOperations[] = {
    {"getGPRSStartUpPowerStatus", kNoGsm, ERR_TELEMATICS_GPRS_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus* status) { return telematics.getGPRSStartUpPowerStatus(status); }},
    {"getWLANStartUpPowerStatus", kNoWlan, ERR_TELEMATICS_WLAN_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus* status) { return telematics.getWLANStartUpPowerStatus(status); }},
    {"setGPRSStartUpPowerStatus", kNoGsm, ERR_TELEMATICS_GPRS_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus*) { return telematics.setGPRSStartUpPowerStatus(HXStatusEnabled); }},
    {"setWLANStartUpPowerStatus", kNoWlan, ERR_TELEMATICS_WLAN_NOT_AVAILABLE,
     [](Telematics& telematics, HXStatus*) { return telematics.setWLANStartUpPowerStatus(HXStatusEnabled); }},
};

} // namespace

TEST(Telematics, TouchesNoHardwareWhenItIsCreatedAndReleased)
{
    FreshUnit unit;

    GetTelematics()->Release();

    EXPECT_THAT(unit.journal(), IsEmpty());
}

// Fitted modules.

TEST(Telematics, IsAvailableWithAnyModule)
{
    for (const char* other : {kNoBluetooth, kNoGps, kNoWlan, kNoGsm}) {
        FreshUnit unit;
        for (const char* module : {kNoBluetooth, kNoGps, kNoWlan, kNoGsm})
            if (module != other)
                unit.describe(module);
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(telematics->getTelematicsAvailable(&status), ERR_SUCCESS);

        EXPECT_EQ(status, HXStatusEnabled) << other;
    }
}

TEST(Telematics, IsNotAvailableWithoutModules)
{
    FreshUnit unit{kNoBluetooth, kNoGps, kNoWlan, kNoGsm};
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;

    EXPECT_EQ(telematics->getTelematicsAvailable(&status), ERR_SUCCESS);

    EXPECT_EQ(status, HXStatusDisabled);
}

TEST(Telematics, IsNotAvailableWithoutTheBoardLibrary)
{
    FreshUnit unit{"absent = libjida.so"};
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;

    EXPECT_EQ(telematics->getTelematicsAvailable(&status), ERR_SUCCESS);

    EXPECT_EQ(status, HXStatusDisabled);
}

TEST(Telematics, AFlagOtherThanOneCountsAsNotFitted)
{
    FreshUnit unit{"eeprom.addon.GSM = 2"};

    EXPECT_FALSE(Telematics_Imp::isGPRSAvailable());
}

TEST(Telematics, StopsReadingAtTheFirstFittedModule)
{
    FreshUnit unit{kNoBluetooth};
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;
    ASSERT_EQ(telematics->getTelematicsAvailable(&status), ERR_SUCCESS);

    unit.describe(std::string{kNoGps} + "\n" + kNoGsm);

    EXPECT_TRUE(Telematics_Imp::isGPSAvailable()) << "was read and is cached";
    EXPECT_FALSE(Telematics_Imp::isGPRSAvailable()) << "was not read before";
}

TEST(Telematics, ReadsEachModuleOncePerProcess)
{
    FreshUnit unit;
    EXPECT_TRUE(Telematics_Imp::isGPRSAvailable());
    EXPECT_TRUE(Telematics_Imp::isWLANAvailable());
    EXPECT_TRUE(Telematics_Imp::isGPSAvailable());
    EXPECT_TRUE(Telematics_Imp::isBTAvailable());
    unit.clearJournal();

    EXPECT_TRUE(Telematics_Imp::isGPRSAvailable());
    EXPECT_TRUE(Telematics_Imp::isWLANAvailable());
    EXPECT_TRUE(Telematics_Imp::isGPSAvailable());
    EXPECT_TRUE(Telematics_Imp::isBTAvailable());

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(Telematics, RemembersAFailedQuestionForTheProcessToo)
{
    FreshUnit unit{"jida.refuses = true"};
    EXPECT_FALSE(Telematics_Imp::isGPRSAvailable());

    unit.set("jida.refuses", "false");

    EXPECT_FALSE(Telematics_Imp::isGPRSAvailable());
    EXPECT_TRUE(Telematics_Imp::isWLANAvailable());
}

TEST(Telematics, AnswersAMissingModuleBeforeAnythingElse)
{
    for (const Operation& operation : kExpanderOperations) {
        FreshUnit unit{operation.absent};
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(operation.call(*telematics.get(), &status), operation.missing) << operation.name;

        EXPECT_EQ(status, kUntouched);
        EXPECT_THAT(pinTraffic(unit), IsEmpty());
    }
}

TEST(Telematics, AnswersAMissingModuleBeforeTheSettingsFileIsTouched)
{
    for (const Operation& operation : kWishOperations) {
        FreshUnit unit{operation.absent};
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(operation.call(*telematics.get(), &status), operation.missing) << operation.name;

        EXPECT_EQ(status, kUntouched);
        EXPECT_EQ(unit.settings(), "");
    }
}

// Power.

TEST(Telematics, SwitchesTheGsmModuleOnAndOff)
{
    for (const char* version : {"eeprom.addon.PCB_REV = 1", "eeprom.addon.PCB_REV = 0"}) {
        FreshUnit unit{version};
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(telematics->setGPRSPowerStatus(HXStatusEnabled), ERR_SUCCESS);
        EXPECT_EQ(unit.get("telematics.gsm"), "on");
        EXPECT_EQ(telematics->getGPRSPowerStatus(&status), ERR_SUCCESS);
        EXPECT_EQ(status, HXStatusEnabled);

        EXPECT_EQ(telematics->setGPRSPowerStatus(HXStatusDisabled), ERR_SUCCESS);
        EXPECT_EQ(unit.get("telematics.gsm"), "off");
        EXPECT_EQ(telematics->getGPRSPowerStatus(&status), ERR_SUCCESS);
        EXPECT_EQ(status, HXStatusDisabled);
    }
}

TEST(Telematics, SwitchesOffForAnyStatusExceptOne)
{
    for (const int value : {0, 2, -1}) {
        FreshUnit unit{"telematics.gsm = true"};
        Released telematics{GetTelematics()};

        EXPECT_EQ(telematics->setGPRSPowerStatus(static_cast<HXStatus>(value)), ERR_SUCCESS);
        EXPECT_EQ(telematics->setWLANPowerStatus(static_cast<HXStatus>(value)), ERR_SUCCESS);

        EXPECT_EQ(unit.get("telematics.gsm"), "off");
        EXPECT_EQ(unit.get("telematics.wlan"), "off");
    }
}

TEST(Telematics, SwitchesTheWlanModuleOnAndOff)
{
    FreshUnit unit;
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;

    EXPECT_EQ(telematics->setWLANPowerStatus(HXStatusEnabled), ERR_SUCCESS);
    EXPECT_EQ(unit.get("telematics.wlan"), "on");
    EXPECT_EQ(telematics->getWLANPowerStatus(&status), ERR_SUCCESS);
    EXPECT_EQ(status, HXStatusEnabled);

    EXPECT_EQ(telematics->setWLANPowerStatus(HXStatusDisabled), ERR_SUCCESS);
    EXPECT_EQ(unit.get("telematics.wlan"), "off");
    EXPECT_EQ(telematics->getWLANPowerStatus(&status), ERR_SUCCESS);
    EXPECT_EQ(status, HXStatusDisabled);
}

TEST(Telematics, ReportsTheAntennaLine)
{
    for (const bool isShort : {false, true}) {
        FreshUnit unit;
        unit.set("telematics.antenna-short", isShort ? "true" : "false");
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(telematics->getGPSAntennaStatus(&status), ERR_SUCCESS);

        EXPECT_EQ(status, isShort ? HXStatusEnabled : HXStatusDisabled);
    }
}

TEST(Telematics, KeepsModulesOnAfterTheObjectIsReleased)
{
    FreshUnit unit;
    {
        Released telematics{GetTelematics()};
        ASSERT_EQ(telematics->setGPRSPowerStatus(HXStatusEnabled), ERR_SUCCESS);
        ASSERT_EQ(telematics->setWLANPowerStatus(HXStatusEnabled), ERR_SUCCESS);
    }
    Released other{GetTelematics()};
    HXStatus status = kUntouched;

    EXPECT_EQ(other->getGPRSPowerStatus(&status), ERR_SUCCESS);

    EXPECT_EQ(status, HXStatusEnabled);
    EXPECT_EQ(unit.get("telematics.wlan"), "on");
}

TEST(Telematics, AnswersAnExpanderThatCannotBeSetUpAndLeavesTheStatusUntouched)
{
    for (const Operation& operation : kExpanderOperations) {
        FreshUnit unit;
        unit.fail("libjida.so", "JidaI2CReadRegister");
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(operation.call(*telematics.get(), &status), ERR_I2C_EXPANDER_INIT_FAILED) << operation.name;

        EXPECT_EQ(status, kUntouched);
    }
}

TEST(Telematics, LeavesTheStatusUntouchedWhenTheExpanderCannotBeRead)
{
    for (const Operation& operation : kExpanderOperations) {
        if (std::string{operation.name}.starts_with("set"))
            continue;
        FreshUnit unit;
        unit.fail("libjida.so", "JidaI2CReadRegister", EIO, hxsim::Fault::kAlways, 1);
        Released telematics{GetTelematics()};
        HXStatus status = kUntouched;

        EXPECT_EQ(operation.call(*telematics.get(), &status), ERR_I2C_EXPANDER_READ_FAILED) << operation.name;

        EXPECT_EQ(status, kUntouched);
    }
}

// Start-up settings.

namespace {

HXStatus gprsWish(SimulatedUnit&)
{
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;
    EXPECT_EQ(telematics->getGPRSStartUpPowerStatus(&status), ERR_SUCCESS);
    return status;
}

HXStatus wlanWish(SimulatedUnit&)
{
    Released telematics{GetTelematics()};
    HXStatus status = kUntouched;
    EXPECT_EQ(telematics->getWLANStartUpPowerStatus(&status), ERR_SUCCESS);
    return status;
}

} // namespace

TEST(Telematics, ReadsStartUpSettingsFromTheSettingsFile)
{
    FreshUnit unit;
    unit.writeSettings("GPRSPowerAtStartup=1\nWLANPowerAtStartup=0\n");
    EXPECT_EQ(gprsWish(unit), HXStatusEnabled);
    EXPECT_EQ(wlanWish(unit), HXStatusDisabled);

    unit.writeSettings("GPRSPowerAtStartup=0\nWLANPowerAtStartup=1\n");
    EXPECT_EQ(gprsWish(unit), HXStatusDisabled);
    EXPECT_EQ(wlanWish(unit), HXStatusEnabled);
}

TEST(Telematics, ReadsAMissingFileKeyOrNumberAsNotSet)
{
    FreshUnit unit;
    EXPECT_EQ(gprsWish(unit), HXStatusDisabled) << "no file";
    for (const char* text :
         {"other=1\n", "GPRSPowerAtStartup=\n", "GPRSPowerAtStartup=on\n", "GPRSPowerAtStartup=2\n",
          "GPRSPowerAtStartup=11\n", "GPRSPowerAtStartup=-1\n", "GPRSPowerAtStartup=99999999999999999999999\n"}) {
        unit.writeSettings(text);
        EXPECT_EQ(gprsWish(unit), HXStatusDisabled) << text;
        EXPECT_EQ(wlanWish(unit), HXStatusDisabled) << text;
    }
}

TEST(Telematics, TakesTheNumberAtTheStartOfASetting)
{
    FreshUnit unit;
    unit.writeSettings("GPRSPowerAtStartup = 1 yes\nWLANPowerAtStartup = 01\n");

    EXPECT_EQ(gprsWish(unit), HXStatusEnabled);
    EXPECT_EQ(wlanWish(unit), HXStatusEnabled);
}

TEST(Telematics, StoresStartUpSettingsNextToTheOtherSettings)
{
    FreshUnit unit;
    unit.writeSettings("ABL_status=1\nZ=2\n");
    Released telematics{GetTelematics()};

    EXPECT_EQ(telematics->setGPRSStartUpPowerStatus(HXStatusEnabled), ERR_SUCCESS);
    EXPECT_EQ(telematics->setWLANStartUpPowerStatus(HXStatusDisabled), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "ABL_status=1\nGPRSPowerAtStartup=1\nWLANPowerAtStartup = 0\nZ=2\n");
}

TEST(Telematics, StoresZeroForAnyValueExceptOne)
{
    for (const int value : {0, 2, -1}) {
        FreshUnit unit;
        Released telematics{GetTelematics()};

        EXPECT_EQ(telematics->setGPRSStartUpPowerStatus(static_cast<HXStatus>(value)), ERR_SUCCESS);

        EXPECT_EQ(unit.settings(), "GPRSPowerAtStartup = 0\n");
    }
}

TEST(Telematics, AnswersSuccessForASettingThatCannotBeWritten)
{
    FreshUnit unit;
    unit.fail("/opt/etc/hxaux.ini", "*");
    Released telematics{GetTelematics()};

    EXPECT_EQ(telematics->setWLANStartUpPowerStatus(HXStatusEnabled), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "");
}

TEST(Telematics, NeverActsOnStartUpSettings)
{
    FreshUnit unit;
    Released telematics{GetTelematics()};

    EXPECT_EQ(telematics->setGPRSStartUpPowerStatus(HXStatusEnabled), ERR_SUCCESS);
    EXPECT_EQ(telematics->setWLANStartUpPowerStatus(HXStatusEnabled), ERR_SUCCESS);

    EXPECT_THAT(pinTraffic(unit), IsEmpty());
}

TEST(Telematics, ReleasesTheSettingsFile)
{
    FreshUnit unit;
    EXPECT_EQ(gprsWish(unit), HXStatusDisabled);
    EXPECT_EQ(gprsWish(unit), HXStatusDisabled) << "would wait forever";
    Released telematics{GetTelematics()};
    EXPECT_EQ(telematics->setGPRSStartUpPowerStatus(HXStatusEnabled), ERR_SUCCESS);

    EXPECT_EQ(gprsWish(unit), HXStatusEnabled);
}

} // namespace telematics_test
