// SPDX-License-Identifier: LicenseRef-HXAux
// Both ends of a mailbox, in one process and in two threads.
#include "simulator/protocol/Mailbox.h"

#include <gmock/gmock.h>

#include <random>
#include <sys/mman.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;

wire::Head headOf(std::int64_t value)
{
    wire::Head head{};
    head.kind = wire::Kind::Ioctl;
    head.value = value;
    return head;
}

bool comes(ClientMailbox& client, std::chrono::nanoseconds time)
{
    return client.await(time) != ClientMailbox::Found::Elsewhere;
}

class MailboxTest : public testing::Test {
protected:
    ServerMailbox server{};
    ClientMailbox client{server.descriptor()};
    wire::Head head{};
    Bytes bytes{};

    Bytes answered() const { return {client.bytes().begin(), client.bytes().end()}; }
};

TEST_F(MailboxTest, CarriesARequestAndItsAnswer)
{
    ASSERT_TRUE(server && client);
    client.post(headOf(5), Bytes{1, 2, 3});

    ASSERT_TRUE(server.take(head, bytes));
    EXPECT_EQ(head.value, 5);
    EXPECT_EQ(bytes, (Bytes{1, 2, 3}));
    EXPECT_TRUE(server.answer(headOf(-7), Bytes{4, 5}));

    ASSERT_TRUE(comes(client, 0ns));
    EXPECT_EQ(client.head().value, -7);
    EXPECT_EQ(answered(), (Bytes{4, 5}));
}

TEST_F(MailboxTest, IsEmptyAtFirst)
{
    EXPECT_FALSE(server.take(head, bytes));
    EXPECT_FALSE(server.answer(headOf(0), {}));
}

TEST_F(MailboxTest, WantsTheBellWhileNobodyWatches)
{
    EXPECT_FALSE(client.post(headOf(1), {}));
    server.watch(true);
    EXPECT_TRUE(client.post(headOf(2), {}));
    server.watch(false);
    EXPECT_FALSE(client.post(headOf(3), {}));
}

TEST_F(MailboxTest, GivesARequestOnce)
{
    client.post(headOf(1), {});

    EXPECT_TRUE(server.take(head, bytes));
    EXPECT_FALSE(server.take(head, bytes)) << "also before it is answered";
    EXPECT_TRUE(server.answer(headOf(0), {}));
    EXPECT_FALSE(server.take(head, bytes));
    client.post(headOf(2), {});
    EXPECT_TRUE(server.take(head, bytes));
    EXPECT_EQ(head.value, 2);
}

TEST_F(MailboxTest, SendsALateAnswerOverTheConnection)
{
    client.post(headOf(1), {});
    ASSERT_TRUE(server.take(head, bytes));

    EXPECT_FALSE(comes(client, 0ns));

    EXPECT_FALSE(server.answer(headOf(0), {}));
}

TEST_F(MailboxTest, StillHasTheRequestOfAProgramThatWaitsElsewhere)
{
    client.post(headOf(9), Bytes{1});
    EXPECT_FALSE(comes(client, 0ns));

    ASSERT_TRUE(server.take(head, bytes)) << "the bell may be late";
    EXPECT_EQ(head.value, 9);
    EXPECT_FALSE(server.answer(headOf(0), {}));
}

TEST_F(MailboxTest, SendsALargeAnswerOverTheConnectionAtOnce)
{
    client.post(headOf(1), {});
    ASSERT_TRUE(server.take(head, bytes));

    EXPECT_FALSE(server.answer(headOf(0), Bytes(MailboxMemory::kSize)));

    EXPECT_FALSE(comes(client, 24h)) << "it does not look on";
}

TEST_F(MailboxTest, TakesWhatIsNoSizeForAsMuchAsThereIs)
{
    MailboxMapping memory{server.descriptor()};
    client.post(headOf(1), {});
    memory->size = 0xFFFFFFFF;

    ASSERT_TRUE(server.take(head, bytes));

    EXPECT_EQ(bytes.size(), sizeof MailboxMemory::bytes);
    EXPECT_EQ(client.bytes().size(), sizeof MailboxMemory::bytes);
}

TEST_F(MailboxTest, TakesNoStateForARequestThatIsNone)
{
    MailboxMapping memory{server.descriptor()};
    for (const std::uint32_t state : {0U, 0xFFFFFFFFU, 4U, 7U}) { // nothing, or answered
        memory->state = state;
        EXPECT_FALSE(server.take(head, bytes)) << state;
    }
}

TEST_F(MailboxTest, CannotBeShrunkByItsOtherEnd)
{
    EXPECT_NE(ftruncate(server.descriptor(), 0), 0);
    EXPECT_NE(ftruncate(server.descriptor(), 2 * MailboxMemory::kSize), 0);
}

TEST(MailboxMapping, IsMadeOfNothingElse)
{
    const int small = memfd_create("small", MFD_CLOEXEC);
    EXPECT_FALSE(ClientMailbox{small});
    EXPECT_FALSE(ClientMailbox{-1});
    close(small);
}

TEST(Mailbox, LosesNoRequestHoweverBothEndsWait)
{
    constexpr int kRequests = 20000;
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    ServerMailbox server;
    std::thread serving{[&, fd = ends[1]] {
        std::mt19937 chance{1};
        wire::Head head{};
        Bytes bytes;
        const auto serve = [&] {
            if (!server.take(head, bytes))
                return;
            if (!server.answer(head, bytes))
                (void)send(fd, &head, sizeof head, 0);
        };
        for (char bell = 0; recv(fd, &bell, 1, 0) == 1;) {
            server.watch(true);
            for (auto i = chance() % 200; i > 0; --i)
                serve();
            server.watch(false);
            serve();
        }
    }};
    ClientMailbox client{server.descriptor()};
    std::mt19937 chance{2};
    int right = 0;
    for (int i = 0; i < kRequests; ++i) {
        wire::Head answer{};
        if (!client.post(headOf(i), {})) {
            ASSERT_EQ(send(ends[0], "b", 1, 0), 1);
        }
        if (comes(client, std::chrono::nanoseconds{chance() % 20000})) {
            answer = client.head();
        } else {
            ASSERT_EQ(recv(ends[0], &answer, sizeof answer, 0), static_cast<ssize_t>(sizeof answer));
        }
        right += answer.value == i ? 1 : 0;
    }
    EXPECT_EQ(right, kRequests);
    close(ends[0]);
    serving.join();
    close(ends[1]);
}

/// Nothing to test where there is one processor.
class PatienceTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (patience.now() == 0ns)
            GTEST_SKIP() << "one processor";
    }
    Patience patience{};
};

TEST_F(PatienceTest, IsThereAtFirstAndAsLongAsItPays)
{
    EXPECT_EQ(patience.now(), Patience::kTime);
    patience.paid();
    EXPECT_EQ(patience.now(), Patience::kTime);
}

TEST_F(PatienceTest, IsGoneForAWhileAfterFailures)
{
    for (int i = 0; i < 20; ++i)
        patience.failed();
    EXPECT_EQ(patience.now(), 0ns);
    patience.paid();
    EXPECT_EQ(patience.now(), 0ns) << "one success, by chance, changes nothing";
}

TEST_F(PatienceTest, ReturnsByItself)
{
    patience.failed();
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (patience.now() == 0ns && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);

    EXPECT_EQ(patience.now(), Patience::kTime);
}

} // namespace
