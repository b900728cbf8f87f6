// SPDX-License-Identifier: LicenseRef-HXAux
// The C library's calls on devices and files of a unit, as the kernel answers them on real ones.
#include "testing/SimulatedUnit.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DeviceCalls : public testing::Test {
protected:
    ~DeviceCalls() override
    {
        if (fd >= 0)
            ::close(fd);
    }
    void open(const char* path, int flags = O_RDWR)
    {
        fd = ::open(path, flags);
        ASSERT_GE(fd, 0) << std::strerror(errno);
    }
    std::string text(std::size_t size)
    {
        std::string buffer(size, '\0');
        const ssize_t got = ::read(fd, buffer.data(), size);
        buffer.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        return buffer;
    }

    SimulatedUnit unit{};
    int fd = -1;
};

/// Expects a call to fail with this errno.
#define EXPECT_FAILS(call, error)                                                                                      \
    do {                                                                                                               \
        errno = 0;                                                                                                     \
        EXPECT_EQ(call, -1);                                                                                           \
        EXPECT_EQ(errno, error);                                                                                       \
    } while (false)

TEST_F(DeviceCalls, OpenDevicesInEveryWay)
{
    const auto opensAndCloses = [](int each) { return each >= 0 && ::close(each) == 0; };
    EXPECT_TRUE(opensAndCloses(::open("/dev/backlight", O_RDONLY)));
    EXPECT_TRUE(opensAndCloses(::openat(AT_FDCWD, "/dev/backlight", O_RDWR)));
    EXPECT_TRUE(opensAndCloses(::openat(-1, "/dev/backlight", O_WRONLY | O_CLOEXEC)));
    EXPECT_TRUE(opensAndCloses(::open64("/dev/backlight", O_RDWR)));
    EXPECT_THAT(unit.callsTo("/dev/backlight"), ElementsAre("open rdonly", "close", "open rdwr", "close", "open wronly",
                                                            "close", "open rdwr", "close"));
}

TEST_F(DeviceCalls, RefuseOpeningsAsTheKernelDoes)
{
    EXPECT_FAILS(::open("/dev/backlight", O_RDWR | O_CREAT | O_EXCL, 0600), EEXIST);
    EXPECT_FAILS(::open("/dev/backlight/", O_RDWR), ENOTDIR);
    EXPECT_FAILS(::open("/dev/backlight", O_RDONLY | O_DIRECTORY), ENOTDIR);
    unit.describe("absent = /dev/backlight");
    EXPECT_FAILS(::open("/dev/backlight", O_RDWR), ENOENT);
}

TEST_F(DeviceCalls, ShowAModeAndTheKindOfADevice)
{
    open("/dev/backlight");
    struct stat byPath {};
    struct stat byNumber {};
    EXPECT_EQ(::stat("/dev/backlight", &byPath), 0);
    EXPECT_EQ(::fstat(fd, &byNumber), 0);

    EXPECT_TRUE(S_ISCHR(byPath.st_mode));
    EXPECT_TRUE(S_ISCHR(byNumber.st_mode));
    struct stat attribute {};
    EXPECT_EQ(::stat("/etc/firmware.ver", &attribute), 0);
    EXPECT_TRUE(S_ISREG(attribute.st_mode));
    unit.describe("absent = /dev/buzzer");
    EXPECT_FAILS(::stat("/dev/buzzer", &byPath), ENOENT);
    EXPECT_FAILS(::lstat("/dev/buzzer", &byPath), ENOENT);
}

TEST_F(DeviceCalls, AnswerAccessByWhatIsThere)
{
    EXPECT_EQ(::access("/dev/backlight", R_OK | W_OK), 0);
    EXPECT_EQ(::faccessat(AT_FDCWD, "/dev/backlight", F_OK, 0), 0);
    unit.describe("absent = /dev/backlight");
    EXPECT_FAILS(::access("/dev/backlight", F_OK), ENOENT);
}

TEST_F(DeviceCalls, CarryOutRequests)
{
    open("/dev/buzzer");
    std::array<unsigned char, 4> setup{0xBC, 0x02, 7, 0};
    EXPECT_EQ(::ioctl(fd, 0x4004003F, setup.data()), 0);
    setup = {};
    EXPECT_EQ(::ioctl(fd, 0x8004003E, setup.data()), 0);

    EXPECT_THAT(setup, ElementsAre(0xBC, 0x02, 7, 0));
    EXPECT_FAILS(::ioctl(fd, 0x80019999, setup.data()), ENOTTY);
    EXPECT_FAILS(::ioctl(-1, 0x8004003E, setup.data()), EBADF);
}

