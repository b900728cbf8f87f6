// SPDX-License-Identifier: LicenseRef-HXAux
// One beep at a time across all programs of a unit.
#include "testing/Command.h"

#include <gmock/gmock.h>

#include <thread>

using hxtest::Unit;
using namespace std::chrono_literals;

namespace {

constexpr const char* kLongTime = "600000";

/// Polls the condition; false after a minute.
template <class Condition>
bool becomes(Condition condition)
{
    for (int i = 0; i < 600; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(100ms);
    }
    return false;
}

bool sounds(const Unit& unit)
{
    return becomes([&] { return unit.property("buzzer.sounding").find("on") != std::string::npos; });
}

TEST(SharedBuzzer, RefusesASecondProgramWhileABeepRunsInTheBackground)
{
    const Unit unit;
    Process first = unit.child({"beep", kLongTime, "background"});
    ASSERT_EQ(first.line(), "answer 0");

    EXPECT_EQ(unit.child({"beep", "1", "waiting"}).line(), "answer 11");
    EXPECT_EQ(unit.child({"beep", "1", "background"}).line(), "answer 11");
}

TEST(SharedBuzzer, RefusesASecondProgramWhileAnotherWaitsForItsBeep)
{
    const Unit unit;
    Process first = unit.child({"beep", kLongTime, "waiting"});
    ASSERT_TRUE(sounds(unit));

    EXPECT_EQ(unit.child({"beep", "1", "waiting"}).line(), "answer 11");
}

TEST(SharedBuzzer, IsFreeForTheNextProgramAfterABeep)
{
    const Unit unit;
    ASSERT_EQ(unit.child({"beep", "20", "waiting"}).line(), "answer 0");
    Process background = unit.child({"beep", "20", "background"});
    ASSERT_EQ(background.line(), "answer 0");

    EXPECT_TRUE(becomes([&] { return unit.child({"beep", "20", "waiting"}).line() == "answer 0"; }));
}

TEST(SharedBuzzer, StaysLockedWhenAProgramIsKilledInItsBeep)
{
    const Unit unit;
    Process first = unit.child({"beep", kLongTime, "waiting"});
    ASSERT_TRUE(sounds(unit));
    first.kill();

    EXPECT_EQ(unit.child({"beep", "1", "waiting"}).line(), "answer 11");
    EXPECT_EQ(unit.run("hxaux buzzer beep 1").status, 5);
}

TEST(SharedBuzzer, SoundsAgainAfterItsLockWasReset)
{
    const Unit unit;
    Process first = unit.child({"beep", kLongTime, "waiting"});
    ASSERT_TRUE(sounds(unit));
    first.kill();

    ASSERT_EQ(unit.run("hxaux locks reset HXAUX_BUZZING_IN_PROGRESS --force").status, 0);

    EXPECT_EQ(unit.child({"beep", "1", "waiting"}).line(), "answer 0");
}

} // namespace
