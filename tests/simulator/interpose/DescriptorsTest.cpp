// SPDX-License-Identifier: LicenseRef-HXAux
// The table of the unit's descriptors in this process, over sockets that the test makes. What the kernel does is done
// by system calls, so that nothing else keeps the table in step.
#include "simulator/interpose/Descriptors.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <limits>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace descriptors_test {

using namespace hxsim;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Counts how often this process has let go of it.
class FakeDevice : public DeviceFile {
public:
    std::optional<Node::Shape> shape(std::uint32_t) override { return {}; }
    std::int64_t ioctl(std::uint32_t, Bytes, Space) override { return 0; }
    std::int64_t read(Space, bool) override { return 0; }
    std::int64_t write(Bytes) override { return 0; }
    void closing(int fd) override { announced.push_back(fd); }
    void close() override { ++closed; }
    void setTerminal(const termios&) override {}
    std::optional<termios> terminal() override { return {}; }
    void flush(bool, bool) override {}
    int drain() override { return 0; }
    [[nodiscard]] bool readable() override { return true; }

    int closed = 0;
    std::vector<int> announced{};
};

int newSocket()
{
    return static_cast<int>(syscall(SYS_socket, AF_UNIX, SOCK_SEQPACKET, 0));
}

void closeBehindTheBack(int fd)
{
    (void)syscall(SYS_close, fd);
}

class DescriptorsTest : public testing::Test {
protected:
    DescriptorsTest()
    {
        descriptor->device = device;
        table.add(fd, descriptor);
    }
    ~DescriptorsTest() override
    {
        for (const int each : {fd, copy}) {
            if (each < 0)
                continue;
            (void)table.remove(each);
            closeBehindTheBack(each);
        }
    }
    void duplicate()
    {
        copy = static_cast<int>(syscall(SYS_dup, fd));
        table.copy(fd, copy);
    }

    Descriptors& table = Descriptors::table();
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::shared_ptr<Descriptor> descriptor = std::make_shared<Descriptor>("/dev/x", O_RDWR);
    int fd = newSocket();
    int copy = -1;
};

TEST_F(DescriptorsTest, AreFoundByTheirNumber)
{
    EXPECT_EQ(table.find(fd), descriptor);
    EXPECT_EQ(table.findDevice(fd), descriptor);
    EXPECT_NE(descriptor->socket, 0U);
}

TEST_F(DescriptorsTest, AreNotThoseOfTheProgram)
{
    EXPECT_EQ(table.find(STDIN_FILENO), nullptr);
    EXPECT_EQ(table.find(-1), nullptr);
    EXPECT_EQ(table.find(std::numeric_limits<int>::max()), nullptr);
    EXPECT_FALSE(table.remove(STDIN_FILENO).last);
}

TEST_F(DescriptorsTest, ShareOneFileAmongCopies)
{
    duplicate();

    EXPECT_EQ(table.find(copy), descriptor);
    EXPECT_FALSE(table.remove(fd).last);
    const Descriptors::Removed last = table.remove(copy);
    EXPECT_TRUE(last.last);
    EXPECT_EQ(device->closed, 0) << "not before the number has gone";
    last.release();
    EXPECT_EQ(device->closed, 1);
}

TEST_F(DescriptorsTest, AnnounceTheLastOfTheirNumbers)
{
    duplicate();
    table.announce(fd);
    EXPECT_THAT(device->announced, IsEmpty());

    (void)table.remove(copy);
    table.announce(fd);
    EXPECT_THAT(device->announced, ElementsAre(fd));
}

TEST_F(DescriptorsTest, AreForgottenWhenTheKernelHasClosedThem)
{
    closeBehindTheBack(fd);

    EXPECT_EQ(table.find(fd), nullptr);
    EXPECT_EQ(device->closed, 1);
    fd = -1;
}

TEST_F(DescriptorsTest, AreForgottenWhenTheKernelHasPutSomethingElseInTheirPlace)
{
    const int other = newSocket();
    ASSERT_EQ(syscall(SYS_dup3, other, fd, 0), fd);
    closeBehindTheBack(other);

    EXPECT_EQ(table.find(fd), nullptr);
    EXPECT_EQ(device->closed, 1);
}

