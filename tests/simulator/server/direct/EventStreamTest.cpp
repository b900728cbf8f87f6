// SPDX-License-Identifier: LicenseRef-HXAux
// The event socket of a unit in this process, with good and with hostile clients.
#include "simulator/server/EventStream.h"

#include "simulator/protocol/EventJson.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"
#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace hxsim;
using namespace std::chrono_literals;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class EventStreamTest : public testing::Test {
protected:
    TemporaryFolder folder{};
    Unit unit{};
    bool isOwnerGone = false;
    EventStream stream{unit, folder / "events",
                       [this](const std::vector<std::string>& words) {
                           unit.describe(words.at(1));
                           return EventStream::Answer{true, words[0]};
                       },
                       [this] { isOwnerGone = true; }};

    class Client {
    public:
        explicit Client(EventStreamTest& test) : test_{test}, fd_{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)}
        {
            sockaddr_un address{};
            address.sun_family = AF_UNIX;
            std::strcpy(address.sun_path, (test.folder / "events").c_str());
            EXPECT_EQ(connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
            test_.stream.serve();
        }
        ~Client() { hangUp(); }
        Client(const Client&) = delete;
        Client& operator=(const Client&) = delete;

        void hangUp()
        {
            if (fd_ >= 0)
                close(std::exchange(fd_, -1));
        }
        /// As much as the socket accepts; the number of bytes.
        std::size_t write(const std::string& text) const
        {
            const ssize_t count = send(fd_, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
            return count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        /// Sends a command; its answer and the lines before it stay unread.
        void command(const json& words) const
        {
            const std::string line = cli::written(json{{"id", 1}, {"command", words}}) + '\n';
            EXPECT_EQ(write(line), line.size());
            test_.stream.serve();
        }
        /// All lines that have arrived.
        std::vector<json> lines()
        {
            std::vector<json> read;
            std::array<char, 65536> bytes{};
            ssize_t count = 0;
            while ((count = recv(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT)) > 0) {
                unread_.append(bytes.data(), static_cast<std::size_t>(count));
                test_.stream.serve();
            }
            isOver_ = count == 0;
            for (std::size_t end; (end = unread_.find('\n')) != std::string::npos; unread_.erase(0, end + 1))
                read.push_back(json::parse(unread_.substr(0, end)));
            return read;
        }
        std::vector<Event> events()
        {
            std::vector<Event> all;
            for (const json& line : lines())
                if (const auto event = eventFrom(line))
                    all.push_back(*event);
            return all;
        }
        /// "property light", "request /dev/x"
        std::vector<std::string> eventNames()
        {
            std::vector<std::string> names;
            for (const json& line : lines())
                if (line.contains("event"))
                    names.push_back(line["event"].get<std::string>() + ' ' +
                                    line.value("name", line.value("device", line.value("program", ""))));
            return names;
        }
        [[nodiscard]] bool isOver() const { return isOver_; }

    private:
        EventStreamTest& test_;
        int fd_;
        std::string unread_{};
        bool isOver_ = false;
    };

    void call(const std::string& device, const std::string& action = "open rdwr")
    {
        unit.journal().add(Entry{.time = unit.clock().now(), .subject = device, .action = action});
    }
};

TEST_F(EventStreamTest, GreetsWithItsVersion)
{
    Client client{*this};

    EXPECT_THAT(client.lines(), ElementsAre(json{{"version", 1}, {"time", 0.0}}));
}

TEST_F(EventStreamTest, AnswersACommandWithItsNumberAndTime)
{
    unit.clock().advanceTo(1500ms);
    Client client{*this};
    (void)client.lines();

    client.command({"set", "light = 250"});

    EXPECT_THAT(client.lines(), ElementsAre(json{{"id", 1}, {"ok", true}, {"text", "set"}, {"time", 1.5}}));
    EXPECT_EQ(unit.properties().get("light"), "250");
}

TEST_F(EventStreamTest, AnswersARefusedCommandWithTheReason)
{
    Client client{*this};
    (void)client.lines();

    client.command({"set", "ligth = 250"});

    const json answer = client.lines().at(0);
    EXPECT_EQ(answer["ok"], false);
    EXPECT_THAT(answer["error"].get<std::string>(), HasSubstr("did you mean 'light'?"));
}

TEST_F(EventStreamTest, AnswersAFollowerWithTheValues)
{
    Client client{*this};
    (void)client.lines();

    client.command({"events", "backlight.level", "light"});

    EXPECT_EQ(client.lines().at(0)["values"], (json{{"backlight.level", "128"}, {"light", "250"}}))
        << "the values of a healthy unit";
}

TEST_F(EventStreamTest, RefusesToFollowAnUnknownProperty)
{
    Client client{*this};
    (void)client.lines();

    client.command({"events", "backlight.levle"});

    EXPECT_THAT(client.lines().at(0)["error"].get<std::string>(), HasSubstr("did you mean 'backlight.level'?"));
}

TEST_F(EventStreamTest, PublishesAChangeWithOldAndNewValue)
{
    Client client{*this};
    client.command({"events", "backlight.level"});
    (void)client.lines();

    unit.clock().advanceTo(2s);
    unit.properties().set("backlight.level", "40");
    stream.serve();

    EXPECT_THAT(client.lines(), ElementsAre(json{{"event", "property"},
                                                 {"name", "backlight.level"},
                                                 {"old", "128"},
                                                 {"new", "40"},
                                                 {"number", 1},
                                                 {"time", 2.0}}));
}

TEST_F(EventStreamTest, PublishesAChangeBeforeTheAnswerOfItsCommand)
{
    Client client{*this};
    client.command({"events", "light"});
    (void)client.lines();

    client.command({"set", "light = 1"});

    const std::vector<json> lines = client.lines();
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0]["event"], "property");
    EXPECT_EQ(lines[1]["ok"], true);
}

