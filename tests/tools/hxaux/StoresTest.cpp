// SPDX-License-Identifier: LicenseRef-HXAux
// Production data and settings: what is listed, and what is said of a store that fails.
#include "testing/Command.h"
#include "tests/tools/hxaux/CommandRows.h"

namespace stores_test {

using namespace hxtest;
using nlohmann::json;
using testing::AllOf;
using testing::Not;

TEST(EepromList, HasTheDocumentedPropertiesThatArePresentInTheirOrder)
{
    EXPECT_THAT(onUnit("hxaux eeprom list --store add-on", {"do = forget addon GPS"}),
                AllOf(outputIs("DATA: 2\nPCB_SERIAL: A-1104-00093\nPCB_ART: 500-1210\nDATE: 2014-02-27\n"
                               "PCB_REV: 2\nWLAN: 1\nGSM: 1\nBLUETOOTH: 1\n"),
                      errorIs(""), statusIs(0)));
    EXPECT_THAT(onUnit("hxaux eeprom list"),
                AllOf(outputMatches("^DATA: 2\nPCB_SERIAL: M-2031-00417\nUNIT_SERIAL: U-77-004711\n"),
                      outputMatches("\nCF: 1\n$"), statusIs(0)));
}

TEST(EepromList, HasTheKeysOfTheStoreInJson)
{
    const json result = jsonOf(onUnit("hxaux eeprom list --store=main --json"))["result"];

    EXPECT_EQ(result["UNIT_SERIAL"], "U-77-004711");
    EXPECT_EQ(result["RS232"], "1");
    EXPECT_EQ(result.size(), 18U);
}

TEST(EepromList, FailsWhenNothingCanBeRead)
{
    EXPECT_THAT(onUnit("hxaux eeprom list", {"absent = libjida.so"}),
                AllOf(outputIs(""), errorMatches("^eeprom list: .* \\(18\\)\n$"), statusIs(1)));
}

TEST(EepromHint, IsAboutTheStoreThatWasMeant)
{
    EXPECT_THAT(
        onUnit("hxaux eeprom get BLUETOTH --store add-on"),
        AllOf(errorMatches("did you mean 'BLUETOOTH'\\? 'hxaux eeprom list --store add-on' shows"), statusIs(1)));
    EXPECT_THAT(onUnit("hxaux eeprom get BLUETOTH"),
                AllOf(Not(errorMatches("did you mean")), errorMatches("; 'hxaux eeprom list' shows"), statusIs(1)));
}

TEST(EepromVerb, RefusesAStoreThatDoesNotExist)
{
    EXPECT_THAT(run("hxaux eeprom get DATA --store addon"),
                AllOf(errorIs("eeprom get: --store: 'addon' is not one of main, add-on; did you mean 'add-on'?\n"),
                      statusIs(2)));
    EXPECT_THAT(run("hxaux eeprom list --store= DATA"),
                AllOf(errorMatches("^eeprom list: "), outputIs(""), statusIs(2)));
}

TEST(EepromVerb, ChangesNoPropertyThatIsMissing)
{
    EXPECT_THAT(onUnit("hxaux eeprom set NEW 1; echo $?; hxaux eeprom get NEW"),
                AllOf(outputIs("1\n"), errorMatches("^eeprom set: .* \\(18\\)\n"), statusIs(1)));
}

TEST(EepromVerb, StoresAValueOfAnyLengthThatFits)
{
    const std::string longest(60, 'x');

    EXPECT_THAT(onUnit("hxaux eeprom set DATE " + longest +
                       "; hxaux eeprom get DATE; hxaux eeprom get CF; "
                       "hxaux eeprom set DATE 1; hxaux eeprom get DATE; hxaux eeprom get CF"),
                AllOf(outputIs("DATE: " + longest + "\nCF: 1\nDATE: 1\nCF: 1\n"), errorIs(""), statusIs(0)));
}

TEST(SettingsList, HasTheDocumentedSettingsInTheirOrder)
{
    const Unit unit;
    unit.writeSettings("; mine\nWLANPowerAtStartup=1\nKEY=7\nABL_k=40\nABL_status=\n");

    EXPECT_THAT(unit.run("hxaux settings list"),
                AllOf(outputIs("ABL_k: 40\nWLANPowerAtStartup: 1\n"), errorIs(""), statusIs(0)));
    EXPECT_EQ(jsonOf(unit.run("hxaux settings list --json"))["result"],
              json::parse(R"({"ABL_k":"40","WLANPowerAtStartup":"1"})"));
}

TEST(SettingsList, OfAUnitWithoutAFileIsEmptyAndDone)
{
    EXPECT_THAT(onUnit("hxaux settings list"), AllOf(outputIs(""), errorIs(""), statusIs(0)));
}

TEST(SettingsVerb, ChangesOneLineAndLeavesTheOthers)
{
    const Unit unit;
    unit.writeSettings("ABL_k=40\nKEY=a = b ; c\n");

    EXPECT_THAT(unit.run("hxaux settings set ABL_k 41"), AllOf(outputIs(""), errorIs(""), statusIs(0)));

    EXPECT_EQ(unit.settings(), "ABL_k=41\nKEY=a = b ; c\n");
    EXPECT_THAT(unit.run("hxaux settings get KEY"), outputIs("KEY: a = b ; c\n"));
}

const CommandRow kSettingsVerbRows[] = {
    {"EmptiesASetting", "hxaux settings set KEY 7 && hxaux settings set KEY \"\" && hxaux settings get KEY",
     AllOf(outputIs(""), errorMatches("the setting is missing or empty"), statusIs(1))},
    {"StoresWordsThatLookLikeOptionsBehindTheMark", "hxaux settings set -- --key --json && hxaux settings get -- --key",
     AllOf(outputIs("--key: --json\n"), errorIs(""), statusIs(0))},
    {"StoresANegativeNumber", "hxaux settings set KEY -7 && hxaux settings get KEY", outputIs("KEY: -7\n")},
};
const TestTable kSettingsVerb{"SettingsVerb", checkOnUnit, kSettingsVerbRows};

TEST(SettingsVerb, SaysThatTheFileCannotBeWritten)
{
    for (const char* const failure : {"fopen EACCES", "write ENOSPC"})
        EXPECT_THAT(
            onUnit("hxaux settings set KEY 7", {std::string("fail = /opt/etc/hxaux.ini ") + failure}),
            AllOf(errorIs("settings set: the setting is not in the file afterwards: the file cannot be written\n"),
                  outputIs(""), statusIs(3)));
}

TEST(SettingsMistake, IsJsonOnlyWhenTheOptionIsMeant)
{
    EXPECT_THAT(run("hxaux settings get a=b --json"), AllOf(errorIs(""), outputMatches("^\\{"), statusIs(2)));
    EXPECT_THAT(run("hxaux settings set a=b -- --json"),
                AllOf(errorMatches("^settings set: the key cannot be used: it contains an equals sign\n"), outputIs(""),
                      statusIs(2)));
    EXPECT_THAT(run("hxaux backlight set -- --json"),
                AllOf(errorIs("backlight set: level: '--json' is not an integer\n"), outputIs(""), statusIs(2)));
}

} // namespace stores_test
