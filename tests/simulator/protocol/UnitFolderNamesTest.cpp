// SPDX-License-Identifier: LicenseRef-HXAux
// Names of units and of what belongs to them, and which folders are ever removed.
#include "simulator/model/Text.h"
#include "simulator/protocol/UnitFolder.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using hxsim::UnitFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

class UnitFolderTest : public testing::Test {
protected:
    UnitFolderTest()
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
    }
    ~UnitFolderTest() override
    {
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    static void makeFolder(const std::string& name, bool marked, const std::string& pid)
    {
        const fs::path folder = UnitFolder::base() + '/' + name;
        fs::create_directories(folder);
        if (marked)
            std::ofstream{folder / "made-by-hx-sim"} << "x";
        std::ofstream{folder / "pid"} << pid;
    }
    /// The file of a semaphore X of this unit.
    static std::string semaphore(const std::string& unit)
    {
        const std::string mark = UnitFolder::markOf(UnitFolder::base() + '/' + unit);
        return "/dev/shm/sem." + UnitFolder::semaphorePrefix(mark).substr(1) + "X";
    }
    static bool isThere(const std::string& name) { return fs::exists(UnitFolder::base() + '/' + name); }

    const TemporaryFolder scratch{};

private:
    std::string before_;
};

TEST_F(UnitFolderTest, TakesLettersDigitsDotsUnderscoresAndDashes)
{
    for (const char* good : {"a", "Z", "0", "unit-1", "my.unit_2", "a..b"})
        EXPECT_EQ(UnitFolder::whatIsWrongWith(good), "") << good;
}

TEST_F(UnitFolderTest, RefusesNamesThatAreNone)
{
    for (const char* bad : {"", ".", "..", ".hidden", "-x", "_x", "a/b", "a b", "../x", "\xC3\xA4", "a\n"}) {
        EXPECT_THAT(UnitFolder::whatIsWrongWith(bad), HasSubstr("is not")) << bad;
        EXPECT_THROW((void)UnitFolder::pathOf(bad), hxsim::BadUsage) << bad;
    }
}

TEST_F(UnitFolderTest, LiesBelowTheRuntimeFolderOfItsUser)
{
    EXPECT_EQ(UnitFolder::base(), scratch.path() + "/hx-sim-" + std::to_string(getuid()));
    EXPECT_EQ(UnitFolder::pathOf("x"), UnitFolder::base() + "/x");

    setenv("XDG_RUNTIME_DIR", "relative", 1);
    EXPECT_EQ(UnitFolder::base(), "/tmp/hx-sim-" + std::to_string(getuid()));
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(UnitFolder::base(), "/tmp/hx-sim-" + std::to_string(getuid()));
}

TEST_F(UnitFolderTest, HasAMarkOfItsNameAndItsPlace)
{
    const std::string mark = UnitFolder::markOf("/a/b/unit");

    EXPECT_THAT(mark, testing::StartsWith("unit-"));
    EXPECT_EQ(UnitFolder::markOf("/a/./b/../b/unit"), mark);
    EXPECT_NE(UnitFolder::markOf("/a/c/unit"), mark);
    EXPECT_NE(UnitFolder::markOf("/a/b/other"), mark);
}

TEST_F(UnitFolderTest, PrefixesSemaphoresWithUserMarkAndAbi)
{
    const std::string abi = sizeof(void*) == 4 ? "i386" : "x86_64";

    EXPECT_EQ(UnitFolder::semaphorePrefix("unit-1"), "/hxsim-" + std::to_string(getuid()) + "-unit-1-" + abi + "-");
}

TEST_F(UnitFolderTest, IsListedWhileItLives)
{
    EXPECT_THAT(UnitFolder::running(), IsEmpty());
    {
        const UnitFolder one{"one"};
        EXPECT_THAT(UnitFolder::running(), ElementsAre("one"));
        EXPECT_EQ(one.path(), UnitFolder::base() + "/one");
        EXPECT_TRUE(fs::is_directory(one.path() + "/files"));
    }
    EXPECT_THAT(UnitFolder::running(), IsEmpty());
    EXPECT_FALSE(fs::exists(UnitFolder::base()));
}

