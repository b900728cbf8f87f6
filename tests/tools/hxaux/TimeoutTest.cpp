// SPDX-License-Identifier: LicenseRef-HXAux
// --timeout ends the wait for a lock that another program holds.
#include "tests/tools/hxaux/OnUnit.h"

using namespace hxtest;
using testing::AllOf;

namespace {

// A program that is killed while it holds the lock of the settings file.
constexpr char kStaleLock[] = "hx-probe try /FILE_HXAUXINI_IS_IN_USE >/dev/null; ";

} // namespace

TEST(Timeout, EndsTheWaitForALockWithTheStatusOfBusy)
{
    EXPECT_THAT(onUnit(std::string(kStaleLock) + "hxaux settings get ABL_k --timeout 0.5"),
                AllOf(errorIs("settings get: the lock is still taken after 0.5 s\n'hxaux locks' shows the holder\n"),
                      outputIs(""), statusIs(5)));
}

TEST(Timeout, IsReportedAsJson)
{
    const Outcome outcome = onUnit(std::string(kStaleLock) + "hxaux settings get ABL_k --timeout 0.5 --json");

    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(5)));
    EXPECT_EQ(jsonOf(outcome)["status"], 5);
    EXPECT_EQ(jsonOf(outcome)["errors"][0]["text"], "the lock is still taken after 0.5 s");
}

TEST(Timeout, DoesNotMatterWhileTheLockIsFree)
{
    EXPECT_THAT(onUnit("hxaux settings set K 1 --timeout 0.1; hxaux settings get K --timeout 0.1"),
                AllOf(outputIs("K: 1\n"), errorIs(""), statusIs(0)));
}