TEST_F(EventStreamTest, LeavesOutPropertiesThatAClientDoesNotFollow)
{
    Client first{*this};
    Client second{*this};
    first.command({"events", "light"});
    second.command({"events", "backlight.level"});

    unit.describe("light = 1\nbacklight.level = 2");
    stream.serve();

    EXPECT_THAT(first.eventNames(), ElementsAre("property light"));
    EXPECT_THAT(second.eventNames(), ElementsAre("property backlight.level"));
}

TEST_F(EventStreamTest, FollowsEveryPropertyWithAll)
{
    Client client{*this};
    client.command({"events", "--all"});

    unit.describe("buzzer.volume = 3\ncan.4.up = on");
    stream.serve();

    EXPECT_THAT(client.eventNames(), ElementsAre("property buzzer.volume", "property can.4.up"));
}

TEST_F(EventStreamTest, PublishesACallAndThenWhatItChanged)
{
    Client client{*this};
    client.command({"events", "backlight.level"});

    unit.properties().set("backlight.level", "40");
    unit.journal().add(Entry{.time = 0s,
                             .caller = {7, 1},
                             .kind = Entry::Kind::Ioctl,
                             .subject = "/dev/backlight",
                             .request = 0x40010003,
                             .in = {40},
                             .error = EIO});
    stream.serve();

    const std::vector<Event> events = client.events();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0], (Event{.kind = Event::Kind::Request,
                                .number = 1,
                                .subject = "/dev/backlight",
                                .text = "0x40010003: 28 !EIO",
                                .process = 7,
                                .thread = 1,
                                .name = "0x40010003",
                                .direction = "in",
                                .in = "28",
                                .error = "EIO"}));
    EXPECT_EQ(events[1].subject, "backlight.level");
}

TEST_F(EventStreamTest, NamesRegisterCallsByTheirRegister)
{
    const Event event = EventSource::eventOf(
        Entry{.kind = Entry::Kind::Ioctl, .subject = "/dev/power-id", .request = 0xC0040001, .in = {4, 0, 1, 0}});

    EXPECT_EQ(event.direction, "in");
    EXPECT_EQ(event.text.substr(0, event.name.size()), event.name);
}

TEST_F(EventStreamTest, PublishesEachValueBetweenTwoTimers)
{
    Client client{*this};
    client.command({"events", "backlight.level"});
    for (const int level : {1, 2, 3})
        unit.clock().at(std::chrono::seconds{level},
                        [this, level] { unit.properties().set("backlight.level", std::to_string(level)); });

    unit.clock().advanceTo(10s);
    stream.serve();

    std::vector<std::string> seen;
    for (const Event& event : client.events())
        seen.push_back(event.text + " at " + std::to_string(event.time / 1s));
    EXPECT_THAT(seen, ElementsAre("1 at 1", "2 at 2", "3 at 3"));
}

