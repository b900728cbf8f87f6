// SPDX-License-Identifier: LicenseRef-HXAux
// What a program changes and asks by a path: the unit's own files, never its devices, and nothing of the machine.
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "testing/TemporaryFolder.h"

#include <climits>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <ftw.h>
#include <glob.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

constexpr char kSettings[] = "/opt/etc/hxaux.ini";
constexpr char kDevice[] = "/dev/backlight";

class ChangeCalls : public testing::Test {
protected:
    void fill(const std::string& content) const { std::ofstream{unit.settingsFile()} << content; }
    [[nodiscard]] std::string content() const
    {
        std::string text;
        std::getline(std::ifstream{unit.settingsFile()}, text, '\0');
        return text;
    }

    SimulatedUnit unit{};
    const TemporaryFolder scratch{};
};

/// Expects a call to fail with this errno.
#define EXPECT_FAILS(call, error)                                                                                      \
    do {                                                                                                               \
        errno = 0;                                                                                                     \
        EXPECT_EQ(call, -1);                                                                                           \
        EXPECT_EQ(errno, error);                                                                                       \
    } while (false)

TEST_F(ChangeCalls, ChangeTheUnitsFiles)
{
    fill("0123456789");

    EXPECT_EQ(::truncate(kSettings, 4), 0);
    EXPECT_EQ(content(), "0123");
    EXPECT_EQ(::chmod(kSettings, 0600), 0);
    EXPECT_EQ(fs::status(unit.settingsFile()).permissions(), fs::perms{0600});
    EXPECT_THAT(unit.callsTo(kSettings), Contains("truncate"));
}

TEST_F(ChangeCalls, ChangeNoDevice)
{
    EXPECT_FAILS(::truncate(kDevice, 0), EPERM);
    EXPECT_FAILS(::chmod(kDevice, 0600), EPERM);
    EXPECT_FAILS(::chown(kDevice, 0, 0), EPERM);
    EXPECT_FAILS(::mkdir(kDevice, 0700), EPERM);
    EXPECT_FAILS(::rmdir(kDevice), EPERM);
    EXPECT_FAILS(::symlink("/tmp", kDevice), EPERM);
    EXPECT_FAILS(::unlink(kDevice), EPERM);
    EXPECT_FAILS(::utime(kDevice, nullptr), EPERM);
    EXPECT_FAILS(::setxattr(kDevice, "user.x", "", 0, 0), EPERM);
    EXPECT_FAILS(::removexattr(kDevice, "user.x"), EPERM);
    EXPECT_EQ(::access(kDevice, F_OK), 0);
}

TEST_F(ChangeCalls, CreateNothingInThePlaceOfADevice)
{
    EXPECT_FAILS(::mkfifo(kDevice, 0600), EEXIST);
    EXPECT_FAILS(::mkfifoat(AT_FDCWD, kDevice, 0600), EEXIST);
    EXPECT_FAILS(::mknod(kDevice, S_IFIFO | 0600, 0), EEXIST);
    EXPECT_FAILS(::mknodat(AT_FDCWD, kDevice, S_IFIFO | 0600, 0), EEXIST);
}

TEST_F(ChangeCalls, ReachEverythingInADirectoryOfTheUnit)
{
    EXPECT_EQ(::mkdir("/opt/etc/sub", 0700), 0);
    EXPECT_EQ(::mknod("/opt/etc/sub/fifo", S_IFIFO | 0600, 0), 0);
    EXPECT_EQ(::rename("/opt/etc/sub/fifo", "/opt/etc/fifo"), 0);

    EXPECT_TRUE(fs::is_fifo(unit.fileOf("/opt/etc/fifo")));
    EXPECT_THAT(unit.callsTo("/opt/etc/sub/fifo"), ElementsAre("mknod", "rename"));
    EXPECT_FAILS(::mkdir("/opt/etc/none/sub", 0700), ENOENT);
    EXPECT_FALSE(fs::exists("/opt/etc/none"));
}

