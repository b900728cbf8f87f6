// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <array>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Halvix;
using driver::Script;

namespace {

/// A file in memory, closed at the end of the test.
class File {
public:
    explicit File(const std::string& content) : handle_{memfd_create("test", 0)}
    {
        if (::write(handle_, content.data(), content.size()) < 0)
            ADD_FAILURE() << "cannot write";
        lseek(handle_, 0, SEEK_SET);
    }
    ~File() { ::close(handle_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    [[nodiscard]] int handle() const { return handle_; }

private:
    int handle_;
};

struct Pipe {
    Pipe()
    {
        if (pipe2(ends, O_NONBLOCK) != 0)
            ADD_FAILURE() << "no pipe";
    }
    ~Pipe()
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    int ends[2] = {-1, -1};
};

using Parts = std::array<int, 4>;

bool parse(const std::string& content, Parts& parts)
{
    const File file{content};
    return LinuxWrapper::ParseFirmwareVersion(file.handle(), parts[0], parts[1], parts[2], parts[3]);
}

bool parse(const std::string& content)
{
    Parts parts{};
    return parse(content, parts);
}

/// Starts another program in a child that checks the descriptor.
bool isOpenAfterExec(int handle)
{
    const std::string descriptor = "/proc/self/fd/" + std::to_string(handle);
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", "test -e \"$0\"", descriptor.c_str(), nullptr);
        _exit(127);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << "the shell did not run";
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

constexpr int kAccessAndMode = O_ACCMODE | O_NONBLOCK;

} // namespace

TEST(Open, OpensADeviceForReadingAndWritingWithoutWaiting)
{
    Script script;
    int handle = -5;

    EXPECT_TRUE(LinuxWrapper::open(handle, "/dev/backlight", true));

    EXPECT_EQ(script.lastOpenFlags() & kAccessAndMode, O_RDWR | O_NONBLOCK);
    EXPECT_THAT(script.opened(), testing::ElementsAre("/dev/backlight"));
    LinuxWrapper::close(handle);
}

TEST(Open, OpensForReadingAloneWithoutWaiting)
{
    Script script;
    int handle = -5;

    EXPECT_TRUE(LinuxWrapper::open(handle, "/dev/backlight", false));

    EXPECT_EQ(script.lastOpenFlags() & kAccessAndMode, O_RDONLY | O_NONBLOCK);
    LinuxWrapper::close(handle);
}

TEST(Open, ReturnsADescriptorThatAProgramStartedByExecStillHas)
{
    int handle = -1;
    ASSERT_TRUE(LinuxWrapper::open(handle, "/proc/self/exe", false));

    EXPECT_TRUE(isOpenAfterExec(handle));

    LinuxWrapper::close(handle);
    EXPECT_FALSE(isOpenAfterExec(handle));
}

TEST(Open, StoresTheNegativeDescriptorOfAnAbsentDevice)
{
    Script script;
    script.deviceIsAbsent();
    int handle = 5;

    EXPECT_FALSE(LinuxWrapper::open(handle, "/dev/backlight", true));

    EXPECT_EQ(handle, -1);
}

TEST(Close, ReleasesTheDescriptor)
{
    const File file{""};
    const int handle = dup(file.handle());

    LinuxWrapper::close(handle);

    EXPECT_EQ(fcntl(handle, F_GETFD), -1);
}

TEST(Read, ReportsTheNumberOfBytesRead)
{
    const File file{"abc"};
    char buffer[8] = {};
    unsigned int count = 99;

    EXPECT_TRUE(LinuxWrapper::read(file.handle(), buffer, 8, &count));

    EXPECT_EQ(count, 3U);
    EXPECT_STREQ(buffer, "abc");
}

TEST(Read, WorksWithoutACount)
{
    const File file{"abc"};
    char buffer[8] = {};

    EXPECT_TRUE(LinuxWrapper::read(file.handle(), buffer, 2, nullptr));

    EXPECT_STREQ(buffer, "ab");
}

TEST(Read, IsASuccessAtTheEndOfTheFile)
{
    const File file{""};
    char buffer[8] = {};
    unsigned int count = 99;

    EXPECT_TRUE(LinuxWrapper::read(file.handle(), buffer, 8, &count));

    EXPECT_EQ(count, 0U);
}

TEST(Read, LeavesTheCountWhenItFails)
{
    const Pipe empty;
    char buffer[8] = {};
    unsigned int count = 99;

    EXPECT_FALSE(LinuxWrapper::read(empty.ends[0], buffer, 8, &count));

    EXPECT_EQ(count, 99U);
}

TEST(Write, CountsAShortWriteAsSuccess)
{
    const Pipe pipe;
    const int room = fcntl(pipe.ends[1], F_GETPIPE_SZ);
    const std::string more(static_cast<std::size_t>(room) + 1, 'x');

    EXPECT_TRUE(LinuxWrapper::write(pipe.ends[1], more.data(), room + 1));
}

TEST(Write, AnswersFalseWhenNothingCanBeWritten)
{
    const Pipe pipe;

    EXPECT_FALSE(LinuxWrapper::write(pipe.ends[0], "x", 1));
}

TEST(GetFileSize, ReportsTheSizeAtAnyPosition)
{
    const File file{"12345"};
    lseek(file.handle(), 3, SEEK_SET);

    EXPECT_EQ(LinuxWrapper::getFileSize(file.handle()), 5);
}

TEST(GetFileSize, IsZeroWhenTheStatusCannotBeRead)
{
    EXPECT_EQ(LinuxWrapper::getFileSize(-1), 0);
}

TEST(ParseFirmwareVersion, ReadsFourNumbers)
{
    Parts parts{};

    EXPECT_TRUE(parse("1.2.3.4", parts));

    EXPECT_EQ(parts, (Parts{1, 2, 3, 4}));
}

TEST(ParseFirmwareVersion, RefusesANumberOf256)
{
    EXPECT_FALSE(parse("1.2.3.256"));
    EXPECT_FALSE(parse("256.2.3.4"));
    EXPECT_TRUE(parse("255.255.255.255"));
}

TEST(ParseFirmwareVersion, RefusesThreeNumbersAndTextsThatAreNone)
{
    for (const char* text : {"", "2.1.0", "2.1.0.", "a.b.c.d", "version 1.2.3.4", "1,2,3,4", "1.2 .3.4"})
        EXPECT_FALSE(parse(text)) << text;
}

TEST(ParseFirmwareVersion, AcceptsANegativeNumberAndWhatFollowsTheFourth)
{
    Parts parts{};

    EXPECT_TRUE(parse("-1.2.3.4-beta\nmore", parts));

    EXPECT_EQ(parts, (Parts{-1, 2, 3, 4}));
}

TEST(ParseFirmwareVersion, RefusesNumbersTooLargeForAnIntOnEveryBuild)
{
    EXPECT_FALSE(parse("1.2.3.4294967297"));
    EXPECT_FALSE(parse("1.2.3.99999999999999999999"));
}

TEST(ParseFirmwareVersion, ReadsTheFirst8192BytesOnly)
{
    EXPECT_TRUE(parse(std::string(8192 - 7, ' ') + "1.2.3.4"));
    EXPECT_FALSE(parse(std::string(8192 - 6, ' ') + "1.2.3.4"));
}

TEST(ParseFirmwareVersion, LeavesTheNumbersWhenItFails)
{
    Parts parts{9, 9, 9, 9};

    EXPECT_FALSE(parse("1.2.3.256", parts));

    EXPECT_EQ(parts, (Parts{9, 9, 9, 9}));
}

TEST(ParseFirmwareVersion, AnswersFalseWhenTheFileCannotBeRead)
{
    Parts parts{};

    EXPECT_FALSE(LinuxWrapper::ParseFirmwareVersion(-1, parts[0], parts[1], parts[2], parts[3]));
}