TEST_F(EventStreamTest, PublishesWhatChangesWithTimeAlone)
{
    Client client{*this};
    unit.describe("led.color = 0 15 0\nled.timing = 10 10 0 0");
    client.command({"events", "led.lit"});

    unit.clock().advanceTo(350ms);
    stream.serve();

    EXPECT_THAT(client.eventNames(), SizeIs(3));
}

TEST_F(EventStreamTest, PublishesAFaultThatMeetsACall)
{
    Client client{*this};
    client.command({"events"});
    unit.addFault("/dev/backlight open EBUSY 1");

    (void)unit.faults().take("/dev/backlight", "open");
    stream.serve();

    const std::vector<Event> events = client.events();
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].subject + ' ' + events[0].text + ' ' + events[0].error, "/dev/backlight open EBUSY");
}

TEST_F(EventStreamTest, PublishesProgramsThatJoinAndLeave)
{
    Client client{*this};
    client.command({"events"});

    stream.source().joined(7, "console");
    stream.source().left(7);
    stream.source().left(8);
    stream.serve();

    EXPECT_THAT(client.eventNames(), ElementsAre("joined console", "left console"));
}

TEST_F(EventStreamTest, PublishesALineThatAClientReports)
{
    Client runner{*this};
    Client client{*this};
    client.command({"events"});

    runner.command({"output", "console", "ready"});

    const std::vector<Event> events = client.events();
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].subject + ": " + events[0].text, "console: ready");
}

TEST_F(EventStreamTest, LeavesOutSleepsForAFollowerThatIgnoresThem)
{
    Client client{*this};
    client.command({"events", "--without-sleeps"});
    (void)client.lines();

    call("sleep", "10 ms");
    call("/dev/x");
    stream.serve();

    EXPECT_THAT(client.eventNames(), ElementsAre("request open"));
}

TEST_F(EventStreamTest, KeepsAlarmsUntilTheyAreToRing)
{
    Client client{*this};
    stream.keepAlarms();
    client.command({"alarm", "2000000000"});
    (void)client.lines();

    unit.clock().advanceTo(2s);
    stream.serve();
    EXPECT_THAT(client.lines(), IsEmpty());
    EXPECT_TRUE(stream.awaitsAlarm());

    EXPECT_TRUE(stream.ringFirst());
    stream.serve();
    EXPECT_THAT(client.lines(), ElementsAre(json{{"event", "alarm"}, {"number", 0}, {"time", 2.0}}));
    EXPECT_FALSE(stream.ringFirst());
    EXPECT_FALSE(stream.awaitsAlarm());
}

TEST_F(EventStreamTest, AwaitsTheAlarmsOfParticipantsWhileThereAreAny)
{
    Client onlooker{*this};
    onlooker.command({"alarm", "2000000000"});
    EXPECT_TRUE(stream.awaitsAlarm());
    Client participant{*this};
    participant.command({"take-part"});
    EXPECT_FALSE(stream.awaitsAlarm());
    EXPECT_THAT(stream.participants(), ElementsAre(getpid()));
    participant.command({"alarm", "3000000000"});
    EXPECT_TRUE(stream.awaitsAlarm());

    participant.hangUp();
    stream.serve();

    EXPECT_FALSE(stream.hasParticipants());
    EXPECT_TRUE(stream.awaitsAlarm());
}

TEST_F(EventStreamTest, NotifiesParticipantsAlone)
{
    Client onlooker{*this};
    onlooker.command({"events"});
    Client participant{*this};
    participant.command({"take-part"});
    (void)onlooker.lines();

    stream.notify({.kind = Event::Kind::Held, .subject = "console", .text = "is running", .old = "5"});
    stream.serve();

    EXPECT_THAT(participant.eventNames(), ElementsAre("held console"));
    EXPECT_THAT(onlooker.lines(), IsEmpty());
}

TEST_F(EventStreamTest, SendsAnAlarmToItsClientAlone)
{
    Client client{*this};
    Client other{*this};
    other.command({"events"});
    client.command({"alarm", "2000000000"});
    (void)client.lines();

    unit.clock().advanceTo(3s);
    stream.serve();

    EXPECT_THAT(client.lines(), ElementsAre(json{{"event", "alarm"}, {"number", 0}, {"time", 2.0}}));
    EXPECT_THAT(other.eventNames(), IsEmpty());
}

