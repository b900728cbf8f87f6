// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Command.h"

#include <gmock/gmock.h>

#include <csignal>

using hxtest::Outcome;
using hxtest::Unit;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;

namespace {

constexpr char kUpgrade[] = "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS";

/// Acquires a lock that others use in rounds, and is killed while it holds it.
void leaveStale(const Unit& unit, const char* lock)
{
    std::string said;
    while (said != "taken")
        said = unit.child({"take", lock}).line();
}

TEST(SharedSemaphore, IsTheSameForASecondProcessAndNotReset)
{
    const Unit unit;
    Process first = unit.child({"take", kUpgrade});
    ASSERT_EQ(first.line(), "taken");

    Process second = unit.child({"take", kUpgrade});

    EXPECT_EQ(second.line(), "refused");
}

TEST(SharedSemaphore, IsPassedFromOneProcessToAnother)
{
    const Unit unit;
    Process first = unit.child({"take", kUpgrade});
    ASSERT_EQ(first.line(), "taken");
    ASSERT_EQ(unit.child({"post", kUpgrade}).line(), "posted");

    EXPECT_EQ(unit.child({"take", kUpgrade}).line(), "taken");
}

TEST(SharedSemaphore, StaysTakenWhenItsHolderIsKilled)
{
    const Unit unit;
    Process first = unit.child({"take", kUpgrade});
    ASSERT_EQ(first.line(), "taken");
    first.kill();

    EXPECT_EQ(unit.child({"take", kUpgrade}).line(), "refused");
}

TEST(SharedSemaphore, IsAnotherOneOnAnotherUnit)
{
    const Unit here;
    const Unit there;
    Process first = here.child({"take", kUpgrade});
    ASSERT_EQ(first.line(), "taken");

    EXPECT_EQ(there.child({"take", kUpgrade}).line(), "taken");
}

// hxaux locks.

TEST(LocksTool, ShowsWhoHoldsALock)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");

    const std::string shown = unit.run("hxaux locks").output;

    EXPECT_THAT(shown, HasSubstr("FILE_HXAUXINI_IS_IN_USE: taken, value 0, used by " + std::to_string(holder.pid()) +
                                 " (hx-child)\n"));
    EXPECT_THAT(shown, HasSubstr("HXAUX_BUZZING_IN_PROGRESS: does not exist yet\n"));
}

TEST(LocksTool, ShowsAFreeLockWithoutProcesses)
{
    const Unit unit;
    ASSERT_EQ(unit.child({"set", "A", "1"}).status(), 0);

    EXPECT_THAT(unit.run("hxaux locks").output,
                HasSubstr("FILE_HXAUXINI_IS_IN_USE: free, value 1, used by no process"));
}

TEST(LocksTool, DoesNotCallALockStaleWhileItsHolderLives)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");
    Process next = unit.child({"set", "A", "1"});
    ASSERT_EQ(next.line(), "started");

    EXPECT_THAT(unit.run("hxaux locks").output, Not(HasSubstr("stale")));
}

TEST(LocksTool, RefusesToFreeALockInUse)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");

    const Outcome result = unit.run("hxaux locks reset FILE_HXAUXINI_IS_IN_USE");

    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.error, HasSubstr("it is in use by " + std::to_string(holder.pid()) + " (hx-child)"));
    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("FILE_HXAUXINI_IS_IN_USE: taken"));
}

TEST(LocksTool, FreesALockInUseByForce)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");

    EXPECT_EQ(unit.run("hxaux locks reset FILE_HXAUXINI_IS_IN_USE --force").status, 0);

    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("FILE_HXAUXINI_IS_IN_USE: free, value 1"));
}

