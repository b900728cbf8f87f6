// SPDX-License-Identifier: LicenseRef-HXAux
// Packets of the protocol at a host in this process, one at a time, without a program or its backend.
#include "simulator/file/Terminal.h"
#include "simulator/protocol/Channel.h"
#include "simulator/protocol/Mailbox.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"
#include "tests/simulator/server/direct/ServedUnit.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace host_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;
using testing::HasSubstr;

namespace {

using served_unit::Client;
using served_unit::Served;
using wire::Kind;

class HostTest : public testing::Test {
protected:
    const Served served{};
    Client control{served};

    /// Opens on a connection of its own; the file's number, or -errno.
    static std::int64_t open(Client& on, const std::string& path, int flags = O_RDWR)
    {
        const std::string text = "name-of-" + path + '\0' + path;
        const Packet answer = on.exchange(Kind::Open, text, flags);
        return answer.head.value < 0 ? answer.head.value : static_cast<std::int64_t>(answer.head.file);
    }
    std::string log() { return control.command({"log"}).text(); }
};

TEST_F(HostTest, SaysWhereEverythingIs)
{
    const std::string paths = control.exchange(Kind::Hello, "").text();

    EXPECT_THAT(paths, HasSubstr("D /dev/backlight\n"));
    EXPECT_THAT(paths, HasSubstr("S /dev/ttyS0\n"));
    EXPECT_THAT(paths, HasSubstr("T /etc/firmware.ver\n"));
    EXPECT_THAT(paths, HasSubstr("F /opt/etc/hxaux.ini " + served.folder() + "/files/opt/etc/hxaux.ini\n"));
    EXPECT_THAT(paths, HasSubstr("N " + UnitFolder::markOf(served.folder()) + "\n"));
    EXPECT_THAT(paths, HasSubstr("R " + served.folder() + "\n"));
}

TEST_F(HostTest, LocatesWhatIsPresent)
{
    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1);
    control.command({"remove", "/dev/backlight", "libjida.so"});
    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 0);
    EXPECT_EQ(control.exchange(Kind::Absent, "").text(), "/dev/backlight\nlibjida.so\n");
}

TEST_F(HostTest, CarriesOutARequestOnAFile)
{
    Client file{served};
    const auto number = static_cast<std::uint64_t>(open(file, "/dev/backlight"));
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, number, 0, 0x40010003), {0, 99}).head.value, 0);

    const Packet answer = control.exchange(Client::head(Kind::Ioctl, number, 0, 0x80010002));

    EXPECT_EQ(answer.head.value, 0);
    EXPECT_EQ(answer.bytes, Bytes{99});
    EXPECT_THAT(log(), HasSubstr(" 4711/1 /dev/backlight 0x40010003: 00 63\n"));
}

TEST_F(HostTest, RefusesWhatTheDriverDoesNotKnow)
{
    Client file{served};
    const auto number = static_cast<std::uint64_t>(open(file, "/dev/backlight"));

    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, number, 0, 0x80019999)).head.value, -ENOTTY);
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, number, 0, 0x40010003), {0}).head.value, -EFAULT);
    EXPECT_EQ(control.exchange(Client::head(Kind::Shape, number, 0, 0x80019999)).head.value, -1);
}

TEST_F(HostTest, ShowsTheShapeOfARequest)
{
    Client file{served};
    const auto number = static_cast<std::uint64_t>(open(file, "/dev/fpgaflash"));

    const Packet answer = control.exchange(Client::head(Kind::Shape, number, 0, 0xC218004E));

    EXPECT_EQ(answer.head.value, 536);
    EXPECT_EQ(answer.head.other, 536);
}

TEST_F(HostTest, RefusesOpeningsThatCannotBe)
{
    Client file{served};

    EXPECT_EQ(open(file, "/dev/nothing"), -ENOENT);
    EXPECT_EQ(file.exchange(Kind::Open, "no path").head.value, -EINVAL);
    EXPECT_GT(open(file, "/dev/backlight"), 0);
    EXPECT_EQ(open(file, "/dev/backlight"), -EINVAL) << "a connection is one file";
}

