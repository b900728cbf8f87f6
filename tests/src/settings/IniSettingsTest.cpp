// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"

#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "testing/TestTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

/// An object that has loaded the unit's settings file.
class Loaded : public IniSettings {
public:
    Loaded() { load(LinuxWrapper::GetSettingsFileName()); }
};

std::string valueOf(SimulatedUnit& unit, const std::string& file, const std::string& key)
{
    unit.writeSettings(file);
    return Loaded{}.get(key);
}

std::string afterSetting(SimulatedUnit& unit, const std::string& file, const std::string& key, const std::string& value)
{
    unit.writeSettings(file);
    Loaded{}.set(key, value);
    return unit.settings();
}

struct Reading {
    TestName name;
    const char* file;
    const char* key;
    const char* value;
};

void checkReading(const Reading& row)
{
    SimulatedUnit unit;

    EXPECT_EQ(valueOf(unit, row.file, row.key), row.value);
}

struct Setting {
    TestName name;
    const char* before;
    const char* key;
    const char* value;
    const char* after;
};

void checkSetting(const Setting& row)
{
    SimulatedUnit unit;

    EXPECT_EQ(afterSetting(unit, row.before, row.key, row.value), row.after);
}

// Reading.

TEST(SettingsFile, HasItsFixedPlace)
{
    EXPECT_STREQ(LinuxWrapper::GetSettingsFileName(), "/opt/etc/hxaux.ini");
}

TEST(SettingsFile, IgnoresCommentsAndTheTwoLoneSigns)
{
    SimulatedUnit unit;
    unit.writeSettings("; a comment\nABL_X = 5\n[\n/\n\n");

    EXPECT_EQ(Loaded{}.get("ABL_X"), "5");
    Loaded{}.set("ABL_X", "6");
    EXPECT_EQ(unit.settings(), "ABL_X=6\n"); // no other entry was added
}

const Setting kFirstSettings[] = {
    {"KeepsALineWithoutAnEqualsSignAsTheEmptyKey", "[ABL]\n", "A", "1", "=\nA = 1\n"},
    {"TakesALineOfBlanksForTheEmptyKey", "   \n", "A", "1", "=\nA = 1\n"},
    {"ReadsAnEmptyFileAsNoSettings", "", "A", "1", "A = 1\n"},
};
const TestTable kFirstSet{"SettingsFile", checkSetting, kFirstSettings};

const Reading kReadings[] = {
    {"TakesASemicolonAfterABlankForAKey", " ;K = v\n", ";K", "v"},
    {"TrimsBlanksRoundKeyAndValue", "  K  =  v \n", "K", "v"},
    {"KeepsTabsInKeyAndValue", "\tK =\tv\t\n", "\tK", "\tv\t"},
    {"KeepsACarriageReturnInTheValue", "K=v\r\n", "K", "v\r"},
    {"SplitsALineAtItsFirstEqualsSign", "K=a=b\n", "K", "a=b"},
    {"KeepsTheLastOfTwoValues", "K=1\nK=2\n", "K", "2"},
    {"ReadsALastLineWithoutLineFeed", "A=1\nB=2", "B", "2"},
};
const TestTable kRead{"SettingsFile", checkReading, kReadings};

TEST(SettingsFile, ReadsAMissingFileAsNoSettings)
{
    SimulatedUnit unit;

    EXPECT_EQ(Loaded{}.get("A"), "");
}

TEST(SettingsFile, ReadsAFolderAsNoSettings)
{
    SimulatedUnit unit;
    ASSERT_EQ(mkdir(unit.settingsFile().c_str(), 0777), 0);

    EXPECT_EQ(Loaded{}.get("A"), "");
}

TEST(SettingsFile, SurvivesAFolderInItsPlaceOnWriting)
{
    SimulatedUnit unit;
    ASSERT_EQ(mkdir(unit.settingsFile().c_str(), 0777), 0);
    Loaded settings;

    settings.set("A", "1");

    EXPECT_EQ(settings.get("A"), "1"); // kept for this object, lost with it
}

