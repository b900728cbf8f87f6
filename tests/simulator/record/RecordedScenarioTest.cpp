// SPDX-License-Identifier: LicenseRef-HXAux
// The scenario that a recording becomes, line by line.
#include "simulator/record/RecordedScenario.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

#include <gmock/gmock.h>

namespace recorded_scenario_test {

using namespace hxsim;
using modeltest::refusalOf;
using testing::StartsWith;

constexpr const char* kHead = "hx-sim scenario 1\n# Made by hx-sim convert from a.recording.\n";

Recording recorded(const std::string& lines)
{
    const Unit unit;
    return Recording::parse("hx-sim recording 1\n" + lines, unit);
}

std::string scenarioFrom(const std::string& lines, const std::vector<std::string>& program = {"app"})
{
    return scenarioOf(recorded(lines), "a.recording", program);
}

// What is between the head and the program's calls.
std::string setUpFrom(const std::string& lines)
{
    const std::string text = scenarioFrom(lines);
    EXPECT_THAT(text, StartsWith(kHead));
    const std::string rest = text.substr(std::string{kHead}.size());
    return rest.substr(0, rest.find("run app\n"));
}

std::string callsFrom(const std::string& lines)
{
    const std::string text = scenarioFrom(lines);
    return text.substr(text.find("run app\n") + std::string{"run app\n"}.size());
}

TEST(RecordedScenario, OfNoCallRunsTheProgramAlone)
{
    EXPECT_EQ(scenarioFrom(""), std::string{kHead} + "run app\n");
}

TEST(RecordedScenario, RemovesWhatWasAbsentAndNamesFiles)
{
    EXPECT_EQ(setUpFrom("absent /dev/frontled\nabsent libjida.so\nfile /opt/etc/hxaux.ini \"A=1\\n\"\n"),
              "remove /dev/frontled\nremove libjida.so\n"
              "# The recorded unit had a file /opt/etc/hxaux.ini, which a scenario does not write.\n");
}

struct Setting : Named {
    const char* lines;
    const char* setUp;
};

class SetUp : public hxtest::TestWithRow<Setting> {};

ROW_TEST(SetUp, BringsTheUnitToTheRecordedAnswers)
{
    EXPECT_EQ(setUpFrom(row().lines), row().setUp);
}

TEST_ROWS(Of, SetUp, kNameOfRow, Setting{"TheUsualAnswer", "1.1 0 /dev/backlight 0x80010002 -> 80\n", ""},
          Setting{"AByte", "1.1 0 /dev/backlight 0x80010002 -> 07\n", "set backlight.level 7\n"},
          Setting{"ARegister", "1.1 0 /dev/adc-id 0xc004003a: 00 00 00 00 -> 00 00 d2 04\n",
                  "set voltage.0.raw 1234\n"},
          Setting{"TheFirstAnswerOnly",
                  "1.1 0 /dev/backlight 0x80010002 -> 07\n1.1 1 /dev/backlight 0x80010002 -> 08\n",
                  "set backlight.level 7\n"},
          Setting{"AnAnswerThatNothingCauses", "1.1 0 /dev/adc-id 0xc004003a: 00 00 00 00 -> 01 00 d2 04\n",
                  "# /dev/adc-id get 0 -> 1234: no property causes this answer\n"},
          Setting{"OneFailure", "1.1 0 /dev/backlight 0x80010002 !EIO\n", "fail /dev/backlight 0x80010002 EIO 1\n"},
          Setting{"FailuresUntilTheFirstSuccess",
                  "1.1 0 /dev/adc-id open rdwr !EBUSY\n1.1 1 /dev/adc-id open rdwr !EBUSY\n"
                  "1.1 2 /dev/adc-id open rdwr\n1.1 3 /dev/adc-id open rdwr !EBUSY\n",
                  "fail /dev/adc-id open EBUSY 2\n"},
          Setting{"FailuresUntilAnotherError", "1.1 0 /dev/adc-id open rdwr !EBUSY\n1.1 1 /dev/adc-id open rdwr !EIO\n",
                  "fail /dev/adc-id open EBUSY 1\n"},
          Setting{"NoFailureOfWhatIsAbsent", "absent /dev/adc-id\n1.1 0 /dev/adc-id open rdwr !ENOENT\n",
                  "remove /dev/adc-id\n"});

struct Course : Named {
    const char* lines;
    const char* calls;
};

class Calls : public hxtest::TestWithRow<Course> {};

ROW_TEST(Calls, AreWaitedForInTheirOrder)
{
    EXPECT_EQ(callsFrom(row().lines), row().calls);
}

TEST_ROWS(Of, Calls, kNameOfRow,
          Course{"OneThread", "1.1 0 /dev/backlight open rdwr\n1.1 2.5 /dev/backlight 0x40010003: 00 07\n",
                 "wait request /dev/backlight open rdwr within 60s\n"
                 "wait request /dev/backlight 0x40010003 00 07 within 63s\n"},
          Course{"EqualOnesInARow",
                 "1.1 0 /dev/backlight 0x40010003: 00 07\n1.1 10 /dev/backlight 0x40010003: 00 07\n"
                 "1.1 11 /dev/backlight 0x40010003: 00 08\n",
                 "wait request /dev/backlight 0x40010003 00 07 within 60s\n"
                 "wait request /dev/backlight 0x40010003 00 08 within 61s\n"},
          Course{"FailedOnes", "1.1 0 /dev/backlight 0x40010003: 00 07 !EIO\n",
                 "wait request /dev/backlight 0x40010003 00 07 !EIO within 60s\n"},
          Course{"OtherThreadsFirstAndOnce",
                 "1.1 0 /dev/backlight open rdwr\n1.2 1 /dev/adc-id open rdwr\n1.2 2 /dev/adc-id open rdwr\n"
                 "2.1 3 /dev/buzzer open rdwr\n",
                 "expect request /dev/adc-id open rdwr within 61s\nexpect request /dev/buzzer open rdwr within 63s\n"
                 "wait request /dev/backlight open rdwr within 60s\n"},
          Course{"NoReadsClosesAndFaults",
                 "1.1 0 /dev/ttyS0 read 4 -> 79\n1.1 1 /dev/ttyS0 close\n1.1 2 sleep fault 100 !EINTR\n", ""});

TEST(RecordedScenario, NamesTheFirstBytesOfALongCall)
{
    std::string bytes;
    for (int i = 0; i < 40; ++i)
        bytes += " 11";
    const std::string calls = callsFrom("1.1 0 /dev/ttyS0 write:" + bytes + "\n");

    EXPECT_EQ(calls, "wait request /dev/ttyS0 write" + bytes.substr(0, 96) + " within 60s\n");
}

struct Word : Named {
    const char* word;
    const char* line;
};

class WordOfAProgram : public hxtest::TestWithRow<Word> {};

ROW_TEST(WordOfAProgram, IsWrittenSoThatAScenarioReadsIt)
{
    EXPECT_EQ(scenarioFrom("", {"app", row().word}), std::string{kHead} + "run app " + row().line + '\n');
}

TEST_ROWS(That, WordOfAProgram, kNameOfRow, Word{"IsPlain", "--json", "--json"}, Word{"IsEmpty", "", "\"\""},
          Word{"HasABlank", "a b", "\"a b\""}, Word{"HasATab", "a\tb", "\"a\tb\""},
          Word{"HasAQuote", "a\"b", R"("a\"b")"}, Word{"HasABackslash", R"(a\b)", R"("a\\b")"},
          Word{"HasADollarSign", "$HOME", "$$HOME"}, Word{"LooksLikeAComment", "#1", "\"#1\""},
          Word{"HasANumberSign", "a#1", "a#1"}, Word{"EndsWithACarriageReturn", "a\r", "\"a\r\""},
          Word{"IsAFormFeed", "\f", "\"\f\""});

TEST(RecordedScenario, RefusesAWordWithALineBreak)
{
    EXPECT_EQ(refusalOf([] {
                  (void)scenarioFrom("", {"sh", "-c", "a\nb"});
              }),
              "a scenario cannot have a line break in a word of its program");
}

} // namespace recorded_scenario_test