TEST_F(DeviceCalls, RefuseBlocksOutsideThePrograms)
{
    open("/dev/buzzer");

    EXPECT_FAILS(::ioctl(fd, 0x8004003E, nullptr), EFAULT);
    EXPECT_FAILS(::ioctl(fd, 0x4004003F, reinterpret_cast<void*>(8)), EFAULT);
    EXPECT_EQ(unit.get("buzzer.frequency"), "2000");
}

TEST_F(DeviceCalls, NeitherReadNorWriteWhatIsOpenForTheOther)
{
    open("/etc/firmware.ver", O_RDONLY);
    EXPECT_FAILS(::write(fd, "x", 1), EBADF);
    ::close(fd);
    open("/tmp/hxauxd.fifo", O_WRONLY);
    char byte = 0;
    EXPECT_FAILS(::read(fd, &byte, 1), EBADF);
}

TEST_F(DeviceCalls, ReadAnAttributeInPieces)
{
    open("/etc/firmware.ver", O_RDONLY);

    EXPECT_EQ(text(3), "2.1");
    EXPECT_EQ(text(100), ".0.5\n");
    EXPECT_EQ(text(100), "");
}

TEST_F(DeviceCalls, ReadAndWriteSeveralPartsAtOnce)
{
    open("/etc/firmware.ver", O_RDONLY);
    std::array<char, 2> first{};
    std::array<char, 10> second{};
    const iovec parts[] = {{first.data(), first.size()}, {second.data(), second.size()}};
    EXPECT_EQ(::readv(fd, parts, 2), 8);
    EXPECT_EQ(std::string(first.data(), 2), "2.");
    EXPECT_STREQ(second.data(), "1.0.5\n");
    ::close(fd);

    open("/tmp/hxauxd.fifo", O_WRONLY);
    char low[] = {3, 0};
    char high[] = {0, 0};
    const iovec command[] = {{low, 2}, {high, 2}};
    EXPECT_EQ(::writev(fd, command, 2), 4);
    EXPECT_EQ(unit.get("daemon.commands"), "3");
}

TEST_F(DeviceCalls, CountDuplicatesAsOneFile)
{
    open("/dev/backlight");
    const int second = ::dup(fd);
    const int third = ::fcntl(fd, F_DUPFD_CLOEXEC, 100);
    EXPECT_GE(third, 100);
    ::close(fd);
    ::close(second);
    fd = third;
    unsigned char level = 0;

    EXPECT_EQ(::ioctl(third, 0x80010002, &level), 0);
    EXPECT_EQ(level, 128);
    ::close(third);
    fd = -1;
    EXPECT_THAT(unit.callsTo("/dev/backlight"), ElementsAre("open rdwr", "0x80010002 -> 80", "close"));
}