TEST_F(ChangeCalls, RecordTheTemplateOfATemporaryFile)
{
    char file[] = "/opt/etc/.new-XXXXXX.txt";
    const int fd = ::mkostemps(file, 4, O_CLOEXEC);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(::close(fd), 0);
    EXPECT_TRUE(fs::exists(unit.fileOf(file)));
    EXPECT_EQ(::rename(file, kSettings), 0);

    EXPECT_THAT(unit.callsTo("/opt/etc/.new-XXXXXX.txt"), ElementsAre("mkstemp", "rename"));
    char folder[] = "/opt/etc/XXXXXX";
    unit.fail("/opt/etc/XXXXXX", "mkdtemp", ENOSPC, 1);
    EXPECT_EQ(::mkdtemp(folder), nullptr);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_STREQ(folder, "/opt/etc/XXXXXX");
}

TEST_F(ChangeCalls, WalkADeviceAsTheFileThatItIs)
{
    static std::string seen;
    const auto visit = [](const char* path, const struct stat* status, int kind, FTW* position) {
        seen += path + std::string{' '} + (path + position->base) +
                (kind == FTW_F && S_ISCHR(status->st_mode) ? " file" : "");
        return 3;
    };
    EXPECT_EQ(::nftw(kDevice, visit, 5, 0), 3);
    EXPECT_EQ(seen, "/dev/backlight backlight file");
    glob_t found{};
    EXPECT_EQ(::glob(kDevice, 0, nullptr, &found), 0);
    EXPECT_EQ(found.gl_pathc, 1U);
    ::globfree(&found);
    dirent** entries = nullptr;
    EXPECT_FAILS(::scandir(kDevice, &entries, nullptr, nullptr), ENOTDIR);
    EXPECT_FAILS(::chdir(kDevice), ENOTDIR);
    unit.describe("absent = /dev/backlight");
    EXPECT_FAILS(::nftw(kDevice, visit, 5, 0), ENOENT);
    EXPECT_EQ(::glob(kDevice, 0, nullptr, &found), GLOB_NOMATCH);
    EXPECT_FAILS(::chdir(kDevice), ENOENT);
}

TEST_F(ChangeCalls, LeaveGlobWithFunctionsOfTheProgramToIt)
{
    glob_t found{};
    found.gl_opendir = [](const char*) -> void* { return nullptr; };
    found.gl_readdir = [](void*) -> dirent* { return nullptr; };
    found.gl_closedir = [](void*) {};
    found.gl_stat = found.gl_lstat = [](const char*, struct stat*) { return -1; };
    const auto before = found.gl_opendir;

    EXPECT_EQ(::glob("/opt/etc/*", GLOB_ALTDIRFUNC, nullptr, &found), GLOB_NOMATCH);
    EXPECT_EQ(::glob("/opt/etc/*", 0, nullptr, &found), GLOB_NOMATCH);
    EXPECT_EQ(found.gl_opendir, before);
    EXPECT_EQ(found.gl_flags & GLOB_ALTDIRFUNC, 0);
}

TEST_F(ChangeCalls, FindNothingWhereTheUnitLacksIt)
{
    unit.describe("absent = /dev/backlight");

    EXPECT_FAILS(::chmod(kDevice, 0600), ENOENT);
    EXPECT_FAILS(::unlink(kDevice), ENOENT);
    EXPECT_FAILS(::chmod(kSettings, 0600), ENOENT);
}

TEST_F(ChangeCalls, MoveNothingBetweenUnitAndMachine)
{
    fill("mine");
    const std::string outside = scratch.path() + "/outside";
    std::ofstream{outside} << "theirs";

    EXPECT_FAILS(::rename(kSettings, (outside + "2").c_str()), EXDEV);
    EXPECT_FAILS(::rename(outside.c_str(), kSettings), EXDEV);
    EXPECT_FAILS(::link(outside.c_str(), kSettings), EXDEV);
    EXPECT_EQ(content(), "mine");
    EXPECT_TRUE(fs::exists(outside));
    EXPECT_FALSE(fs::exists(outside + "2"));
}

