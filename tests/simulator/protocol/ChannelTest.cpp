// SPDX-License-Identifier: LicenseRef-HXAux
// Packets over real sockets, and the names of connections.
#include "simulator/protocol/Channel.h"

#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace channel_test {

using namespace hxsim;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr wire::Head kHead{wire::Kind::Ioctl, 0x80010002, 11, 12, -5, 7, 99};

class ChannelTest : public testing::Test {
protected:
    ChannelTest()
    {
        std::array<int, 2> both{};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, both.data()), 0);
        ours = both[0];
        theirs = both[1];
    }
    ~ChannelTest() override
    {
        ::close(ours);
        if (theirs >= 0)
            ::close(theirs);
    }
    void hangUp()
    {
        ::close(theirs);
        theirs = -1;
    }
    Received receive(int fd, bool retry = true)
    {
        bytes.assign(100, 0xEE);
        std::size_t size = 0;
        const Received received = receivePacket(fd, head, bytes, size, retry);
        bytes.resize(size);
        return received;
    }

    int ours = -1;
    int theirs = -1;
    wire::Head head{};
    Bytes bytes{};
};

TEST_F(ChannelTest, CarriesAHeadAndItsBytesAsOnePacket)
{
    EXPECT_TRUE(sendPacket(ours, kHead, Bytes{1, 2, 3}));
    EXPECT_TRUE(sendPacket(ours, kHead, Bytes{4}));

    EXPECT_EQ(receive(theirs), Received::Packet);
    EXPECT_EQ(std::memcmp(&head, &kHead, sizeof head), 0);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3}));
    EXPECT_EQ(receive(theirs), Received::Packet);
    EXPECT_EQ(bytes, Bytes{4});
}

TEST_F(ChannelTest, CarriesAHeadAlone)
{
    EXPECT_TRUE(sendPacket(ours, kHead, {}));

    EXPECT_EQ(receive(theirs), Received::Packet);
    EXPECT_EQ(bytes, Bytes{});
}

TEST_F(ChannelTest, CutsBytesThatHaveNoRoom)
{
    EXPECT_TRUE(sendPacket(ours, kHead, Bytes(150, 1)));
    EXPECT_TRUE(sendPacket(ours, kHead, Bytes{2}));

    EXPECT_EQ(receive(theirs), Received::Packet);
    EXPECT_EQ(bytes, Bytes(100, 1));
    EXPECT_EQ(receive(theirs), Received::Packet);
    EXPECT_EQ(bytes, Bytes{2}) << "the next packet is whole";
}

TEST_F(ChannelTest, TakesTheEndOfTheOtherSideForGone)
{
    hangUp();

    EXPECT_EQ(receive(ours), Received::Gone);
    EXPECT_FALSE(sendPacket(ours, kHead, {})) << "and no signal";
    EXPECT_EQ(errno, EPIPE);
}

TEST_F(ChannelTest, GivesOutAPacketThatCameBeforeTheEnd)
{
    EXPECT_TRUE(sendPacket(theirs, kHead, Bytes{1}));
    hangUp();

    EXPECT_EQ(receive(ours), Received::Packet);
    EXPECT_EQ(receive(ours), Received::Gone);
}

TEST_F(ChannelTest, TakesWhatIsShorterThanAHeadForGone)
{
    const Bytes few(sizeof(wire::Head) - 1);
    ASSERT_EQ(::send(theirs, few.data(), few.size(), 0), static_cast<ssize_t>(few.size()));

    EXPECT_EQ(receive(ours), Received::Gone);
}

TEST_F(ChannelTest, HasNothingWhereADescriptorDoesNotWait)
{
    ASSERT_EQ(::fcntl(ours, F_SETFL, O_NONBLOCK), 0);

    EXPECT_EQ(receive(ours), Received::Nothing);
}

TEST_F(ChannelTest, CannotPlaceBytesOutsideTheCallersMemory)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const none = mmap(nullptr, page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(none, MAP_FAILED);
    EXPECT_TRUE(sendPacket(theirs, kHead, Bytes{1, 2, 3}));
    std::size_t size = 0;

    EXPECT_EQ(receivePacket(ours, head, {static_cast<std::uint8_t*>(none), page}, size, true), Received::Unplaced);
    munmap(none, page);
}

