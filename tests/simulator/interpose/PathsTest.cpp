// SPDX-License-Identifier: LicenseRef-HXAux
// Which of the paths that a program names are the unit's.
#include "simulator/interpose/Paths.h"

#include "testing/SimulatedUnit.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>

using namespace hxsim;
namespace fs = std::filesystem;

namespace {

class PathsTest : public testing::Test {
protected:
    /// The unit's path behind what a program names; empty when it is none of the unit's.
    static std::string found(const std::string& path, int folder = AT_FDCWD)
    {
        return findPath(folder, path.c_str()).path;
    }
    static int errorOf(const std::string& path) { return findPath(AT_FDCWD, path.c_str()).error(); }

    const TemporaryFolder scratch{};
    SimulatedUnit unit{"absent = /dev/buzzer"};
};

TEST_F(PathsTest, AreThoseOfItsDevices)
{
    EXPECT_EQ(found("/dev/backlight"), "/dev/backlight");
    EXPECT_EQ(found("/etc/firmware.ver"), "/etc/firmware.ver");
    EXPECT_EQ(findPath(AT_FDCWD, "/dev/backlight").where.place, Link::Place::Device);
    EXPECT_EQ(errorOf("/dev/backlight"), 0);
}

TEST_F(PathsTest, AreFoundInAnyWriting)
{
    for (const char* path :
         {"//dev//backlight", "/dev/./backlight", "/dev/../dev/backlight", "/./dev/backlight", "/dev/shm/../backlight"})
        EXPECT_EQ(found(path), "/dev/backlight") << path;
}

TEST_F(PathsTest, OfTheMachineStayTheMachines)
{
    for (const char* path : {"/dev/null", "/dev/backlight2", "/dev/Backlight", "/backlight", "/tmp/backlight",
                             "/dev/backlight/x", "backlight", "/", "/dev", "."})
        EXPECT_EQ(found(path), "") << path;
}

TEST_F(PathsTest, OfNothingAreNone)
{
    EXPECT_FALSE(findPath(AT_FDCWD, nullptr));
    EXPECT_FALSE(findPath(AT_FDCWD, ""));
}

TEST_F(PathsTest, AreNotThereWhenTheUnitLacksThem)
{
    EXPECT_EQ(found("/dev/buzzer"), "/dev/buzzer");
    EXPECT_EQ(errorOf("/dev/buzzer"), ENOENT);
}

TEST_F(PathsTest, OfDevicesAreNoDirectories)
{
    EXPECT_EQ(found("/dev/backlight/"), "/dev/backlight");
    EXPECT_EQ(errorOf("/dev/backlight/"), ENOTDIR);
    EXPECT_EQ(errorOf("/dev/backlight//"), ENOTDIR);
}

TEST_F(PathsTest, AreRelativeToTheWorkingDirectory)
{
    const fs::path before = fs::current_path();
    fs::current_path("/dev");
    EXPECT_EQ(found("backlight"), "/dev/backlight");
    EXPECT_EQ(found("./backlight"), "/dev/backlight");
    EXPECT_EQ(found("../dev/backlight"), "/dev/backlight");
    fs::current_path(before);
    EXPECT_EQ(found("backlight"), "");
}

TEST_F(PathsTest, AreRelativeToAnOpenDirectory)
{
    const int folder = ::open("/dev", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(folder, 0);

    EXPECT_EQ(found("backlight", folder), "/dev/backlight");
    EXPECT_EQ(found("/dev/backlight", folder), "/dev/backlight");
    ::close(folder);
    EXPECT_EQ(found("backlight", folder), "") << "no directory any more";
}

TEST_F(PathsTest, AreFoundThroughLinksOfTheMachine)
{
    const std::string link = scratch.path() + "/link";
    fs::create_directory_symlink("/dev", link);

    EXPECT_EQ(found(link + "/backlight"), "/dev/backlight");
    EXPECT_EQ(found(link + "/null"), "");
}

TEST_F(PathsTest, OfFilesLieInTheUnitsFolder)
{
    const UnitPath settings = findPath(AT_FDCWD, "/opt/etc/hxaux.ini");

    EXPECT_EQ(settings.where.place, Link::Place::File);
    EXPECT_EQ(settings.where.file, unit.settingsFile());
}

TEST_F(PathsTest, AreAllInADirectoryOfTheUnit)
{
    for (const char* const path : {"/opt/etc/a", "/opt/etc/sub/a", "/opt/etc/.a", "/opt/etc/hxaux.ini/a"}) {
        const UnitPath one = findPath(AT_FDCWD, path);
        EXPECT_EQ(one.path, path);
        EXPECT_EQ(one.where.place, Link::Place::File);
        EXPECT_EQ(one.where.file, unit.fileOf("/opt/etc") + std::string{path}.substr(8));
    }
    for (const char* const path : {"/opt/etc/sub/..", "/opt/etc/.", "/opt//etc/", "/opt/etc/a/../../etc"})
        EXPECT_EQ(found(path), "/opt/etc") << path;
    EXPECT_EQ(found("/opt/etc/.."), "/opt");
    EXPECT_EQ(findPath(AT_FDCWD, "/opt/etc/sub/../..").where.file, unit.fileOf("/opt/etc") + "/..");
    for (const char* const path : {"/opt/etc/../..", "/opt/etc/../a", "/opt/etcetera/a", "/etc/a", "/opt/a", "etc/a",
                                   "..", "/opt/etc/../etc2/a", "/opt/etc/../../etc/hxaux.ini"})
        EXPECT_EQ(found(path), "") << path;
}

TEST_F(PathsTest, AreFoundWhereTheMachineHasNoSuchDirectory)
{
    EXPECT_EQ(found("/sys/class/net/../net/can0/can_bittiming/bitrate"), "/sys/class/net/can0/can_bittiming/bitrate");
}

TEST_F(PathsTest, LeaveErrnoAlone)
{
    errno = EXDEV;
    (void)found("/dev/./backlight");
    (void)found("/no/such/place/backlight");

    EXPECT_EQ(errno, EXDEV);
}

TEST(PathsWithoutAUnit, AreTheMachines)
{
    EXPECT_FALSE(findPath(AT_FDCWD, "/dev/backlight"));
}

} // namespace