TEST(SettingsFile, ReadsAnUnreadableFileAsNoSettings)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\n");
    unit.fail("/opt/etc/hxaux.ini", "fopen", EACCES);

    EXPECT_EQ(Loaded{}.get("A"), "");
}

TEST(SettingsFile, IsReadAfreshByAReload)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\nB=2\n");
    Loaded settings;
    (void)settings.get("C");
    unit.writeSettings("A=3\n");

    settings.reload();
    settings.set("D", "4");

    EXPECT_EQ(unit.settings(), "A=3\nD = 4\n");
}

TEST(SettingsFile, IsNeitherReadNorWrittenWhenItIsAFifo)
{
    SimulatedUnit unit;
    ASSERT_EQ(mkfifo(unit.settingsFile().c_str(), 0666), 0);
    Loaded settings;

    settings.set("A", "1");

    EXPECT_EQ(settings.get("A"), "1");
    EXPECT_THAT(unit.callsTo("/opt/etc/hxaux.ini"), Not(Contains(testing::StartsWith("fopen"))));
}

TEST(SettingsFile, IsNeitherReadNorWrittenWhenItIsADevice)
{
    SimulatedUnit unit;
    ASSERT_EQ(symlink("/dev/zero", unit.settingsFile().c_str()), 0);
    Loaded settings;

    settings.set("A", "1");

    EXPECT_THAT(unit.callsTo("/opt/etc/hxaux.ini"), Not(Contains(testing::StartsWith("fopen"))));
}

