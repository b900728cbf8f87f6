// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/Report.h"

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

TEST(ReportText, ShowsSwitchesAsOnAndOffAndNothingAsAbsent)
{
    EXPECT_EQ(asText({"x", "", Exit::Done, {{"a", true}, {"b", false}, {"c", Absent{}}}, {}, {}}),
              "a: on\nb: off\nc: absent\n");
}

TEST(ReportJson, IsTheOneDocumentedForm)
{
    EXPECT_EQ(asJson(voltageReport()),
              R"({"format":1,"object":"voltage","verb":"","status":0,)"
              R"("result":{"voltage 0":11.998},"units":{"voltage 0":"V"},"notes":[],"errors":[]})"
              "\n");
}

TEST(ReportJson, CarriesCodeNameAndTextOfAnError)
{
    const auto json =
        nlohmann::json::parse(asJson({"led", "set", Exit::Refused, {}, {}, {{"", 7, "IoCtrl operation failed"}}}));

    EXPECT_EQ(
        json["errors"][0],
        nlohmann::json::parse(R"({"item":"","code":7,"name":"ERR_IOCTRL_FAILED","text":"IoCtrl operation failed"})"));
}

TEST(ReportJson, StaysJsonWhenATextIsNoUtf8)
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
