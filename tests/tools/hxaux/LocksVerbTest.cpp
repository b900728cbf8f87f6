// SPDX-License-Identifier: LicenseRef-HXAux
// The locks of a unit that nothing else uses; tests/processes/ has those of several processes.
#include "tests/tools/hxaux/CommandRows.h"

namespace locks_verb_test {

using namespace hxtest;
using nlohmann::json;
using testing::AllOf;

constexpr const char* kSettings = "FILE_HXAUXINI_IS_IN_USE";

const CommandRow kLocksVerbRows[] = {
    {"ShowsThatNoneExistsOnANewUnit", "hxaux locks",
     AllOf(outputIs("FILE_HXAUXINI_IS_IN_USE: does not exist yet\n"
                    "Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ: does not exist yet\n"
                    "HXAUX_BUZZING_IN_PROGRESS: does not exist yet\n"
                    "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS: does not exist yet\n"
                    "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED: does not exist yet\n"),
           errorIs(""), statusIs(0))},
    {"ShowsAFreeLockAndSettingsThatNobodyHasRead", "hxaux backlight auto filter 5 5 50 auto; hxaux locks",
     AllOf(outputMatches("^FILE_HXAUXINI_IS_IN_USE: free, value 1, used by no process\n"), statusIs(0))},
    {"ShowsAndReleasesTheLockOfAKilledProgram",
     "hx-probe try /FILE_HXAUXINI_IS_IN_USE >/dev/null; hxaux locks | head -n 1; "
     "hxaux locks reset FILE_HXAUXINI_IS_IN_USE; hxaux locks | head -n 1",
     AllOf(outputIs("FILE_HXAUXINI_IS_IN_USE: stale, value 0, used by no process\n"
                    "FILE_HXAUXINI_IS_IN_USE: free, value 1, used by no process\n"),
           errorIs(""), statusIs(0))},
};
const TestTable kLocksVerb{"LocksVerb", checkOnUnit, kLocksVerbRows};

TEST(LocksVerb, GivesThePartsInJson)
{
    const json result = jsonOf(onUnit("hxaux settings set A 1; hxaux locks --json"))["result"];

    EXPECT_EQ(result[kSettings],
              json::parse(R"({"state":"free","value":1,"taken":false,"stale":false,"processes":[]})"));
    EXPECT_EQ(result["HXAUX_BUZZING_IN_PROGRESS"],
              json::parse(R"({"state":"does not exist yet","value":null,"taken":null,"stale":false,"processes":[]})"));
}

TEST(LocksVerb, NamesTheUserOfATakenLockInJson)
{
    const Unit unit;
    Process beep = unit.start({"buzzer", "beep", "3600000"});
    json lock;
    while (lock["taken"] != true)
        lock = jsonOf(unit.run("hxaux locks --json"))["result"]["HXAUX_BUZZING_IN_PROGRESS"];

    EXPECT_EQ(lock["state"], "taken");
    EXPECT_EQ(lock["value"], 0);
    ASSERT_EQ(lock["processes"].size(), 1U);
    EXPECT_EQ(lock["processes"][0], json({{"pid", beep.pid()}, {"program", "hxaux"}, {"waits", false}}));
}

TEST(LocksReset, SaysThatALockDoesNotExistYet)
{
    EXPECT_THAT(onUnit("hxaux locks reset FILE_HXAUXINI_IS_IN_USE --force"),
                AllOf(errorIs("locks reset: FILE_HXAUXINI_IS_IN_USE does not exist yet: there is nothing to release\n"),
                      outputIs(""), statusIs(1)));
}

TEST(LocksReset, RefusesTheCounterOfSettings)
{
    EXPECT_THAT(onUnit("hxaux locks reset \"Global\\\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ\" --force"),
                AllOf(errorIs("locks reset: it counts settings that the automatic backlight has not read yet; it is "
                              "never reset\n"),
                      statusIs(2)));
}

TEST(LocksReset, RefusesWhatIsNotALockOfTheLibrary)
{
    EXPECT_THAT(
        run("hxaux locks reset FILE"),
        AllOf(errorIs("locks reset: 'FILE' is not a lock of the library; 'hxaux locks' lists them\n"), statusIs(2)));
}

TEST(LocksCompletion, OffersEachLockThatMayBeReleased)
{
    EXPECT_THAT(run("hxaux completion words -- locks reset '' | cut -f 1"),
                outputIs("FILE_HXAUXINI_IS_IN_USE\nHXAUX_BUZZING_IN_PROGRESS\nHXAUX_FIRMWARE_UPGRADE_IN_PROGRESS\n"
                         "HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED\n"));
}

} // namespace locks_verb_test