TEST(SettingsFile, IsCreatedAsTheTargetOfADanglingLink)
{
    SimulatedUnit unit;
    const std::string target = unit.folder() + "/target";
    ASSERT_EQ(symlink(target.c_str(), unit.settingsFile().c_str()), 0);

    Loaded{}.set("A", "1");

    EXPECT_EQ(unit.settings(), "A = 1\n");
    struct stat status {};
    ASSERT_EQ(lstat(unit.settingsFile().c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(SettingsFile, ReadsTenMegabytes)
{
    SimulatedUnit unit;
    std::string text;
    for (int i = 0; text.size() < 10'000'000; ++i)
        text += "key" + std::to_string(i) + "=value\n";
    text += "LAST=reached\n";

    EXPECT_EQ(valueOf(unit, text, "LAST"), "reached");
}

TEST(SettingsFile, ReadsOneLineOfTenMegabytes)
{
    SimulatedUnit unit;

    EXPECT_EQ(valueOf(unit, "K=" + std::string(10'000'000, 'x') + "\n", "K").size(), 10'000'000U);
}

TEST(SettingsFile, KeepsBinaryBytes)
{
    SimulatedUnit unit;
    const std::string binary{"K=\x00\x01\xFE\xFF\x80\n", 8};

    EXPECT_EQ(valueOf(unit, binary, "K"), std::string("\x00\x01\xFE\xFF\x80", 5));
}

TEST(SettingsFile, IsAddedToWhatWasLoadedBefore)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\nB=1\n");
    Loaded settings;
    unit.writeSettings("B=2\n");

    settings.load(LinuxWrapper::GetSettingsFileName());

    EXPECT_EQ(settings.get("A"), "1");
    EXPECT_EQ(settings.get("B"), "2");
}

// Writing.

const Setting kSettings[] = {
    {"PutsANewKeyInItsSortedPlaceWithBlanks", "A=1\nC=3\n", "B", "2", "A=1\nB = 2\nC=3\n"},
    {"RemovesTheBlanksOfAKeyThatIsThere", "A=1\nB = 2\nC=3\n", "B", "4", "A=1\nB=4\nC=3\n"},
    {"SortsByBytesSoThatUpperCaseComesFirst", "a=1\nB=2\n\xC4=3\n", "Z", "4", "B=2\nZ = 4\na=1\n\xC4=3\n"},
    {"TrimsKeyAndValue", "A=1\n", "  A ", " 2  ", "A=2\n"},
    {"LosesCommentsAndTheOrderOfLines", "; comment\nB=2\n\nA=1\n", "B", "3", "A=1\nB=3\n"},
};
const TestTable kSet{"SettingsWrite", checkSetting, kSettings};

TEST(SettingsWrite, SortsKeysThatAreSetOneByOne)
{
    SimulatedUnit unit;
    Loaded settings;

    settings.set("B", "1");
    EXPECT_EQ(unit.settings(), "B = 1\n");
    settings.set("A", "2");
    EXPECT_EQ(unit.settings(), "A = 2\nB=1\n");
    settings.set("C", "3");
    EXPECT_EQ(unit.settings(), "A=2\nB=1\nC = 3\n");
}

TEST(SettingsWrite, WritesAKeyThatWasOnlyRead)
{
    SimulatedUnit unit;
    Loaded settings;

    (void)settings.get("ABSENT");
    settings.set("B", "1");

    EXPECT_EQ(unit.settings(), "ABSENT=\nB = 1\n");
}

TEST(SettingsWrite, HasNoBlanksForAKeyThatWasReadBefore)
{
    SimulatedUnit unit;
    Loaded settings;

    (void)settings.get("K");
    settings.set("K", "1");

    EXPECT_EQ(unit.settings(), "K=1\n");
}

TEST(SettingsWrite, DoesNotTrimTheKeyThatIsLookedUp)
{
    SimulatedUnit unit;
    unit.writeSettings("K=1\n");

    EXPECT_EQ(Loaded{}.get(" K"), "");
}

TEST(SettingsWrite, WritesNothingBeforeALoadButKeepsTheValue)
{
    SimulatedUnit unit;
    IniSettings settings;

    settings.set("A", "1");

    EXPECT_EQ(settings.get("A"), "1");
    EXPECT_EQ(unit.settings(), "");
}

TEST(SettingsWrite, IsSilentWhenTheFileCannotBeWritten)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\n");
    Loaded settings;
    unit.fail("/opt/etc/hxaux.ini", "fopen", EROFS);

    settings.set("A", "2");

    EXPECT_EQ(settings.get("A"), "2");
    EXPECT_EQ(unit.settings(), "A=1\n");
}

class UnreadableSettings : public hxtest::TestWithRow<int> {};

ROW_TEST(UnreadableSettings, KeepTheirFileAsItIs)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\nB=2\n");
    unit.fail("/opt/etc/hxaux.ini", "fopen", row(), 1);
    Loaded settings;

    settings.set("A", "3");

    EXPECT_EQ(settings.get("A"), "3") << "for this object";
    EXPECT_EQ(unit.settings(), "A=1\nB=2\n");
}
TEST_ROWS(Settings, UnreadableSettings, strerrorname_np, EMFILE, ENFILE, EACCES, EIO, ELOOP);

TEST(SettingsFile, StaysAsItIsWhenItCannotBeReadToItsEnd)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\nB=2\n");
    unit.fail("/opt/etc/hxaux.ini", "read", EIO, 1);
    Loaded settings;

    settings.set("A", "3");

    EXPECT_EQ(unit.settings(), "A=1\nB=2\n");
}

TEST(SettingsWrite, StoresSeveralSettingsOneByOne)
{
    SimulatedUnit unit;
    Loaded settings;
    unit.clearJournal();

    settings.set({{"B", "1"}, {" A ", " 2 "}, {"C", "3"}});

    EXPECT_EQ(unit.settings(), "A=2\nB=1\nC = 3\n");
    const auto calls = unit.callsTo("/opt/etc/hxaux.ini");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "fopen w"), 3);
}

TEST(SettingsWrite, SucceedsAfterAnAttemptThatFailed)
{
    SimulatedUnit unit;
    Loaded settings;
    unit.fail("/opt/etc/hxaux.ini", "fopen", EROFS, 1);
    settings.set("A", "1");

    settings.set("B", "2");

    EXPECT_EQ(unit.settings(), "A=1\nB = 2\n");
}

