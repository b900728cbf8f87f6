// SPDX-License-Identifier: LicenseRef-HXAux
// The lines of a unit's event stream, as other programs read them.
#include "simulator/protocol/EventJson.h"
#include "testing/Named.h"
#include "testing/RowTest.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace event_lines_test {

using namespace hxsim;
using namespace std::chrono_literals;
using nlohmann::json;
using Kind = Event::Kind;

struct Line : Named {
    Event event;
    const char* text;
};

Event request()
{
    Event event{.kind = Kind::Request, .time = 1500ms, .number = 7, .subject = "/dev/x", .text = "put 4 = 1"};
    event.process = 12;
    event.thread = 13;
    event.name = "put 4";
    event.direction = "in";
    event.in = "00 80";
    event.error = "EIO";
    return event;
}

Event held()
{
    return {
        .kind = Kind::Held, .time = 2s, .subject = "top", .text = "is running", .old = "5", .process = 1, .thread = 2};
}

class EventLine : public hxtest::TestWithRow<Line> {};

ROW_TEST(EventLine, HasTheFieldsOfItsKind)
{
    EXPECT_EQ(lineOf(row().event), row().text);
    EXPECT_EQ(eventFrom(json::parse(row().text)), row().event);
}

TEST_ROWS(Of, EventLine, kNameOfRow,
          Line{"Property",
               {.kind = Kind::Property, .time = 1ns, .number = 1, .subject = "light", .text = "5", .old = "4"},
               R"({"event":"property","name":"light","new":"5","number":1,"old":"4","time":1e-09})"},
          Line{"PropertyThatBecomesEmpty",
               {.kind = Kind::Property, .subject = "x", .old = "4"},
               R"({"event":"property","name":"x","new":"","number":0,"old":"4","time":0.0})"},
          Line{"PropertyThatWasEmpty",
               {.kind = Kind::Property, .subject = "x", .text = "4"},
               R"({"event":"property","name":"x","new":"4","number":0,"time":0.0})"},
          Line{"Request", request(),
               R"({"call":"put 4 = 1","device":"/dev/x","direction":"in","error":"EIO","event":"request","in":"00 80",)"
               R"("name":"put 4","number":7,"process":12,"thread":13,"time":1.5})"},
          Line{"Fault",
               {.kind = Kind::Fault, .number = 2, .subject = "/dev/x", .text = "open"},
               R"({"call":"open","device":"/dev/x","event":"fault","number":2,"time":0.0})"},
          Line{"Joined",
               {.kind = Kind::Joined, .number = 3, .subject = "top", .process = 4},
               R"({"event":"joined","number":3,"process":4,"program":"top","time":0.0})"},
          Line{"Left",
               {.kind = Kind::Left, .number = 3, .subject = "top"},
               R"({"event":"left","number":3,"program":"top","time":0.0})"},
          Line{"Output",
               {.kind = Kind::Output, .number = 9, .subject = "top", .text = "a \"b\"\x1b"},
               R"({"event":"output","line":"a \"b\"\u001b","number":9,"program":"top","time":0.0})"},
          Line{"Alarm", {.kind = Kind::Alarm, .time = 1h}, R"({"event":"alarm","number":0,"time":3600.0})"},
          Line{
              "Held", held(),
              R"({"event":"held","number":0,"process":1,"program":"top","seconds":"5","state":"is running","thread":2,)"
              R"("time":2.0})"});

struct Strange : Named {
    const char* text;
    Event event;
};

class StrangeEvent : public hxtest::TestWithRow<Strange> {};

ROW_TEST(StrangeEvent, IsReadAsFarAsItIsUnderstood)
{
    EXPECT_EQ(eventFrom(json::parse(row().text)), row().event);
}

TEST_ROWS(With, StrangeEvent, kNameOfRow,
          Strange{"FieldsThatAreNotTexts", R"({"event":"output","line":5,"program":null})", {.kind = Kind::Output}},
          Strange{"NumbersThatAreTexts", R"({"event":"alarm","number":"1","process":"2","time":[]})", {}},
          Strange{"NumbersThatDoNotFit", R"({"event":"alarm","number":-1,"process":4294967297,"thread":1e300})", {}},
          Strange{
              "NumbersWithAFraction", R"({"event":"alarm","number":1.5,"process":2.0,"thread":-3})", {.thread = -3}},
          Strange{"TheLargestNumbers",
                  R"({"event":"alarm","number":18446744073709551615,"process":2147483647})",
                  {.number = 18446744073709551615U, .process = 2147483647}},
          Strange{"ANegativeTime", R"({"event":"alarm","time":-5})", {}},
          Strange{"ATimeBeyondTheClock", R"({"event":"alarm","time":1e300})", {.time = 9000000000s}},
          Strange{"FieldsOfAnotherKind", R"({"event":"alarm","line":"x","device":"y"})", {}});

TEST(StrangeObject, IsNotAnEvent)
{
    for (const char* const text : {"null", "5", "[]", "{}", R"({"event":5})", R"({"event":"Alarm"})", R"("alarm")"})
        EXPECT_EQ(eventFrom(json::parse(text)), std::nullopt) << text;
    EXPECT_EQ(eventFrom(json::parse("{", nullptr, false)), std::nullopt) << "what is not JSON";
}

TEST(EventTime, IsExactForThreeMonths)
{
    const Event event{.kind = Kind::Alarm, .time = 24h * 90 + 1ns};

    EXPECT_EQ(eventFrom(json::parse(lineOf(event))), event);
}

TEST(HeldText, NamesProgramAndThread)
{
    EXPECT_EQ(textOfHeld(held()), "program 'top' (process 1) has not slept for 5 s of real time: its thread 2 is "
                                  "running; virtual time passes only while all programs sleep or wait");
}

} // namespace event_lines_test