TEST_F(EventStreamTest, SendsAnAlarmOfThePastAtOnce)
{
    unit.clock().advanceTo(5s);
    Client client{*this};
    client.command({"alarm", "1"});

    unit.clock().advanceTo(5s);
    stream.serve();

    EXPECT_THAT(client.eventNames(), SizeIs(1));
}

TEST_F(EventStreamTest, ForgetsTheAlarmsOfAClientThatHasGone)
{
    Client client{*this};
    client.command({"alarm", "2000000000"});
    client.hangUp();
    stream.serve();

    EXPECT_EQ(unit.clock().nextDeadline(), std::nullopt);
}

TEST_F(EventStreamTest, CancelsTheAlarmsOfOneClient)
{
    Client client{*this};
    Client other{*this};
    stream.keepAlarms();
    client.command({"alarm", "1000000000"});
    client.command({"alarm", "3000000000"});
    other.command({"alarm", "2000000000"});
    unit.clock().advanceTo(1s);
    client.command({"alarm"});
    (void)client.lines();
    (void)other.lines();

    EXPECT_EQ(unit.clock().nextDeadline(), 2s);
    unit.clock().advanceTo(3s);
    while (stream.ringFirst()) {
    }
    stream.serve();

    EXPECT_THAT(client.lines(), IsEmpty());
    EXPECT_THAT(other.lines(), SizeIs(1));
}

TEST_F(EventStreamTest, SendsTheLogToAFollowerThatWantsThePast)
{
    call("/dev/backlight");
    Client client{*this};

    client.command({"events", "--past"});
    call("/dev/adc-id");
    stream.serve();

    const std::vector<Event> events = client.events();
    ASSERT_THAT(events, SizeIs(2));
    EXPECT_EQ(events[0].subject, "/dev/backlight");
    EXPECT_EQ(events[0].number, 0U);
    EXPECT_EQ(events[1].number, 1U);
}

TEST_F(EventStreamTest, PublishesToManyFollowersWithoutLoss)
{
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<Client>(*this));
        clients.back()->command({"events"});
    }

    for (int i = 0; i < 2000; ++i)
        call("/dev/backlight");
    stream.serve();

    for (const auto& client : clients) {
        const std::vector<Event> events = client->events();
        ASSERT_THAT(events, SizeIs(2000));
        EXPECT_EQ(events.back().number, 2000U);
    }
}

TEST_F(EventStreamTest, StopsTheUnitWithItsOwner)
{
    Client client{*this};
    client.command({"own"});
    stream.serve();
    EXPECT_FALSE(isOwnerGone);

    client.hangUp();
    stream.serve();

    EXPECT_TRUE(isOwnerGone);
}

TEST_F(EventStreamTest, CutsOffASlowFollowerWithAMessage)
{
    Client slow{*this};
    Client good{*this};
    slow.command({"events"});
    good.command({"events"});
    std::size_t received = 0;
    constexpr int kCalls = 10000;

    for (int i = 0; i < kCalls; ++i) {
        call("/dev/backlight", "a call with a long text, so that the limit is reached soon: " + std::string(2000, 'x'));
        if (i % 100 == 0) {
            stream.serve();
            received += good.events().size();
        }
    }
    stream.serve();
    received += good.events().size();

    EXPECT_EQ(received, std::size_t{kCalls}) << "the other follower is not affected";
    const std::vector<json> lines = slow.lines();
    EXPECT_TRUE(slow.isOver());
    EXPECT_EQ(lines.back()["event"], "cut-off");
    EXPECT_THAT(lines.back()["reason"].get<std::string>(), HasSubstr("reads too slowly"));
    EXPECT_EQ(stream.clients(), 1U);
}

TEST_F(EventStreamTest, TakesHalfALineAsTheBeginOfOne)
{
    Client client{*this};
    (void)client.lines();

    client.write(R"({"id":7,"comm)");
    stream.serve();
    EXPECT_THAT(client.lines(), IsEmpty());
    client.write("and\":[\"set\",\"light = 1\"]}\n");
    stream.serve();

    EXPECT_EQ(client.lines().at(0)["id"], 7);
}