TEST_F(DeviceCalls, ShowTheFlagsOfAnOpening)
{
    open("/dev/backlight", O_RDWR | O_NONBLOCK | O_CLOEXEC);

    EXPECT_EQ(::fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
    EXPECT_EQ(::fcntl(fd, F_GETFD), FD_CLOEXEC);
    EXPECT_EQ(::fcntl(fd, F_SETFL, 0), 0);
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(DeviceCalls, ShowReadinessOfASerialPort)
{
    open("/dev/ttyS0");
    pollfd wanted{fd, POLLIN | POLLOUT, 0};
    EXPECT_EQ(::poll(&wanted, 1, 0), 1);
    EXPECT_EQ(wanted.revents, POLLOUT);

    wanted = {fd, POLLIN, 0};
    EXPECT_EQ(::poll(&wanted, 1, 1000), 0);
    EXPECT_GE(unit.now(), 1000);
    EXPECT_LT(unit.now(), 1100) << "in the unit's time";

    fd_set readers;
    fd_set writers;
    FD_ZERO(&readers);
    FD_ZERO(&writers);
    FD_SET(fd, &readers);
    FD_SET(fd, &writers);
    timeval none{};
    EXPECT_EQ(::select(fd + 1, &readers, &writers, nullptr, &none), 1);
    EXPECT_FALSE(FD_ISSET(fd, &readers));
    EXPECT_TRUE(FD_ISSET(fd, &writers));
}

TEST_F(DeviceCalls, KeepTerminalSettings)
{
    open("/dev/ttyS0");
    termios settings{};
    ASSERT_EQ(::tcgetattr(fd, &settings), 0);
    EXPECT_EQ(cfgetospeed(&settings), speed_t{B9600});
    cfmakeraw(&settings);
    cfsetspeed(&settings, B115200);
    settings.c_cflag |= PARENB;
    ASSERT_EQ(::tcsetattr(fd, TCSANOW, &settings), 0);

    termios kept{};
    ASSERT_EQ(::tcgetattr(fd, &kept), 0);
    EXPECT_EQ(kept.c_cflag, settings.c_cflag);
    EXPECT_EQ(cfgetospeed(&kept), speed_t{B115200});
    EXPECT_EQ(::isatty(fd), 1);
    EXPECT_EQ(::tcflush(fd, TCIFLUSH), 0);
    EXPECT_EQ(::tcdrain(fd), 0);
}

TEST_F(DeviceCalls, RefuseQueuesAndMomentsThatATerminalDoesNotHave)
{
    open("/dev/ttyS0");
    termios settings{};
    ASSERT_EQ(::tcgetattr(fd, &settings), 0);
    cfsetspeed(&settings, B115200);

    EXPECT_FAILS(::tcflush(fd, 77), EINVAL);
    EXPECT_FAILS(::tcsetattr(fd, 77, &settings), EINVAL);
    ASSERT_EQ(::tcgetattr(fd, &settings), 0);
    EXPECT_EQ(cfgetospeed(&settings), speed_t{B9600}) << "nothing was set";
}

TEST_F(DeviceCalls, HaveTerminalsOnSerialPortsOnly)
{
    open("/dev/backlight");
    termios settings{};

    EXPECT_FAILS(::tcgetattr(fd, &settings), ENOTTY);
    EXPECT_FAILS(::tcsetattr(fd, TCSANOW, &settings), ENOTTY);
    EXPECT_EQ(::isatty(fd), 0);
    EXPECT_EQ(errno, ENOTTY);
}

TEST_F(DeviceCalls, ReadNothingWithoutWaitingFromASerialPortThatMustNot)
{
    open("/dev/ttyS0", O_RDWR | O_NONBLOCK);
    char byte = 0;

    EXPECT_FAILS(::read(fd, &byte, 1), EAGAIN);
    EXPECT_EQ(unit.now(), 0);
}

TEST_F(DeviceCalls, KeepFilesInTheUnitsFolder)
{
    FILE* const stream = std::fopen("/opt/etc/hxaux.ini", "w");
    ASSERT_NE(stream, nullptr);
    std::fputs("A=1\n", stream);
    EXPECT_EQ(std::fclose(stream), 0);

    open("/opt/etc/hxaux.ini", O_RDONLY);
    EXPECT_EQ(text(100), "A=1\n");
    struct stat found {};
    EXPECT_EQ(::stat(unit.settingsFile().c_str(), &found), 0);
    EXPECT_EQ(found.st_size, 4);
    EXPECT_EQ(::unlink("/opt/etc/hxaux.ini"), 0);
    EXPECT_FAILS(::access("/opt/etc/hxaux.ini", F_OK), ENOENT);
    EXPECT_FAILS(::stat(unit.settingsFile().c_str(), &found), ENOENT);
}

TEST_F(DeviceCalls, FailOnFilesAsTheyAreAskedTo)
{
    unit.fail("/opt/etc/hxaux.ini", "fopen", EACCES, 1);
    EXPECT_EQ(std::fopen("/opt/etc/hxaux.ini", "w"), nullptr);
    EXPECT_EQ(errno, EACCES);

    fd = ::open("/opt/etc/hxaux.ini", O_RDWR | O_CREAT, 0644);
    ASSERT_GE(fd, 0);
    unit.fail("/opt/etc/hxaux.ini", "write", ENOSPC, 1);
    EXPECT_FAILS(::write(fd, "x", 1), ENOSPC);
    EXPECT_EQ(::write(fd, "x", 1), 1);
}

TEST_F(DeviceCalls, OfTheMachineAreNotRecorded)
{
    const int null = ::open("/dev/null", O_RDWR);
    ASSERT_GE(null, 0);
    EXPECT_EQ(::write(null, "x", 1), 1);
    EXPECT_EQ(::close(null), 0);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST_F(DeviceCalls, CloseEverythingFromANumberOn)
{
    open("/dev/backlight");
    const int high = ::fcntl(fd, F_DUPFD, 300);
    ASSERT_GE(high, 300);

    EXPECT_EQ(::close_range(static_cast<unsigned>(high), static_cast<unsigned>(high), 0), 0);
    EXPECT_FAILS(::fcntl(high, F_GETFD), EBADF);
    EXPECT_GE(::fcntl(fd, F_GETFD), 0);
    EXPECT_THAT(unit.callsTo("/dev/backlight"), testing::Not(Contains("close")));
}

} // namespace