TEST(SettingsWrite, RestoresTheTextOfTheLastWriteWithoutSpaceForTheNext)
{
    SimulatedUnit unit;
    unit.writeSettings("A=1\n");
    Loaded settings;
    settings.set("B", "2");
    unit.fail("/opt/etc/hxaux.ini", "write", ENOSPC, 1);

    settings.set("C", "3");

    EXPECT_EQ(unit.settings(), "A=1\nB = 2\n");
}

TEST(SettingsWrite, CreatesAFileThatEveryUserMayWrite)
{
    SimulatedUnit unit;
    struct stat status {};

    Loaded{}.set("A", "1");

    ASSERT_EQ(stat(unit.settingsFile().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0666U);
}

TEST(SettingsWrite, RestoresTheProcessesMask)
{
    SimulatedUnit unit;
    const mode_t before = umask(027);

    Loaded{}.set("A", "1");

    EXPECT_EQ(umask(before), 027U);
}

// The lock.

TEST(SettingsLock, IsHeldFromConstructionToDestruction)
{
    SimulatedUnit unit;
    {
        const IniSettings settings;
        int other = 0;
        ASSERT_TRUE(LinuxWrapper::CreateSema(other, "FILE_HXAUXINI_IS_IN_USE"));
        EXPECT_FALSE(LinuxWrapper::WaitForSema(other, false));
        LinuxWrapper::CloseSema(other);
    }
    int after = 0;
    ASSERT_TRUE(LinuxWrapper::CreateSema(after, "FILE_HXAUXINI_IS_IN_USE"));
    EXPECT_TRUE(LinuxWrapper::WaitForSema(after, false));
    LinuxWrapper::ReleaseSema(after);
    LinuxWrapper::CloseSema(after);
}

TEST(SettingsLock, IsOpenedAcquiredReleasedAndClosed)
{
    SimulatedUnit unit;

    Loaded{}.set("A", "1");

    EXPECT_THAT(unit.callsTo("/FILE_HXAUXINI_IS_IN_USE"),
                ElementsAre("sem_open creat excl 1", "sem_wait", "sem_post", "sem_close"));
    EXPECT_THAT(unit.journal(), InOrder({"/FILE_HXAUXINI_IS_IN_USE sem_wait", "/opt/etc/hxaux.ini fopen r !ENOENT",
                                         "/opt/etc/hxaux.ini fopen w", "/FILE_HXAUXINI_IS_IN_USE sem_post"}));
}

TEST(SettingsLock, IsWaitedForAgainAfterASignal)
{
    SimulatedUnit unit;
    unit.fail("/FILE_HXAUXINI_IS_IN_USE", "sem_wait", EINTR, 2);
    testing::internal::CaptureStdout();

    Loaded{}.set("A", "1");

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "sem_wait failed\nsem_wait failed\n");
    EXPECT_THAT(unit.callsTo("/FILE_HXAUXINI_IS_IN_USE"),
                ElementsAre("sem_open creat excl 1", "sem_wait !EINTR", "sem_wait !EINTR", "sem_wait", "sem_post",
                            "sem_close"));
}

TEST(SettingsLock, IsNotReleasedWhenItWasNeverAcquired)
{
    SimulatedUnit unit;
    unit.fail("/FILE_HXAUXINI_IS_IN_USE", "sem_wait", EINVAL);
    testing::internal::CaptureStdout();

    Loaded{}.set("A", "1");

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "sem_wait failed\n");
    EXPECT_EQ(unit.settings(), "A = 1\n");
    EXPECT_THAT(unit.callsTo("/FILE_HXAUXINI_IS_IN_USE"), Not(Contains("sem_post")));
}

TEST(SettingsLock, DoesNotStopTheSettingsWhenItCannotBeOpened)
{
    SimulatedUnit unit;
    unit.fail("/FILE_HXAUXINI_IS_IN_USE", "sem_open", EACCES);
    testing::internal::CaptureStdout();

    Loaded{}.set("A", "1");

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "sem_open failed with error: Permission denied\nsem_wait failed\nfailed to close semaphore\n");
    EXPECT_EQ(unit.settings(), "A = 1\n");
}

} // namespace