TEST_F(EventStreamTest, AnswersAClientThatHasSentItsLastCommand)
{
    Client client{*this};
    (void)client.lines();
    client.write("{\"command\":[\"set\",\"light = 1\"]}\n{\"command\":[\"set\",\"light = 2\"]}\n");
    client.hangUp();

    stream.serve();

    EXPECT_EQ(unit.properties().get("light"), "2");
    EXPECT_EQ(stream.clients(), 0U);
}

class BadLine : public EventStreamTest, public hxtest::WithRow<const char*> {};

ROW_TEST(BadLine, IsAnsweredAndTheNextOneIsServed)
{
    Client client{*this};
    (void)client.lines();

    client.write(row() + std::string{"\n"});
    client.command({"set", "light = 1"});
    const std::vector<json> lines = client.lines();

    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[0]["ok"], false);
    EXPECT_EQ(lines[1]["ok"], true);
}

TEST_ROWS(EventStream, BadLine, hxtest::kNumbered, "", "x", "{", "[]", "7", "null", "{}", R"({"command":[]})",
          R"({"command":"set"})", R"({"command":[1]})", R"({"command":[["set"]]})", R"({"command":["set"]})",
          R"({"command":["alarm","x"]})", R"({"command":["alarm","-1"]})", R"({"command":["own","x"]})",
          R"({"id":"x","command":["events","\u0000"]})", "\xff\xfe");

TEST_F(EventStreamTest, RefusesALineWithoutAnEnd)
{
    Client client{*this};
    (void)client.lines();
    const std::string part(32 << 10, 'x');

    for (int i = 0; i < 10; ++i) {
        client.write(part);
        stream.serve();
    }

    EXPECT_THAT(client.lines().back()["reason"].get<std::string>(), HasSubstr("a line is longer"));
    EXPECT_TRUE(client.isOver());
}

TEST_F(EventStreamTest, CutsOffAClientThatNeverReadsItsAnswers)
{
    Client client{*this};
    const std::string line = "{\"command\":[\"" + std::string(60000, 'x') + "\",\"light = 1\"]}\n";

    for (int i = 0; i < 1000; ++i) {
        client.write(line);
        stream.serve();
    }

    EXPECT_EQ(client.lines().back()["event"], "cut-off");
}

TEST_F(EventStreamTest, RefusesTooManyAlarms)
{
    Client client{*this};
    for (int i = 0; i < 1000; ++i)
        client.command({"alarm", "9000000000000"});
    (void)client.lines();

    client.command({"alarm", "9000000000000"});

    EXPECT_EQ(client.lines().at(0)["error"], "too many alarms");
}

TEST_F(EventStreamTest, RefusesTooManyClients)
{
    std::vector<std::unique_ptr<Client>> clients;
    clients.reserve(EventStream::kMostClients);
    for (std::size_t i = 0; i < EventStream::kMostClients; ++i)
        clients.push_back(std::make_unique<Client>(*this));

    Client tooMany{*this};

    EXPECT_EQ(tooMany.lines().back()["reason"], "the unit has too many clients");
    EXPECT_EQ(stream.clients(), EventStream::kMostClients);
}

TEST_F(EventStreamTest, PublishesNothingWhileNobodyFollows)
{
    Client client{*this};
    call("/dev/backlight");
    client.command({"events"});

    call("/dev/adc-id");
    stream.serve();

    const std::vector<Event> events = client.events();
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].number, 1U);
}

TEST(EventJson, ReadsBackEveryKindOfEvent)
{
    for (const auto kind : {Event::Kind::Property, Event::Kind::Request, Event::Kind::Fault, Event::Kind::Joined,
                            Event::Kind::Left, Event::Kind::Output, Event::Kind::Alarm, Event::Kind::Held}) {
        Event event{.kind = kind, .time = 1234567890123ns, .number = 5};
        if (kind != Event::Kind::Alarm)
            event.subject = "console";

        EXPECT_EQ(eventFrom(json::parse(lineOf(event))), event) << lineOf(event);
    }
}

TEST(EventJson, IgnoresWhatItDoesNotKnow)
{
    EXPECT_EQ(eventFrom(json::parse(R"({"event":"eclipse"})")), std::nullopt);
    EXPECT_EQ(eventFrom(json::parse(R"({"ok":true})")), std::nullopt);
    EXPECT_EQ(eventFrom(json::parse(R"([1])")), std::nullopt);
    EXPECT_EQ(eventFrom(json::parse(R"({"event":"alarm","time":"x","moon":1})")), Event{});
}

} // namespace