TEST_F(HostTest, KnowsNoFileOfAnotherNumber)
{
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, 1, 0, 0x80010002)).head.value, -EBADF);
    EXPECT_EQ(control.exchange(Client::head(Kind::Read, 99, 1)).head.value, -EBADF);
}

TEST_F(HostTest, FindsAFileByTheNameOfItsConnection)
{
    Client file{served};
    const std::int64_t number = open(file, "/dev/backlight", O_RDWR | O_NONBLOCK);

    const Packet found = control.exchange(Kind::Which, "name-of-/dev/backlight");

    EXPECT_EQ(static_cast<std::int64_t>(found.head.file), number);
    EXPECT_EQ(found.head.other, O_RDWR | O_NONBLOCK);
    EXPECT_EQ(found.text(), "/dev/backlight");
    EXPECT_EQ(control.exchange(Kind::Which, "another").head.value, -ENOENT);
}

TEST_F(HostTest, ClosesAFileWithItsConnection)
{
    Client file{served};
    const auto number = static_cast<std::uint64_t>(open(file, "/dev/backlight"));
    file.send(Client::head(Kind::Closing));
    file.hangUp();

    (void)control.exchange(Client::head(Kind::Close, number)); // the host has seen the end when this is answered
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, number, 0, 0x80010002)).head.value, -EBADF);
    EXPECT_THAT(log(), HasSubstr("/dev/backlight close\n"));
}

TEST_F(HostTest, RefusesToCloseAFileOnItsOwnConnection)
{
    Client file{served};
    const auto number = static_cast<std::uint64_t>(open(file, "/dev/backlight"));

    EXPECT_EQ(file.exchange(Client::head(Kind::Close, number)).head.value, -EINVAL);
    file.send(Client::head(Kind::Close, number));
    file.hangUp();

    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1) << "the server goes on";
}

TEST_F(HostTest, RefusesAMessageThatItDoesNotKnow)
{
    EXPECT_EQ(control.exchange(Kind{4711}, "").head.value, -EINVAL);
    EXPECT_EQ(control.exchange(Kind::Answer, "").head.value, -EINVAL);
}

TEST_F(HostTest, ReadsAndWritesFiles)
{
    Client attribute{served};
    Client fifo{served};
    const auto version = static_cast<std::uint64_t>(open(attribute, "/etc/firmware.ver", O_RDONLY));
    const auto daemon = static_cast<std::uint64_t>(open(fifo, "/tmp/hxauxd.fifo", O_WRONLY));

    EXPECT_EQ(control.exchange(Client::head(Kind::Read, version, 3)).text(), "2.1");
    EXPECT_EQ(control.exchange(Client::head(Kind::Read, version, 100)).text(), ".0.5\n");
    EXPECT_EQ(control.exchange(Client::head(Kind::Read, version, 100)).head.value, 0);
    EXPECT_EQ(control.exchange(Client::head(Kind::Write, daemon), {2, 0, 0, 0}).head.value, 4);
    EXPECT_EQ(control.command({"get", "daemon.commands"}).text(), "2\n");
    EXPECT_EQ(control.exchange(Client::head(Kind::Read, version, -1)).head.value, -EINVAL);
}

class MailboxOfAHost : public HostTest {
protected:
    Client file{served};
    std::uint64_t number = static_cast<std::uint64_t>(open(file, "/dev/backlight"));
    Client user{served};
    ClientMailbox mailbox = user.share();

    Packet setLevel(int level)
    {
        return user.exchangeBy(mailbox, Client::head(Kind::Ioctl, number, 0, 0x40010003),
                               {0, static_cast<std::uint8_t>(level)});
    }
    Packet level() { return user.exchangeBy(mailbox, Client::head(Kind::Ioctl, number, 0, 0x80010002)); }
};

TEST_F(MailboxOfAHost, CarriesRequestsOnAFile)
{
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(setLevel(i % 200).head.value, 0);
        ASSERT_EQ(level().bytes, Bytes{static_cast<std::uint8_t>(i % 200)});
    }
}

