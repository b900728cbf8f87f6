// SPDX-License-Identifier: LicenseRef-HXAux
// Calls of the C library that reach a file by other names than open: on a unit they mean the unit's file.
#include "testing/SimulatedUnit.h"
#include "testing/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace own_files_test {

namespace fs = std::filesystem;

constexpr const char* kSettings = "/opt/etc/hxaux.ini";
constexpr const char* kFolder = "/opt/etc";
constexpr const char* kDevice = "/dev/adc-id";
constexpr const char* kAttribute = "/etc/firmware.ver";

class OwnFiles : public testing::Test {
protected:
    // A stream of the machine, to be opened again.
    std::FILE* stream() { return std::fopen((folder.file("machine", "of the machine")).c_str(), "r+"); }
    static std::string rest(std::FILE* stream)
    {
        std::string text;
        for (int c = 0; (c = std::fgetc(stream)) != EOF;)
            text += static_cast<char>(c);
        return text;
    }

    SimulatedUnit unit{};
    const TemporaryFolder folder{};
};

/// Expects a call to fail with this errno.
#define EXPECT_REFUSED(call, error)                                                                                    \
    do {                                                                                                               \
        errno = 0;                                                                                                     \
        EXPECT_NE(call, 0);                                                                                            \
        EXPECT_EQ(errno, error);                                                                                       \
    } while (false)

TEST_F(OwnFiles, RemoveDeletesAFileOfTheUnit)
{
    unit.writeSettings("A=1\n");

    EXPECT_EQ(std::remove(kSettings), 0);

    EXPECT_FALSE(fs::exists(unit.settingsFile()));
    EXPECT_REFUSED(std::remove(kSettings), ENOENT);
}

TEST_F(OwnFiles, RemoveDeletesAnEmptyDirectoryOfTheUnit)
{
    unit.writeSettings("A=1\n");
    EXPECT_REFUSED(std::remove(kFolder), ENOTEMPTY);
    EXPECT_EQ(std::remove(kSettings), 0);

    EXPECT_EQ(std::remove(kFolder), 0);

    EXPECT_FALSE(fs::exists(unit.fileOf(kFolder)));
}

TEST_F(OwnFiles, UnlinkatDeletesFilesAndDirectoriesOfTheUnit)
{
    unit.writeSettings("A=1\n");

    EXPECT_REFUSED(::unlinkat(AT_FDCWD, kFolder, 0), EISDIR);
    EXPECT_REFUSED(::unlinkat(AT_FDCWD, kFolder, AT_REMOVEDIR), ENOTEMPTY);
    EXPECT_REFUSED(::unlinkat(AT_FDCWD, kSettings, AT_REMOVEDIR), ENOTDIR);
    EXPECT_EQ(::unlinkat(AT_FDCWD, kSettings, 0), 0);
    EXPECT_EQ(::unlinkat(AT_FDCWD, kFolder, AT_REMOVEDIR), 0);

    EXPECT_FALSE(fs::exists(unit.fileOf(kFolder)));
}

TEST_F(OwnFiles, NothingDeletesADeviceOrAnAttribute)
{
    for (const char* const path : {kDevice, kAttribute}) {
        EXPECT_REFUSED(::unlink(path), EPERM);
        EXPECT_REFUSED(::unlinkat(AT_FDCWD, path, 0), EPERM);
        EXPECT_REFUSED(std::remove(path), EPERM);
    }
    EXPECT_EQ(::access(kAttribute, R_OK), 0);
}

TEST_F(OwnFiles, DeletionsOfTheMachineAreLeftToIt)
{
    const std::string file = folder.file("a", "x");
    fs::create_directory(folder / "b");

    EXPECT_EQ(std::remove(file.c_str()), 0);
    EXPECT_EQ(::unlinkat(AT_FDCWD, (folder / "b").c_str(), AT_REMOVEDIR), 0);

    EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST_F(OwnFiles, FreopenReadsAFileOfTheUnit)
{
    unit.writeSettings("A=1\n");
    std::FILE* const before = stream();

    std::FILE* const after = std::freopen(kSettings, "r", before);

    EXPECT_EQ(after, before);
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(rest(after), "A=1\n");
    EXPECT_EQ(std::fclose(after), 0);
}

TEST_F(OwnFiles, FreopenWritesAFileOfTheUnit)
{
    for (const char* const mode : {"w", "a", "w+"}) {
        std::FILE* const after = std::freopen(kSettings, mode, stream());
        ASSERT_NE(after, nullptr) << mode;
        std::fputs("B=2\n", after);
        EXPECT_EQ(std::fclose(after), 0);
        EXPECT_EQ(unit.settings(), "B=2\n") << mode;
        EXPECT_EQ(std::remove(kSettings), 0);
    }
}

TEST_F(OwnFiles, FreopenMakesAFileOnlyOnceWhenThatIsWanted)
{
    std::FILE* const made = std::freopen(kSettings, "wx", stream());
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(std::fclose(made), 0);

    errno = 0;
    EXPECT_EQ(std::freopen(kSettings, "wx", stream()), nullptr);
    EXPECT_EQ(errno, EEXIST);
}

TEST_F(OwnFiles, FreopenReadsAnAttributeOfTheUnit)
{
    std::FILE* const after = std::freopen(kAttribute, "r", stream());

    ASSERT_NE(after, nullptr);
    EXPECT_THAT(rest(after), testing::StartsWith(unit.get("version.os")));
    EXPECT_EQ(std::fclose(after), 0);
}

TEST_F(OwnFiles, FreopenFailsAsFopenDoesAndClosesTheStream)
{
    unit.fail(kSettings, "fopen", EROFS, 1);
    std::FILE* const before = stream();
    const int descriptor = fileno(before);

    errno = 0;
    EXPECT_EQ(std::freopen(kSettings, "w", before), nullptr);
    EXPECT_EQ(errno, EROFS);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1) << "it is closed";
    EXPECT_EQ(std::freopen(kDevice, "r", stream()), nullptr);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(OwnFiles, FreopenGoesFromAFileOfTheUnitToTheMachine)
{
    unit.writeSettings("A=1\n");
    std::FILE* const own = std::fopen(kSettings, "r");
    const std::string other = folder.file("other", "of the machine");

    std::FILE* const after = std::freopen(other.c_str(), "r", own);

    ASSERT_NE(after, nullptr);
    unit.clearJournal();
    EXPECT_EQ(rest(after), "of the machine");
    EXPECT_EQ(std::fclose(after), 0);
    EXPECT_THAT(unit.callsTo(kSettings), testing::IsEmpty());
}

TEST_F(OwnFiles, FreopenRecordsWhatItOpens)
{
    std::FILE* const after = std::freopen(kSettings, "w", stream());
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(std::fclose(after), 0);

    EXPECT_THAT(unit.callsTo(kSettings), testing::ElementsAre("fopen w"));
}

} // namespace own_files_test
