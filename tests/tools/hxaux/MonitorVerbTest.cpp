// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/hxaux/OnUnit.h"

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;

namespace {

long occurrences(const std::string& text, const std::string& part)
{
    long count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

} // namespace

TEST(MonitorVerb, PrintsTheWholeStateFirst)
{
    const Outcome outcome = onUnit("hxaux monitor --count 1");

    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(0)));
    for (const char* line : {"temperature ss: 38 \u00B0C\n", "temperature pcb: 35 ", "temperature pm 0: ",
                             "voltage 0: 24.00 V\n", "voltage 7: 1.20 V\n", "input 1: off\n", "input 4: off\n",
                             "power backlight: on\n", "power can: on\n", "power fan: off\n", "power video 1: on\n",
                             "power video 4: off\n", "light: 248 lux\n", "backlight level: 128\n"})
        EXPECT_THAT(outcome.output, HasSubstr(line));
}

TEST(MonitorVerb, PrintsOnlyChangesToAPipe)
{
    const Outcome outcome = onUnit(
        "hxaux monitor --every 0.1 & sleep 1; hx-sim set voltage.0 11.5; sleep 1; kill -TERM $!; wait $! 2>/dev/null");

    EXPECT_EQ(occurrences(outcome.output, "voltage 0: "), 2);
    EXPECT_EQ(occurrences(outcome.output, "voltage 1: "), 1);
    EXPECT_THAT(outcome, AllOf(outputMatches("voltage 0: 11.50 V\n$"), errorIs(""), statusIs(143)));
}

TEST(MonitorVerb, GivesOneObjectOfTheWholeStatePerLine)
{
    const auto lines = jsonLinesOf(onUnit("hxaux monitor --json --every 0.1 --count 3"));

    ASSERT_EQ(lines.size(), 3U);
    for (const auto& line : lines) {
        EXPECT_EQ(line["result"]["voltage"][0]["value"], 24.0);
        EXPECT_EQ(line["result"]["input"][0]["value"], false);
        EXPECT_EQ(line["units"]["light"], "lux");
    }
}

TEST(MonitorVerb, RedrawsInPlaceOnATerminal)
{
    const Outcome outcome = runOnTerminal("hx-sim run -- hxaux monitor --every 0.1 --count 2");

    EXPECT_EQ(occurrences(outcome.output, "voltage 0 to 7: 24.00, 12.00, "), 2);
    EXPECT_THAT(outcome.output, HasSubstr("\x1b["));
}

TEST(MonitorVerb, FitsATerminalOf24Lines)
{
    const Outcome outcome = runOnTerminal("hx-sim run -- hxaux monitor --count 1");

    EXPECT_THAT(outcome, AllOf(outputMatches("power video 1 to 4: on, on, off, off\r\n"),
                               outputMatches("power backlight: on\r\npower can: on\r\n"), statusIs(0)));
    EXPECT_LT(occurrences(outcome.output, "\n"), 24);
    EXPECT_GT(occurrences(outcome.output, "\n"), 10);
}

TEST(MonitorVerb, PrintsTheTimeOfDayOfEachChange)
{
    EXPECT_THAT(onUnit("hxaux monitor --count 1"), outputMatches("^time: [0-2][0-9]:[0-5][0-9]:[0-5][0-9]\n"));
    EXPECT_THAT(onUnit("hxaux monitor --count 1 --json"),
                outputMatches("\"time\":\"[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}[+-][0-9]{4}\""));
}

TEST(MonitorVerb, NamesOnceWhatCannotBeReadAndContinues)
{
    const Outcome outcome = onUnit("hxaux monitor --every 0.05 --count 4", {"absent = /dev/dig-io"});

    EXPECT_EQ(occurrences(outcome.error, "monitor: input 1: Open failed (1)\n"), 1);
    EXPECT_THAT(outcome, AllOf(outputMatches("input 1: absent\n"), outputMatches("voltage 0: 24.00 V\n"), statusIs(1)));
}

TEST(MonitorVerb, ReportsADeviceThatFailsMeanwhile)
{
    const Outcome outcome = onUnit("hxaux monitor --every 0.1 & sleep 1; hx-sim fail /dev/adc-id \"get 0\"; sleep 1; "
                                   "kill -TERM $!; wait $! 2>/dev/null");

    EXPECT_THAT(outcome, AllOf(outputMatches("voltage 0: absent\n"),
                               errorIs("monitor: voltage 0: IoCtrl operation failed (7)\n")));
}