// The settings lock is stale, and the tool waits for it in each of its rounds while it averages the light.
TEST(SignalInAWaitForAStaleLock, LeavesNoOtherLockTaken)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Unit unit;
        Process tool = unit.start({"light", "--average", "--watch", "--every", "0.05"});
        for (std::string line; line.find("average") == std::string::npos; line = tool.line())
            ASSERT_NE(line, "(ended)");
        leaveStale(unit, "FILE_HXAUXINI_IS_IN_USE");
        const std::string waiting = std::to_string(tool.pid()) + " (hxaux, waiting)";
        while (unit.run("hxaux locks").output.find(waiting) == std::string::npos) {
        }

        ::kill(tool.pid(), signal);

        EXPECT_THAT(tool.rest(), HasSubstr("ended while waiting for a lock"));
        EXPECT_EQ(tool.status(), 128 + signal);
        EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED: free, value 1"));
    }
}

TEST(LocksTool, LeavesAFreeLockAlone)
{
    const Unit unit;
    ASSERT_EQ(unit.child({"set", "A", "1"}).status(), 0);

    const Outcome result = unit.run("hxaux locks reset FILE_HXAUXINI_IS_IN_USE --force");

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "it is free already\n");
    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("FILE_HXAUXINI_IS_IN_USE: free, value 1"));
}

TEST(LocksTool, CallsALockStaleThatNoProcessMaps)
{
    const Unit unit;
    Process holder = unit.child({"take", kUpgrade});
    ASSERT_EQ(holder.line(), "taken");
    holder.kill();

    EXPECT_THAT(unit.run("hxaux locks").output,
                HasSubstr("HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS: stale, value 0, used by no process"));
}

TEST(LocksTool, ShowsTheNewSettingsAsACounter)
{
    const Unit unit;
    const std::string counter = "Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ";
    Process reader = unit.child({"take", counter});
    ASSERT_EQ(reader.line(), "taken");
    reader.kill();

    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr(counter + ": nothing pending, value 0"));
    ASSERT_EQ(unit.child({"post", counter}).status(), 0);
    ASSERT_EQ(unit.child({"post", counter}).status(), 0);
    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr(counter + ": pending, value 2"));
}

TEST(LocksTool, NeverResetsTheCounter)
{
    const Unit unit;
    const std::string counter = "Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ";
    Process reader = unit.child({"take", counter});
    ASSERT_EQ(reader.line(), "taken");
    reader.kill();

    EXPECT_EQ(unit.run("hxaux locks reset " + counter + " --force").status, 2);

    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr(counter + ": nothing pending, value 0"));
}

TEST(LocksTool, PrintsJsonWithTheProcesses)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");

    EXPECT_THAT(unit.run("hxaux locks --json").output,
                HasSubstr("\"FILE_HXAUXINI_IS_IN_USE\":{\"state\":\"taken\",\"value\":0,\"taken\":true,\"stale\":false,"
                          "\"processes\":[{\"pid\":" +
                          std::to_string(holder.pid()) + ",\"program\":\"hx-child\",\"waits\":false}]}"));
}

TEST(LocksTool, FreesTheSettingsOfAKilledProgramSoThatTheNextContinues)
{
    const Unit unit;
    Process holder = unit.child({"hold"});
    ASSERT_EQ(holder.line(), "held");
    holder.kill();
    Process next = unit.child({"set", "KEY", "kept"});
    ASSERT_EQ(next.line(), "started");
    ASSERT_EQ(next.line(500ms), "(silent)"); // it blocks

    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("FILE_HXAUXINI_IS_IN_USE: stale, value 0, used by " +
                                                          std::to_string(next.pid()) + " (hx-child, waiting)"));
    EXPECT_EQ(unit.run("hxaux locks reset FILE_HXAUXINI_IS_IN_USE").status, 0);

    EXPECT_EQ(next.line(), "done");
    EXPECT_EQ(next.status(), 0);
    EXPECT_EQ(unit.settings(), "KEY = kept\n");
    EXPECT_THAT(unit.run("hxaux locks").output, HasSubstr("FILE_HXAUXINI_IS_IN_USE: free, value 1"));
}

} // namespace