TEST_F(MailboxOfAHost, CarriesWhatTheDriverRefuses)
{
    EXPECT_EQ(user.exchangeBy(mailbox, Client::head(Kind::Ioctl, number, 0, 0x80019999)).head.value, -ENOTTY);
    EXPECT_EQ(user.exchangeBy(mailbox, Client::head(Kind::Ioctl, 99, 0, 0x80010002)).head.value, -EBADF);
    EXPECT_EQ(user.exchangeBy(mailbox, Client::head(Kind{4711})).head.value, -EINVAL);
}

TEST_F(MailboxOfAHost, DoesNotKeepOthersWaiting)
{
    std::atomic<bool> over{false};
    std::thread busy{[&] {
        while (!over)
            EXPECT_EQ(level().head.value, 0);
    }};
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1);
    Client late{served};
    EXPECT_EQ(late.exchange(Kind::Locate, "/dev/backlight").head.value, 1);
    over = true;
    busy.join();
}

TEST_F(MailboxOfAHost, EndsAReadThatWaitsWhenItIsCancelled)
{
    Client port{served};
    const auto serial = static_cast<std::uint64_t>(open(port, "/dev/ttyS0"));
    if (!mailbox.post(Client::head(Kind::Read, serial, 4), {}))
        user.send(Client::head(Kind::Bell));
    EXPECT_EQ(mailbox.await(1ms), ClientMailbox::Found::Elsewhere) << "nothing has come";
    user.send(Client::head(Kind::Cancel));

    EXPECT_EQ(user.receive().head.value, -EINTR);
    EXPECT_EQ(level().head.value, 0);
}

TEST_F(MailboxOfAHost, IsOneForAConnection)
{
    EXPECT_EQ(user.exchange(Client::head(Kind::Share)).head.value, -EEXIST);
    EXPECT_EQ(level().head.value, 0) << "it still works";
}

TEST_F(MailboxOfAHost, MayEndWithARequestInIt)
{
    mailbox.post(Client::head(Kind::Ioctl, number, 0, 0x80010002), {});
    user.send(Client::head(Kind::Bell));
    user.hangUp();

    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1);
}

TEST_F(MailboxOfAHost, MayBeRungForNothing)
{
    for (int i = 0; i < 10; ++i) {
        user.send(Client::head(Kind::Bell));
        control.send(Client::head(Kind::Bell)); // has none
    }

    EXPECT_EQ(level().head.value, 0);
    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1);
}

TEST_F(MailboxOfAHost, AnswersAMessageWithoutAnAnswerOnce)
{
    mailbox.post(Client::head(Kind::Closing), {});
    user.send(Client::head(Kind::Bell));

    EXPECT_EQ(mailbox.await(1ms), ClientMailbox::Found::Elsewhere);
    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1) << "the server goes on";
}

class SerialPortOfAHost : public HostTest {
protected:
    Client file{served};
    std::uint64_t number = static_cast<std::uint64_t>(open(file, "/dev/ttyS0"));

    void terminal(const LineSettings& line)
    {
        termios settings = freshTerminal();
        setLineOf(settings, line);
        Bytes bytes(sizeof settings);
        std::memcpy(bytes.data(), &settings, sizeof settings);
        EXPECT_EQ(control.exchange(Client::head(Kind::SetTerminal, number), bytes).head.value, 0);
    }
};

TEST_F(SerialPortOfAHost, KeepsItsTerminal)
{
    EXPECT_EQ(control.exchange(Client::head(Kind::GetTerminal, number)).head.value, 0) << "nobody has set any";
    terminal({115200, 8, 'e', 1, 0, 30, false});

    const Packet kept = control.exchange(Client::head(Kind::GetTerminal, number));

    EXPECT_EQ(kept.head.value, static_cast<std::int64_t>(sizeof(termios)));
    ASSERT_TRUE(terminalFrom(kept.bytes));
    EXPECT_EQ(lineOf(*terminalFrom(kept.bytes)).parity, 'e');
    EXPECT_EQ(control.exchange(Client::head(Kind::SetTerminal, number), Bytes(10)).head.value, -EINVAL);
}

TEST_F(SerialPortOfAHost, EndsAReadAtItsTime)
{
    terminal({115200, 8, 'e', 1, 0, 10, false});

    const Packet answer = control.exchange(Client::head(Kind::Read, number, 4));

    EXPECT_EQ(answer.head.value, 0);
    EXPECT_TRUE(answer.bytes.empty());
}

