// SPDX-License-Identifier: LicenseRef-HXAux
// Each kind of value as text and as JSON.
#include "tools/hxaux/Value.h"

#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tools/hxaux/Report.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace value_test {

using hxaux::Absent;
using hxaux::Coded;
using hxaux::Exit;
using hxaux::Field;
using hxaux::problemLines;
using hxaux::Report;
using hxaux::Value;
using nlohmann::json;

Report with(std::vector<Field> fields)
{
    return {"x", "", Exit::Done, std::move(fields), {}, {}};
}

struct Form : Named {
    Value value;
    const char* text;
    const char* json;
};

class ReportedValue : public hxtest::TestWithRow<Form> {};

ROW_TEST(ReportedValue, HasATextAndAFormInJson)
{
    EXPECT_EQ(row().value.text(), row().text);
    EXPECT_EQ(json::parse(asJson(with({{"it", row().value}})))["result"]["it"], json::parse(row().json));
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST_ROWS(Of, ReportedValue, kNameOfRow, Form{"Nothing", Absent{}, "absent", "null"}, Form{"On", true, "on", "true"},
          Form{"Off", false, "off", "false"}, Form{"Negative", -7, "-7", "-7"},
          Form{"Byte", static_cast<unsigned char>(200), "200", "200"},
          Form{"Large", 4294967295U, "4294967295", "4294967295"},
          Form{"SizeOfAFile", std::size_t{95000}, "95000", "95000"},
          Form{"Rounded", Value(11.99832, 3), "11.998", "11.998"}, Form{"RoundedUp", Value(0.9996, 3), "1.000", "1.0"},
          Form{"HalfAsItLooks", Value(1.2345, 3), "1.234", "1.234"}, Form{"NoDecimals", Value(2.6, 0), "3", "3.0"},
          Form{"ManyDecimals", Value(0.1, 4), "0.1000", "0.1"}, Form{"NotANumber", Value(kNan), "nan", "null"},
          Form{"Infinity", Value(kInfinity), "inf", "null"},
          Form{"Code", Coded{85, "Front Panel Button"}, "Front Panel Button (85)",
               R"({"code":85,"text":"Front Panel Button"})"},
          Form{"CodeWithAHostileName", Coded{-1, "\x1b"}, "\\x1b (-1)", R"({"code":-1,"text":"\u001b"})"},
          Form{"Text", "a b", "a b", R"("a b")"}, Form{"EmptyText", "", "", R"("")"},
          Form{"List", Value::List{1, Value(0.5, 2), "x"}, "1, 0.50, x", R"([1,0.5,"x"])"},
          Form{"EmptyList", Value::List{}, "", "[]"},
          Form{"ListOfOne", Value::List{Value::List{1, 2}}, "1, 2", "[[1,2]]"},
          Form{"Record", Value::Record{{"red", 1}, {"heat now", 40, "C"}}, "red 1, heat now 40 C",
               R"({"red":1,"heat_now":40})"},
          Form{"EmptyRecord", Value::Record{}, "", "{}"});

TEST(LargeValue, IsWholeHoweverLarge)
{
    EXPECT_EQ(Value(1e308, 2).text().size(), 309U + 3);
    EXPECT_EQ(json::parse(asJson(with({{"it", Value(1e308, 2)}})))["result"]["it"], 1e308);
}

TEST(ReportedUnits, AreNestedLikeTheResult)
{
    const json document = json::parse(asJson(with({{"module 0", Value::Record{{"heat", 40, "C"}, {"type", 3}}},
                                                   {"module 1", Value::Record{{"heat", 41, "C"}, {"type", 3}}},
                                                   {"level", 7},
                                                   {"light", 7, "lux"}})));

    EXPECT_EQ(document["units"], json::parse(R"({"module":{"heat":"C"},"light":"lux"})"));
}

TEST(ReportedSeries, TakesItsNumberFromTheEndOfTheName)
{
    const json result =
        json::parse(asJson(with({{"video 1 scale 0", 1}, {"smart 0x10", 2}, {"can bus", 3}})))["result"];

    EXPECT_EQ(result, json::parse(R"({"video_1_scale":[{"number":0,"value":1}],"smart":[{"number":16,"value":2}],)"
                                  R"("can_bus":3})"));
}

TEST(ReportedTime, ComesBeforeTheValuesAndOnlyWithThem)
{
    Report report = with({{"a", 1}});
    report.time = "12:34:56";
    EXPECT_EQ(asText(report), "time: 12:34:56\na: 1\n");
    EXPECT_EQ(json::parse(asJson(report))["result"], json::parse(R"({"a":1,"time":"12:34:56"})"));

    report.result.clear();
    EXPECT_EQ(asText(report), "");
}

TEST(ReportedProblem, OfTheToolItselfHasNoCode)
{
    const Report report{"upgrade", "", Exit::File, {}, {}, {{"a.hex", -1, "truncated"}}};

    EXPECT_EQ(problemLines(report), "upgrade: a.hex: truncated\n");
    EXPECT_EQ(json::parse(asJson(report))["errors"][0],
              json::parse(R"({"item":"a.hex","code":null,"name":null,"text":"truncated"})"));
}

TEST(ReportedProblem, WithoutAnObjectBelongsToTheTool)
{
    EXPECT_EQ(problemLines({"", "", Exit::Usage, {}, {}, {{"", -1, "what?"}}}), "hxaux: what?\n");
}

TEST(ReportedProblems, AreSaidOneByOneWhenTheirReasonsDiffer)
{
    const auto lines = [](const char* text, int code) {
        return problemLines({"x", "", Exit::Refused, {}, {}, {{"a", 1, "Open failed"}, {"b", code, text}}});
    };

    EXPECT_EQ(lines("Open failed", 1), "x: Open failed (1)\n");
    EXPECT_EQ(lines("Open failed", 7), "x: a: Open failed (1)\nx: b: Open failed (7)\n");
    EXPECT_EQ(lines("Refused", 1), "x: a: Open failed (1)\nx: b: Refused (1)\n");
}

} // namespace value_test
