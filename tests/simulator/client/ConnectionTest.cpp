// SPDX-License-Identifier: LicenseRef-HXAux
// A connection to a unit that answers as no unit should, or in pieces.
#include "simulator/client/Connection.h"

#include "simulator/protocol/UnitFolder.h"
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace connection_test {

using namespace std::chrono_literals;
using hxsim::BadText;
using hxsim::Connection;
using hxsim::UnitFolder;
using hxsim::UnitGone;
using testing::ElementsAre;

// A runtime directory for this test alone.
class OwnRuntime {
public:
    OwnRuntime()
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
    }
    ~OwnRuntime()
    {
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    OwnRuntime(const OwnRuntime&) = delete;
    OwnRuntime& operator=(const OwnRuntime&) = delete;

private:
    const TemporaryFolder folder_{};
    std::string before_;
};

constexpr const char* kGreeting = "{\"version\":1}\n";

int boundSocket(const std::string& unit)
{
    std::filesystem::create_directories(UnitFolder::pathOf(unit));
    const std::string path = UnitFolder::pathOf(unit) + "/events";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error{"cannot bind " + path};
    return fd;
}

// Accepts one client, greets it, and answers each line that it sends with the next of these texts; then it is gone.
class FakeUnit {
public:
    FakeUnit(std::string greeting, std::vector<std::string> answers) : listener_{boundSocket("fake")}
    {
        listen(listener_, 1);
        thread_ = std::thread{[this, greeting = std::move(greeting), answers = std::move(answers)] {
            const int fd = accept(listener_, nullptr, nullptr);
            sendAll(fd, greeting);
            for (const std::string& answer : answers) {
                requests_.push_back(lineFrom(fd));
                sendAll(fd, answer);
            }
            close(fd);
        }};
    }
    ~FakeUnit()
    {
        if (thread_.joinable())
            thread_.join();
        close(listener_);
    }
    FakeUnit(const FakeUnit&) = delete;
    FakeUnit& operator=(const FakeUnit&) = delete;

    // What it was sent, when it is gone.
    const std::vector<std::string>& requests()
    {
        thread_.join();
        return requests_;
    }

private:
    static void sendAll(int fd, const std::string& text)
    {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t count = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (count <= 0)
                return;
            sent += static_cast<std::size_t>(count);
        }
    }
    static std::string lineFrom(int fd)
    {
        std::string line;
        for (char byte = 0; recv(fd, &byte, 1, 0) == 1 && byte != '\n';)
            line += byte;
        return line;
    }

    const OwnRuntime runtime_{};
    int listener_;
    std::vector<std::string> requests_{};
    std::thread thread_{};
};

template <typename Error, typename Work>
std::string errorOf(Work work)
{
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

struct Greeting : Named {
    const char* text;
    const char* error;
};

class BadGreeting : public hxtest::TestWithRow<Greeting> {};

ROW_TEST(BadGreeting, IsRefused)
{
    const FakeUnit unit{row().text, {}};

    EXPECT_EQ(errorOf<UnitGone>([] { const Connection connection{"fake"}; }), row().error);
}

constexpr const char* kOtherVersion = "the unit 'fake' is of another version of hx-sim";

TEST_ROWS(Of, BadGreeting, kNameOfRow, Greeting{"ANewerVersion", "{\"version\":2}\n", kOtherVersion},
          Greeting{"NoVersion", "{}\n", kOtherVersion}, Greeting{"NoObject", "[1]\n", kOtherVersion},
          Greeting{"NoJson", "hello\n", kOtherVersion}, Greeting{"Nothing", "", "the unit has stopped"},
          Greeting{"HalfALine", "{\"version\":1}", "the unit has stopped"});

TEST(Connection, SaysThatNoSuchUnitIsRunning)
{
    const OwnRuntime runtime;

    EXPECT_EQ(errorOf<UnitGone>([] { const Connection connection{"fake"}; }), "no unit named 'fake' is running");
    close(boundSocket("dead"));
    EXPECT_EQ(errorOf<UnitGone>([] { const Connection connection{"dead"}; }), "no unit named 'dead' is running");
    EXPECT_NE(errorOf<hxsim::BadUsage>([] { const Connection connection{"../fake"}; }), "");
}

TEST(Connection, ReadsAnAnswerWithItsTimeAndValues)
{
    FakeUnit unit{kGreeting,
                  {R"({"id":1,"ok":true,"text":"5\n","time":1.5,"values":{"light":"7"}})"
                   "\n"}};
    Connection connection{"fake"};

    const Connection::Answer answer = connection.command({"get", "a \"b\""});

    EXPECT_EQ(answer.text, "5\n");
    EXPECT_EQ(answer.time, hxsim::Time{1500ms});
    EXPECT_EQ(answer.values.at("light"), "7");
    EXPECT_THAT(unit.requests(), ElementsAre(R"({"command":["get","a \"b\""],"id":1})"));
}