/// Interrupts the waiting calls of this process again and again.
class Interruptions {
public:
    Interruptions()
    {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &before_);
        const itimerval often{{0, 5000}, {0, 5000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Interruptions()
    {
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &before_, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

private:
    struct sigaction before_ {};
};

TEST_F(ChannelTest, ReportsASignalUnlessItIsToGoOn)
{
    const Interruptions interruptions;

    EXPECT_EQ(receive(ours, false), Received::Interrupted);
}

TEST_F(ChannelTest, GoesOnAfterSignalsUntilAPacketComes)
{
    std::thread sender{[this] {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
        usleep(50000);
        EXPECT_TRUE(sendPacket(theirs, kHead, Bytes{5}));
    }};
    {
        const Interruptions interruptions;
        EXPECT_EQ(receive(ours), Received::Packet);
        EXPECT_EQ(bytes, Bytes{5});
    }
    sender.join();
}

TEST_F(ChannelTest, AsksAndGetsTheAnswer)
{
    std::thread host{[this] {
        if (receive(theirs) == Received::Packet)
            (void)sendPacket(theirs, {wire::Kind::Answer, 0, 0, 0, 42, 0, 0}, bytes);
    }};
    Packet answer;

    EXPECT_TRUE(exchange(ours, kHead, Bytes{'a', 'b'}, answer));
    host.join();

    EXPECT_EQ(answer.head.value, 42);
    EXPECT_EQ(answer.text(), "ab");
}

TEST_F(ChannelTest, GetsTheLargestAnswer)
{
    const Bytes largest(wire::kLargestPacket - sizeof(wire::Head), 7);
    std::thread host{[&] {
        if (receive(theirs) == Received::Packet)
            (void)sendPacket(theirs, kHead, largest);
    }};
    Packet answer;

    EXPECT_TRUE(exchange(ours, kHead, {}, answer));
    host.join();

    EXPECT_EQ(answer.bytes, largest);
}

TEST_F(ChannelTest, AsksNoLongerThanItIsToldTo)
{
    Packet answer;
    answer.bytes = {1, 2, 3};

    EXPECT_FALSE(exchange(ours, kHead, {}, answer, 0));
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_TRUE(answer.bytes.empty());
}

TEST_F(ChannelTest, AsksNobodyWhoIsGone)
{
    hangUp();
    Packet answer;

    EXPECT_FALSE(exchange(ours, kHead, {}, answer));
    EXPECT_NE(errno, EAGAIN);
}

TEST_F(ChannelTest, SeesAPacketOrTheEndInTime)
{
    EXPECT_FALSE(comesInTime(ours, 0));
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_TRUE(sendPacket(theirs, kHead, {}));
    EXPECT_TRUE(comesInTime(ours, 0));
    EXPECT_EQ(receive(ours), Received::Packet);
    hangUp();
    EXPECT_TRUE(comesInTime(ours, 0));
}

/// A host's socket in a folder.
class ConnectionTest : public testing::Test {
protected:
    ConnectionTest() : listener{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)}
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, (folder.path() + "/socket").c_str(), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener, 5), 0);
    }
    ~ConnectionTest() override
    {
        if (listener >= 0)
            ::close(listener);
    }

    const TemporaryFolder folder{};
    int listener;
};

TEST_F(ConnectionTest, IsFoundByTheNameThatItWasGiven)
{
    const std::string name = newConnectionName();
    const int fd = connectTo(folder.path(), name);
    ASSERT_GE(fd, 0);

    EXPECT_EQ(connectionName(fd, folder.path()), name);
    EXPECT_EQ(connectionName(fd, folder.path() + "x"), "") << "a unit in another folder";
    ::close(fd);
}

TEST_F(ConnectionTest, HasNoNameUnlessItIsGivenOne)
{
    const int fd = connectTo(folder.path(), "");
    ASSERT_GE(fd, 0);

    EXPECT_EQ(connectionName(fd, folder.path()), "");
    ::close(fd);
}

TEST_F(ConnectionTest, DoesNotShareItsName)
{
    const std::string name = newConnectionName();
    const int fd = connectTo(folder.path(), name);
    ASSERT_GE(fd, 0);

    EXPECT_EQ(connectTo(folder.path(), name), -EADDRINUSE);
    ::close(fd);
}

TEST_F(ConnectionTest, IsNotMistakenForOtherDescriptors)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    EXPECT_EQ(connectionName(ends[0], folder.path()), "");
    ::close(ends[0]);
    ::close(ends[1]);
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    EXPECT_EQ(connectionName(ends[0], folder.path()), "");
    ::close(ends[0]);
    ::close(ends[1]);
    EXPECT_EQ(connectionName(-1, folder.path()), "");
}

TEST_F(ConnectionTest, DoesNotOutliveAnExec)
{
    const int fd = connectTo(folder.path(), "");
    ASSERT_GE(fd, 0);

    EXPECT_EQ(::fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    ::close(fd);
}

TEST_F(ConnectionTest, IsRefusedWhereNobodyListens)
{
    EXPECT_EQ(connectTo(folder.path() + "/none", ""), -ENOENT);
    ::close(listener);
    listener = -1;
    EXPECT_EQ(connectTo(folder.path(), ""), -ECONNREFUSED);
}

TEST(ConnectionName, IsNeverMadeTwice)
{
    std::set<std::string> names;
    for (int i = 0; i < 1000; ++i)
        names.insert(newConnectionName());

    EXPECT_EQ(names.size(), 1000U);
}

} // namespace

} // namespace channel_test