TEST_F(ChangeCalls, MoveTheMachinesFilesAsEver)
{
    const std::string one = scratch.path() + "/one";
    std::ofstream{one} << "x";

    EXPECT_EQ(::rename(one.c_str(), (one + "2").c_str()), 0);

    EXPECT_TRUE(fs::exists(one + "2"));
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST_F(ChangeCalls, FailAsTheyAreAskedTo)
{
    fill("mine");
    unit.fail(kSettings, "unlink", EROFS, 1);

    EXPECT_FAILS(::unlink(kSettings), EROFS);
    EXPECT_EQ(content(), "mine");
    EXPECT_EQ(::unlink(kSettings), 0);
    EXPECT_FALSE(fs::exists(unit.settingsFile()));
    EXPECT_THAT(unit.callsTo(kSettings), ElementsAre("unlink !EROFS", "unlink"));
}

struct Change {
    const char* call;
    int (*make)();
};

class FailedChange : public ChangeCalls, public hxtest::WithRow<Change> {};

ROW_TEST(FailedChange, IsMadeByItsNameAndChangesNothing)
{
    fill("mine");
    const fs::file_time_type before = fs::last_write_time(unit.settingsFile());
    unit.describe(std::string{"fail = /opt/etc/hxaux.ini "} + row().call + " EROFS 1");

    EXPECT_FAILS(row().make(), EROFS);

    EXPECT_EQ(content(), "mine");
    EXPECT_EQ(fs::last_write_time(unit.settingsFile()), before);
    EXPECT_THAT(unit.callsTo(kSettings), ElementsAre(row().call + std::string{" !EROFS"}));
    EXPECT_EQ(fs::status(unit.settingsFile()).permissions() & fs::perms::others_exec, fs::perms::none);
}

TEST_ROWS(
    Of, FailedChange, [](const auto& row) { return row.call; },
    Change{"chmod", [] { return ::chmod(kSettings, 0777); }}, Change{"chown", [] { return ::chown(kSettings, 1, 1); }},
    Change{"link", [] { return ::link(kSettings, "/opt/etc/other"); }},
    Change{"mkdir", [] { return ::mkdir(kSettings, 0700); }},
    Change{"mknod", [] { return ::mknod(kSettings, S_IFREG, 0); }},
    Change{"removexattr", [] { return ::removexattr(kSettings, "user.x"); }},
    Change{"rename", [] { return ::rename(kSettings, "/opt/etc/other"); }},
    Change{"rmdir", [] { return ::rmdir(kSettings); }},
    Change{"setxattr", [] { return ::setxattr(kSettings, "user.x", "", 0, 0); }},
    Change{"symlink", [] { return ::symlink("other", kSettings); }},
    Change{"truncate", [] { return ::truncate(kSettings, 0); }}, Change{"unlink", [] { return ::unlink(kSettings); }},
    Change{"utime", [] { return ::utimensat(AT_FDCWD, kSettings, nullptr, 0); }});

TEST_F(ChangeCalls, ShowNoLinkAmongTheUnitsPaths)
{
    std::array<char, PATH_MAX> buffer{};
    EXPECT_FAILS(::readlink(kDevice, buffer.data(), buffer.size()), EINVAL);
    EXPECT_FAILS(::readlinkat(AT_FDCWD, kDevice, buffer.data(), buffer.size()), EINVAL);
    unit.describe("absent = /dev/backlight");
    EXPECT_FAILS(::readlink(kDevice, buffer.data(), buffer.size()), ENOENT);
}

TEST_F(ChangeCalls, ResolveTheUnitsPaths)
{
    std::array<char, PATH_MAX> buffer{};
    EXPECT_STREQ(::realpath("/dev/../dev/./backlight", buffer.data()), kDevice);
    const std::unique_ptr<char, decltype(&std::free)> own{::realpath(kDevice, nullptr), std::free};
    EXPECT_STREQ(own.get(), kDevice);
    unit.describe("absent = /dev/backlight");
    EXPECT_EQ(::realpath(kDevice, buffer.data()), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(ChangeCalls, OpenTheUnitsDirectoriesAndNoDevices)
{
    fill("mine");
    DIR* const folder = ::opendir("/opt/etc");
    ASSERT_NE(folder, nullptr);
    bool seen = false;
    for (const dirent* entry = ::readdir(folder); entry != nullptr; entry = ::readdir(folder))
        seen = seen || std::string{entry->d_name} == "hxaux.ini";
    EXPECT_TRUE(seen);
    EXPECT_EQ(::closedir(folder), 0);

    EXPECT_EQ(::opendir(kDevice), nullptr);
    EXPECT_EQ(errno, ENOTDIR);
}

TEST_F(ChangeCalls, ShowExtendedAttributesOfWhatIsThere)
{
    std::array<char, 100> buffer{};

    EXPECT_GE(::listxattr(kDevice, buffer.data(), buffer.size()), 0);
    unit.describe("absent = /dev/backlight");
    EXPECT_FAILS(::listxattr(kDevice, buffer.data(), buffer.size()), ENOENT);
    EXPECT_FAILS(::getxattr(kDevice, "user.x", buffer.data(), buffer.size()), ENOENT);
}

TEST_F(ChangeCalls, OpenStreamsOfAttributesForReadingOnly)
{
    FILE* const stream = std::fopen("/etc/firmware.ver", "r");
    ASSERT_NE(stream, nullptr);
    std::array<char, 20> line{};
    EXPECT_STREQ(std::fgets(line.data(), line.size(), stream), "2.1.0.5\n");
    EXPECT_EQ(std::fclose(stream), 0);

    EXPECT_EQ(std::fopen("/etc/firmware.ver", "w"), nullptr);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(std::fopen(kDevice, "r"), nullptr);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(ChangeCalls, CloseAFileEvenWhenItsCloseIsAskedToFail)
{
    FILE* const stream = std::fopen(kSettings, "w");
    ASSERT_NE(stream, nullptr);
    std::fputs("A=1", stream);
    unit.fail(kSettings, "fclose", ENOSPC, 1);

    EXPECT_EQ(std::fclose(stream), -1);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(content(), "A=1");
}

TEST_F(ChangeCalls, StartNoThreadWhenThatIsAskedToFail)
{
    unit.fail("thread", "start", EAGAIN, 1);
    pthread_t thread{};

    EXPECT_EQ(pthread_create(
                  &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr),
              EAGAIN);
    ASSERT_EQ(pthread_create(
                  &thread, nullptr, [](void* value) { return value; }, this),
              0);
    void* result = nullptr;
    EXPECT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, this);
    EXPECT_THAT(unit.callsTo("thread"), ElementsAre("start !EAGAIN", "start"));
}

TEST_F(ChangeCalls, RecordTheMaskOfNewFiles)
{
    const mode_t before = ::umask(027);
    EXPECT_EQ(::umask(before), mode_t{027});

    EXPECT_THAT(unit.callsTo("umask"), Contains("027"));
}

TEST_F(ChangeCalls, LoadTheBoardLibraryOfTheUnit)
{
    void* const library = dlopen("libjida.so", RTLD_LAZY);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_NE(dlsym(library, "JidaI2CWrite"), nullptr);
    dlclose(library);

    unit.describe("absent = libjida.so");
    EXPECT_EQ(dlopen("libjida.so", RTLD_LAZY), nullptr);
    EXPECT_NE(dlerror(), nullptr) << "with a text, as ever";
    EXPECT_THAT(unit.callsTo("libjida.so"), ElementsAre("dlopen", "dlopen !ENOENT"));
}

TEST_F(ChangeCalls, LoadABoardLibraryThatLacksAFunction)
{
    unit.describe("absent = JidaI2CWrite");
    void* const library = dlopen("libjida.so", RTLD_LAZY);
    ASSERT_NE(library, nullptr) << dlerror();

    EXPECT_EQ(dlsym(library, "JidaI2CWrite"), nullptr);
    EXPECT_NE(dlsym(library, "JidaBoardClose"), nullptr);
    dlclose(library);
}

} // namespace
