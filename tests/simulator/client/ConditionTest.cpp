// SPDX-License-Identifier: LicenseRef-HXAux
// The grammar of conditions and its verdicts, case by case.
#include "simulator/client/Condition.h"

#include "simulator/client/Duration.h"
#include "simulator/model/Text.h"
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/simulator/client/ConditionCases.h"

#include <gmock/gmock.h>

using hxsim::Evaluation;
using hxsim::Event;
using namespace std::chrono_literals;

namespace condition_test {

const conditions::Table& table()
{
    static const conditions::Table kTable = conditions::readTable(HX_CONDITION_CASES);
    return kTable;
}

std::string refusalOf(const std::string& text)
{
    try {
        (void)hxsim::parseExpectation(text, table().vocabulary);
    } catch (const hxsim::BadText& bad) {
        return bad.what();
    }
    return "";
}

class ConditionCase : public hxtest::TestWithRow<conditions::Case> {};

ROW_TEST(ConditionCase, HasItsVerdict)
{
    ASSERT_EQ(refusalOf(row().text), row().refusal);
    if (!row().refusal.empty())
        return;

    Evaluation evaluation{hxsim::parseExpectation(row().text, table().vocabulary), 0s, row().values};
    for (const conditions::Step& step : row().steps) {
        evaluation.feed(step.event);
        evaluation.advance(step.event.kind == Event::Kind::Alarm ? step.event.time : 0s);
        if (step.concludes)
            evaluation.conclude(step.event.time);
    }

    EXPECT_EQ(evaluation.verdict(), row().verdict);
    EXPECT_EQ(evaluation.decidedAt(), row().decidedAt);
    EXPECT_EQ(row().seen.empty() ? "" : evaluation.seen(), row().seen);
}

TEST_ROWS_IN(Conditions, ConditionCase, kNameOfRow, table().cases);

TEST(Conditions, AreAllRead)
{
    EXPECT_GE(table().cases.size(), 96U);
}

TEST(Conditions, AllowAnyNameWithoutAVocabulary)
{
    EXPECT_EQ(hxsim::parseExpectation("my.own = 3", {}).condition.subject, "my.own");
}

TEST(Conditions, RefuseAPropertyWithoutAValueAtTheirStart)
{
    EXPECT_THROW((Evaluation{hxsim::parseExpectation("light = 3", {}), 0s, {}}), hxsim::BadText);
}

TEST(Conditions, AskForTheirDeadlineUntilTheyAreDecided)
{
    Evaluation evaluation{hxsim::parseExpectation("light = 3 within 2s", {}), 1s, {{"light", "2"}}};

    EXPECT_EQ(evaluation.deadline(), hxsim::Time{3s});
    evaluation.advance(3s);
    EXPECT_EQ(evaluation.deadline(), std::nullopt);
}

TEST(Durations, AreExactToTheNanosecond)
{
    EXPECT_EQ(hxsim::parseDuration("20ms"), 20ms);
    EXPECT_EQ(hxsim::parseDuration("1.5s"), 1500ms);
    EXPECT_EQ(hxsim::parseDuration("0.000000001s"), 1ns);
    EXPECT_EQ(hxsim::parseDuration("0s"), 0s);
    EXPECT_EQ(hxsim::parseDuration("61m"), 61min);
}

TEST(Durations, RefuseEverythingElse)
{
    for (const char* const text :
         {"", "s", "2", "2 s", "2S", "2ss", "-1s", "1e9s", "infs", "nans", "1,5s", "99999999m"})
        EXPECT_FALSE(hxsim::isDuration(text)) << text;
}

} // namespace condition_test