TEST_F(SerialPortOfAHost, DoesNotLetAReadWaitThatMustNot)
{
    terminal({115200, 8, 'e', 1, 1, 0, false});
    wire::Head head = Client::head(Kind::Read, number, 4);
    head.other = 1;

    EXPECT_EQ(control.exchange(head).head.value, -EAGAIN);
}

TEST_F(SerialPortOfAHost, EndsAReadThatIsCancelled)
{
    terminal({115200, 8, 'e', 1, 1, 0, false});
    Client reader{served};
    reader.send(Client::head(Kind::Read, number, 4));
    reader.send(Client::head(Kind::Cancel));

    EXPECT_EQ(reader.receive().head.value, -EINTR);
    reader.send(Client::head(Kind::Cancel));
    EXPECT_EQ(reader.exchange(Client::head(Kind::Readable, number)).head.value, 0)
        << "what does not wait is not cancelled";
}

TEST_F(SerialPortOfAHost, AnswersAReadWhenBytesCome)
{
    terminal({115200, 8, 'e', 1, 1, 0, false});
    Client router{served};
    const auto routing = static_cast<std::uint64_t>(open(router, "/dev/uart-redir"));
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, routing, 0, 0x4001004C), {0x96}).head.value, 0);
    EXPECT_EQ(control.exchange(Client::head(Kind::Ioctl, routing, 0, 0x4001004B), {1}).head.value, 0);
    Client reader{served};
    reader.send(Client::head(Kind::Read, number, 4));

    EXPECT_EQ(control.exchange(Client::head(Kind::Write, number), {0x7F}).head.value, 1);

    const Packet answer = reader.receive();
    EXPECT_EQ(answer.head.value, 1);
    EXPECT_EQ(answer.bytes, Bytes{0x79});
    EXPECT_EQ(control.exchange(Client::head(Kind::Drain, number)).head.value, 0);
}

TEST_F(HostTest, FailsAndNotesOtherCalls)
{
    control.command({"fail", "/any", "sem_wait", "EINTR", "1"});
    const std::string call{"/any\0sem_wait", 13};
    EXPECT_EQ(control.exchange(Kind::Fault, call).head.value, EINTR);
    EXPECT_EQ(control.exchange(Kind::Fault, call).head.value, 0);
    EXPECT_EQ(control.exchange(Kind::Fault, "nonsense").head.value, 0);

    const std::string note{"/any\0sem_wait\0", 14};
    control.send(Client::head(Kind::Note, 0, EINTR), {note.begin(), note.end()});
    EXPECT_THAT(log(), HasSubstr(" 4711/1 /any sem_wait !EINTR\n"));
}

TEST_F(HostTest, ShowsWhatIsNotedBeforeWhatIsAskedNext)
{
    (void)control.exchange(Kind::Hello, "");
    const std::string note{"sleep\0first\0", 12};
    control.send(Client::head(Kind::Note), {note.begin(), note.end()});
    Client file{served};
    (void)open(file, "/dev/backlight");

    EXPECT_THAT(log(), testing::ContainsRegex("sleep first\n.*/dev/backlight open rdwr\n"));
}

TEST_F(HostTest, FollowsTheLogForWhoAsksForIt)
{
    Client follower{served};
    EXPECT_EQ(follower.command({"follow"}).head.value, 0);
    Client file{served};
    (void)open(file, "/dev/backlight");

    EXPECT_THAT(follower.receive().text(), HasSubstr("/dev/backlight open rdwr"));
}

TEST_F(HostTest, AnswersACommandThatCannotBe)
{
    const Packet answer = control.command({"explode"});

    EXPECT_EQ(answer.head.value, 1);
    EXPECT_EQ(answer.text(), "unknown command 'explode'");
}

TEST_F(HostTest, EndsAConnectionThatSendsMoreThanAnyProgram)
{
    Client flood{served};
    flood.send(Client::head(Kind::Write), Bytes(wire::kLargestPacket + 1));

    EXPECT_TRUE(flood.isOver());
    EXPECT_EQ(control.exchange(Kind::Locate, "/dev/backlight").head.value, 1) << "the others go on";
}

} // namespace

} // namespace host_test