TEST_F(DescriptorsTest, GiveWayToANewFileOnTheirNumber)
{
    const auto another = std::make_shared<Descriptor>("/dev/y", O_RDONLY);
    another->device = std::make_shared<FakeDevice>();

    table.add(fd, another);

    EXPECT_EQ(table.find(fd), another);
    EXPECT_EQ(device->closed, 1);
}

TEST_F(DescriptorsTest, GiveWayToACopyOnTheirNumber)
{
    const int target = newSocket();
    const auto other = std::make_shared<FakeDevice>();
    const auto another = std::make_shared<Descriptor>("/dev/y", O_RDONLY);
    another->device = other;
    table.add(target, another);

    ASSERT_EQ(syscall(SYS_dup3, fd, target, 0), target);
    table.copy(fd, target);
    copy = target;

    EXPECT_EQ(table.find(target), descriptor);
    EXPECT_EQ(other->closed, 1);
    EXPECT_EQ(device->closed, 0);
}

TEST_F(DescriptorsTest, StayWhenTheyAreCopiedOntoThemselves)
{
    table.copy(fd, fd);

    EXPECT_EQ(table.find(fd), descriptor);
    EXPECT_TRUE(table.remove(fd).last);
}

TEST_F(DescriptorsTest, AreRemovedWithinARange)
{
    duplicate();

    EXPECT_THAT(table.removeAll(static_cast<unsigned>(copy) + 1, static_cast<unsigned>(copy) + 100), IsEmpty());
    const auto removed = table.removeAll(static_cast<unsigned>(copy), static_cast<unsigned>(copy));
    ASSERT_EQ(removed.size(), 1U);
    EXPECT_FALSE(removed[0].last);
    EXPECT_EQ(table.find(fd), descriptor);
    EXPECT_EQ(table.find(copy), nullptr);
}

TEST_F(DescriptorsTest, OfAFileInTheUnitsFolderAreNoDevice)
{
    const int file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDONLY, 0));
    const auto plain = std::make_shared<Descriptor>("/opt/etc/hxaux.ini", O_RDONLY);
    table.add(file, plain);

    EXPECT_EQ(table.find(file), plain);
    EXPECT_EQ(table.findDevice(file), nullptr);
    (void)table.remove(file);
    closeBehindTheBack(file);
}

TEST(OwnDescriptors, AreOutOfTheProgramsWayAndProtected)
{
    Descriptors& table = Descriptors::table();
    const int before = newSocket();
    const int own = table.moveOutOfTheWay(before);

    EXPECT_GE(own, 400);
    EXPECT_TRUE(table.isProtected(own));
    EXPECT_EQ(table.find(own), nullptr);
    EXPECT_EQ(fcntl(own, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    EXPECT_THAT(table.protectedIn(static_cast<unsigned>(own), static_cast<unsigned>(own)),
                ElementsAre(static_cast<unsigned>(own)));
    EXPECT_THAT(table.protectedIn(static_cast<unsigned>(own) + 1, ~0U),
                testing::Not(testing::Contains(static_cast<unsigned>(own))));
    table.closeOwn(own);
    EXPECT_FALSE(table.isProtected(own));
}

TEST(OwnDescriptors, ShowTheFlagsThatAFileKeeps)
{
    const int large = sizeof(long) == 8 ? 0100000 : 0;

    EXPECT_EQ(keptFlags(O_RDWR | O_NONBLOCK), large | O_RDWR | O_NONBLOCK);
    EXPECT_EQ(keptFlags(O_WRONLY | O_CREAT | O_EXCL | O_TRUNC | O_NOCTTY | O_CLOEXEC | O_APPEND),
              large | O_WRONLY | O_APPEND);
    EXPECT_EQ(keptFlags(O_PATH | O_CLOEXEC | O_RDWR), O_PATH);
}

TEST(SocketNumber, IsThatOfTheSocketAndNotOfTheDescriptor)
{
    const int one = newSocket();
    const int same = static_cast<int>(syscall(SYS_dup, one));
    const int other = newSocket();

    EXPECT_NE(socketNumber(one), 0U);
    EXPECT_EQ(socketNumber(same), socketNumber(one));
    EXPECT_NE(socketNumber(other), socketNumber(one));
    EXPECT_EQ(socketNumber(-1), 0U);
    for (const int each : {one, same, other})
        closeBehindTheBack(each);
}

} // namespace

} // namespace descriptors_test