TEST_F(UnitFolderTest, IsMadeOnceOfAName)
{
    const UnitFolder one{"one"};
    std::string failure;
    try {
        const UnitFolder again{"one"};
    } catch (const std::runtime_error& error) {
        failure = error.what();
    }

    EXPECT_EQ(failure, "a unit named 'one' is already running");
    EXPECT_TRUE(fs::exists(one.path())) << "the first one stays";
    EXPECT_THAT(UnitFolder::running(), ElementsAre("one"));
}

TEST_F(UnitFolderTest, KeepsFilesUnderTheirOwnPaths)
{
    const UnitFolder one{"one"};

    EXPECT_EQ(one.fileOf("/opt/etc/hxaux.ini"), one.path() + "/files/opt/etc/hxaux.ini");
    EXPECT_TRUE(fs::is_directory(one.path() + "/files/opt/etc"));
}

TEST_F(UnitFolderTest, TakesTheNameOfAUnitThatIsDead)
{
    makeFolder("one", true, "1 1");
    const UnitFolder one{"one"};

    EXPECT_THAT(UnitFolder::running(), ElementsAre("one"));
}

TEST_F(UnitFolderTest, TakesNoNameOfAFolderThatIsNone)
{
    makeFolder("one", false, "");

    EXPECT_THROW(UnitFolder{"one"}, std::runtime_error);
    EXPECT_TRUE(isThere("one"));
}

TEST_F(UnitFolderTest, RemovesWithTheSweepWhatTheDeadLeft)
{
    const UnitFolder alive{"alive"};
    makeFolder("dead", true, "1 1");
    makeFolder("garbage", true, "nonsense");
    makeFolder("foreign", false, "1 1");

    UnitFolder::sweep();

    EXPECT_TRUE(isThere("alive"));
    EXPECT_FALSE(isThere("dead"));
    EXPECT_FALSE(isThere("garbage"));
    EXPECT_TRUE(isThere("foreign")) << "without a mark";
}

TEST_F(UnitFolderTest, RemovesTheSemaphoresOfTheDeadOnly)
{
    makeFolder("dead", true, "1 1");
    std::ofstream{semaphore("dead")} << "x";
    std::ofstream{semaphore("other")} << "x";

    UnitFolder::sweep();

    EXPECT_FALSE(fs::exists(semaphore("dead")));
    EXPECT_TRUE(fs::exists(semaphore("other")));
    fs::remove(semaphore("other"));
}

TEST_F(UnitFolderTest, TakesNoSemaphoreWithTheNameOfTheDead)
{
    makeFolder("dead", true, "1 1");
    const std::string left = semaphore("dead");
    std::ofstream{left} << "x";

    const UnitFolder folder{"dead"};

    EXPECT_FALSE(fs::exists(left));
}

TEST_F(UnitFolderTest, IsOpenFromItsSocketToItsEnd)
{
    const UnitFolder folder{"unit"};
    EXPECT_FALSE(UnitFolder::isOpen(folder.path()));
    std::ofstream{folder.path() + "/socket"} << "";
    EXPECT_TRUE(UnitFolder::isOpen(folder.path()));

    folder.remove();

    EXPECT_FALSE(UnitFolder::isOpen(folder.path()));
}

TEST_F(UnitFolderTest, RemovesNoSocketOfAnothersFolder)
{
    makeFolder("other", false, "1 1");
    const std::string socket = UnitFolder::base() + "/other/socket";
    std::ofstream{socket} << "";

    EXPECT_THROW(UnitFolder{"other"}, std::runtime_error);
    UnitFolder::sweep();

    EXPECT_TRUE(fs::exists(socket));
}

TEST_F(UnitFolderTest, FollowsNoLinkOutOfItsFolder)
{
    const TemporaryFolder outside;
    std::ofstream{outside.path() + "/precious"} << "x";
    {
        const UnitFolder one{"one"};
        fs::create_directory_symlink(outside.path(), one.path() + "/files/link");
    }

    EXPECT_TRUE(fs::exists(outside.path() + "/precious"));
}

TEST_F(UnitFolderTest, SaysWhyUnitsCannotBeSeen)
{
    EXPECT_EQ(UnitFolder::whatHidesThem(), "") << "there are none";
    std::ofstream{UnitFolder::base()} << "x";

    EXPECT_EQ(UnitFolder::whatHidesThem(), "the folder " + UnitFolder::base() + " cannot be read: Not a directory");
    EXPECT_THROW(UnitFolder{"one"}, std::runtime_error);
}

} // namespace
