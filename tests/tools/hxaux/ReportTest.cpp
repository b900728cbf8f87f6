// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Report.h"

#include "testing/Named.h"
#include "testing/RowTest.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace hxaux;

namespace {

Report voltageReport()
{
    return {"voltage", "", Exit::Done, {{"voltage 0", Value(11.99832, 3), "V"}}, {}, {}};
}

} // namespace

TEST(ReportText, HasNameValueAndUnitOnALine)
{
    EXPECT_EQ(asText(voltageReport()), "voltage 0: 11.998 V\n");
}

TEST(ReportText, EscapesLineEndsOfForeignTexts)
{
    EXPECT_EQ(asText({"info", "", Exit::Done, {{"serial", "12\n34"}}, {}, {}}), "serial: 12\\x0a34\n");
}

struct ForeignText : Named {
    std::string text;
    const char* shown;
};

class TextOfOthers : public hxtest::TestWithRow<ForeignText> {};

ROW_TEST(TextOfOthers, CannotCommandATerminal)
{
    EXPECT_EQ(asText({"info", "", Exit::Done, {{"serial", row().text}}, {}, {}}),
              std::string("serial: ") + row().shown + "\n");
    EXPECT_EQ(asText({"eeprom", "get", Exit::Done, {{row().text, true}}, {}, {}}), std::string(row().shown) + ": on\n");
    EXPECT_EQ(noteLines({"eeprom", "get", Exit::Done, {}, {row().text}, {}}), std::string(row().shown) + "\n");
    EXPECT_EQ(problemLines({"upgrade", "", Exit::File, {}, {}, {{row().text, -1, row().text}}}),
              std::string("upgrade: ") + row().shown + ": " + row().shown + "\n");
}

ROW_TEST(TextOfOthers, IsJsonWithoutControlCharacters)
{
    const std::string json =
        asJson({"info", "", Exit::Done, {{"serial", row().text}}, {row().text}, {{"", -1, row().text}}});

    EXPECT_TRUE(nlohmann::json::accept(json)) << json;
    for (std::size_t i = 0; i + 1 < json.size(); ++i) {
        const auto byte = static_cast<unsigned char>(json[i]);
        EXPECT_TRUE(byte >= 0x20 && byte != 0x7F) << json;
        EXPECT_FALSE(byte == 0xC2 && static_cast<unsigned char>(json[i + 1]) < 0xA0) << json;
    }
}

TEST_ROWS(Of, TextOfOthers, kNameOfRow, ForeignText{"Escape", "\x1b[31mred", "\\x1b[31mred"},
          ForeignText{"Bell", "\a", "\\x07"}, ForeignText{"LineEnd", "a\nb\r", "a\\x0ab\\x0d"},
          ForeignText{"Zero", std::string(1, 0), "\\x00"}, ForeignText{"Delete", "\x7f", "\\x7f"},
          ForeignText{"C1AsUtf8", "\xc2\x9b[31m", "\\xc2\\x9b[31m"}, ForeignText{"C1AsByte", "\x9b[31m", "\\x9b[31m"},
          ForeignText{"NotUtf8", "\xff\xfe", "\\xff\\xfe"}, ForeignText{"CutShort", "\xe2\x82", "\\xe2\\x82"},
          ForeignText{"Overlong", "\xc0\x9b", "\\xc0\\x9b"},
          ForeignText{"OverlongOfThree", "\xe0\x82\x9b", "\\xe0\\x82\\x9b"},
          ForeignText{"Surrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
          ForeignText{"BehindTheLast", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
          ForeignText{"Umlaut", "M\xc3\xbcller \xe2\x82\xac \xf0\x9f\x94\x86",
                      "M\xc3\xbcller \xe2\x82\xac \xf0\x9f\x94\x86"});

TEST(ReportText, ShowsSwitchesAsOnAndOffAndNothingAsAbsent)
{
    EXPECT_EQ(asText({"x", "", Exit::Done, {{"a", true}, {"b", false}, {"c", Absent{}}}, {}, {}}),
              "a: on\nb: off\nc: absent\n");
}

TEST(ReportJson, IsTheOneDocumentedForm)
{
    EXPECT_EQ(asJson(voltageReport()),
              R"({"format":3,"object":"voltage","verb":"","status":0,)"
              R"("result":{"voltage":[{"number":0,"value":11.998}]},"units":{"voltage":"V"},"notes":[],"errors":[]})"
              "\n");
}

TEST(ReportJson, HasKeysWithoutBlanksAndSeriesAsArrays)
{
    const Report report{"x",
                        "",
                        Exit::Done,
                        {{"unit serial", "7"},
                         {"timer 0", 4, "s"},
                         {"timer 2", 6, "s"},
                         {"module 1", Value::Record{{"type", 3}, {"temperature", 40, "C"}}}},
                        {},
                        {}};

    const auto json = nlohmann::json::parse(asJson(report));

    EXPECT_EQ(json["result"], nlohmann::json::parse(R"({"unit_serial":"7","timer":[{"number":0,"value":4},)"
                                                    R"({"number":2,"value":6}],)"
                                                    R"("module":[{"number":1,"type":3,"temperature":40}]})"));
    EXPECT_EQ(json["units"], nlohmann::json::parse(R"({"timer":"s","module":{"temperature":"C"}})"));
}

TEST(ReportJson, LeavesKeysOfTheUnitAsTheyAre)
{
    const Report report{"settings", "get", Exit::Done, {{"MY KEY 1", "x", "", NameOf::User}}, {}, {}};

    EXPECT_EQ(nlohmann::json::parse(asJson(report))["result"], nlohmann::json::parse(R"({"MY KEY 1":"x"})"));
}

TEST(ReportJson, CarriesCodeNameAndTextOfAnError)
{
    const auto json =
        nlohmann::json::parse(asJson({"led", "set", Exit::Refused, {}, {}, {{"", 7, "IoCtrl operation failed"}}}));

    EXPECT_EQ(
        json["errors"][0],
        nlohmann::json::parse(R"({"item":"","code":7,"name":"ERR_IOCTRL_FAILED","text":"IoCtrl operation failed"})"));
}

TEST(ReportJson, StaysJsonWhenATextIsNotUtf8)
{
    EXPECT_TRUE(nlohmann::json::accept(asJson({"info", "", Exit::Done, {{"serial", "\xff\xfe"}}, {}, {}})));
}

TEST(ReportProblems, HaveObjectVerbTextAndCode)
{
    EXPECT_EQ(problemLines({"backlight", "set", Exit::Refused, {}, {}, {{"", 1, "Open failed"}}}),
              "backlight set: Open failed (1)\n");
}

TEST(ReportProblems, AreSaidOnceWhenAllFailedForOneReason)
{
    EXPECT_EQ(
        problemLines(
            {"voltage", "", Exit::Refused, {}, {}, {{"voltage 0", 1, "Open failed"}, {"voltage 1", 1, "Open failed"}}}),
        "voltage: Open failed (1)\n");
}

TEST(ReportProblems, AreSaidOneByOneWhenSomethingWorked)
{
    EXPECT_EQ(problemLines({"version",
                            "",
                            Exit::Refused,
                            {{"library", "1.3.1.0"}},
                            {},
                            {{"ss", 1, "Open failed"}, {"fpga", 1, "Open failed"}}}),
              "version: ss: Open failed (1)\nversion: fpga: Open failed (1)\n");
}