TEST(Connection, ThrowsWhatTheUnitRefuses)
{
    const FakeUnit unit{kGreeting,
                        {R"({"id":1,"ok":false,"error":"there is no light"})"
                         "\n",
                         R"({"id":2})"
                         "\n",
                         R"({"id":3,"ok":true})"
                         "\n"}};
    Connection connection{"fake"};

    EXPECT_EQ(errorOf<BadText>([&] { (void)connection.command({"x"}); }), "there is no light");
    EXPECT_EQ(errorOf<BadText>([&] { (void)connection.command({"x"}); }), "the unit has refused the command");
    EXPECT_EQ(connection.command({"x"}).text, "") << "it answers again";
}

TEST(Connection, KeepsEventsThatComeBeforeAnAnswerInTheirOrder)
{
    const FakeUnit unit{kGreeting,
                        {R"({"event":"output","line":"a"})"
                         "\n"
                         R"({"event":"output","line":"b"})"
                         "\n"
                         R"({"id":1,"ok":true})"
                         "\n"
                         R"({"event":"output","line":"c"})"
                         "\n"}};
    Connection connection{"fake"};

    (void)connection.command({"events"});

    EXPECT_EQ(connection.next().text, "a");
    EXPECT_EQ(connection.next().text, "b");
    EXPECT_EQ(connection.received(), std::nullopt);
    EXPECT_EQ(connection.next().text, "c");
    EXPECT_EQ(errorOf<UnitGone>([&] { (void)connection.next(); }), "the unit has stopped");
}

TEST(Connection, SkipsWhatItDoesNotUnderstand)
{
    const FakeUnit unit{kGreeting,
                        {"nonsense\n\n[]\n"
                         R"({"event":"eclipse"})"
                         "\n"
                         R"({"id":7,"ok":true,"text":"other"})"
                         "\n"
                         R"({"id":1,"ok":true,"text":"mine"})"
                         "\n"}};
    Connection connection{"fake"};

    EXPECT_EQ(connection.command({"x"}).text, "mine");
    EXPECT_EQ(connection.received(), std::nullopt);
}

TEST(Connection, ReadsALineThatComesInManyPieces)
{
    const std::string longText(100000, 'x');
    const FakeUnit unit{kGreeting, {R"({"id":1,"ok":true,"text":")" + longText + "\"}\n"}};
    Connection connection{"fake"};

    EXPECT_TRUE(connection.command({"x"}).text == longText);
}

TEST(Connection, SaysWhyTheUnitEndsIt)
{
    const FakeUnit unit{kGreeting,
                        {R"({"reason":"the unit has too many clients"})"
                         "\n"}};
    Connection connection{"fake"};

    EXPECT_EQ(errorOf<UnitGone>([&] { (void)connection.command({"x"}); }),
              "the unit has ended the connection: the unit has too many clients");
}

TEST(Connection, SaysSoWhileItWaitsForAnEventToo)
{
    const FakeUnit unit{kGreeting,
                        {R"({"id":1,"ok":true})"
                         "\n"
                         R"({"reason":"too slow"})"
                         "\n"}};
    Connection connection{"fake"};
    (void)connection.command({"events"});

    EXPECT_EQ(errorOf<UnitGone>([&] { (void)connection.next(); }), "the unit has ended the connection: too slow");
}

TEST(Connection, ThrowsWhenTheUnitStopsBeforeItsAnswer)
{
    const FakeUnit unit{kGreeting, {R"({"id":1,)"}};
    Connection connection{"fake"};

    EXPECT_EQ(errorOf<UnitGone>([&] { (void)connection.command({"x"}); }), "the unit has stopped");
    EXPECT_EQ(errorOf<UnitGone>([&] { (void)connection.command({"x"}); }), "the unit has stopped");
}

TEST(Vocabulary, IsWhatTheUnitAnswers)
{
    const FakeUnit unit{kGreeting,
                        {R"({"id":1,"ok":true,"text":"{\"properties\":[\"light\"],\"devices\":[\"/dev/x\"]}"})"
                         "\n"}};

    const hxsim::Vocabulary vocabulary = hxsim::vocabularyOf("fake");

    EXPECT_THAT(vocabulary.properties, ElementsAre("light"));
    EXPECT_THAT(vocabulary.devices, ElementsAre("/dev/x"));
}

TEST(Vocabulary, IsRefusedFromAnotherVersion)
{
    const FakeUnit unit{kGreeting,
                        {R"({"id":1,"ok":true,"text":"light /dev/x"})"
                         "\n"}};

    EXPECT_EQ(errorOf<UnitGone>([] { (void)hxsim::vocabularyOf("fake"); }), kOtherVersion);
}

} // namespace connection_test
