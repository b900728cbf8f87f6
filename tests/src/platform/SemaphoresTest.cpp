// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "platform/Semaphore.h"
#include "simulator/protocol/UnitFolder.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/stat.h>

namespace semaphores_test {

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string printedBy(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

int opened(const char* name)
{
    int sema = 0;
    EXPECT_TRUE(LinuxWrapper::CreateSema(sema, name));
    EXPECT_NE(sema, 0);
    return sema;
}

/// Of the file in which the system stores a unit's semaphore.
unsigned permissionsOf(const SimulatedUnit& unit, const std::string& semaphore)
{
    const std::string prefix = hxsim::UnitFolder::semaphorePrefix(hxsim::UnitFolder::markOf(unit.folder()));
    struct stat status {};
    EXPECT_EQ(::stat(("/dev/shm/sem." + prefix.substr(1) + semaphore).c_str(), &status), 0);
    return status.st_mode & 07777U;
}

// Names.

TEST(NamedSemaphore, IsCreatedWithCountOneUnderItsNameWithASlash)
{
    SimulatedUnit unit;

    const int sema = opened("HXAUX_BUZZING_IN_PROGRESS");

    EXPECT_THAT(unit.callsTo("/HXAUX_BUZZING_IN_PROGRESS"), ElementsAre("sem_open creat excl 1"));
    LinuxWrapper::CloseSema(sema);
}

TEST(NamedSemaphore, KeepsTheBackslashOfItsName)
{
    SimulatedUnit unit;

    LinuxWrapper::CloseSema(opened("Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ"));

    EXPECT_THAT(unit.journal(), Contains("/Global\\HXAUX_BACKLIGHT_NEW_SETTINGS_TO_READ sem_open creat excl 1"));
}

TEST(NamedSemaphore, TakesANameWithASlashAsItIs)
{
    SimulatedUnit unit;

    LinuxWrapper::CloseSema(opened("/ready"));

    EXPECT_THAT(unit.callsTo("/ready"), ElementsAre("sem_open creat excl 1", "sem_close"));
}

TEST(NamedSemaphore, HasAtMost79CharactersOfItsName)
{
    SimulatedUnit unit;

    LinuxWrapper::CloseSema(opened(std::string(100, 'n').c_str()));
    LinuxWrapper::CloseSema(opened(("/" + std::string(100, 'm')).c_str()));

    EXPECT_THAT(unit.journal(), Contains('/' + std::string(78, 'n') + " sem_open creat excl 1"));
    EXPECT_THAT(unit.journal(), Contains('/' + std::string(78, 'm') + " sem_open creat excl 1"));
}

TEST(NamedSemaphore, IsCreatedWithTheMaskAtZeroAndTheMaskIsRestored)
{
    SimulatedUnit unit;
    const unsigned int before = LinuxWrapper::umask(027);
    unit.clearJournal();

    LinuxWrapper::CloseSema(opened("a"));

    EXPECT_THAT(unit.journal(), ElementsAre("umask 0", "/a sem_open creat excl 1", "umask 027", "/a sem_close"));
    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
}

TEST(NamedSemaphore, MayBeOpenedByEveryUser)
{
    SimulatedUnit unit;
    const unsigned int before = LinuxWrapper::umask(077);

    const int sema = opened("a");

    (void)LinuxWrapper::umask(before);
    EXPECT_EQ(permissionsOf(unit, "a"), 0777U);
    LinuxWrapper::CloseSema(sema);
}

TEST(NamedSemaphore, IsOpenedWhenItExistsAndKeepsItsValue)
{
    SimulatedUnit unit;
    const int first = opened("a");
    ASSERT_TRUE(LinuxWrapper::WaitForSema(first, false));

    const int second = opened("a");

    EXPECT_FALSE(LinuxWrapper::WaitForSema(second, false));
    EXPECT_THAT(unit.callsTo("/a"), ElementsAre("sem_open creat excl 1", "sem_trywait", "sem_open creat excl 1 !EEXIST",
                                                "sem_open", "sem_trywait !EAGAIN"));
    LinuxWrapper::CloseSema(first);
    LinuxWrapper::CloseSema(second);
}

TEST(NamedSemaphore, IsNotTriedAgainForAnotherReasonThanItsExistence)
{
    SimulatedUnit unit;
    unit.fail("/a", "sem_open", EACCES);
    int sema = 77;

    const std::string printed = printedBy([&] { EXPECT_FALSE(LinuxWrapper::CreateSema(sema, "a")); });

    EXPECT_EQ(printed, "sem_open failed with error: Permission denied\n");
    EXPECT_EQ(sema, 77); // set on success only
    EXPECT_THAT(unit.callsTo("/a"), ElementsAre("sem_open creat excl 1 !EACCES"));
}

TEST(NamedSemaphore, RestoresTheMaskWhenItCannotBeOpened)
{
    SimulatedUnit unit;
    unit.fail("/a", "sem_open", EACCES);
    const unsigned int before = LinuxWrapper::umask(027);
    int sema = 0;

    (void)printedBy([&] { EXPECT_FALSE(LinuxWrapper::CreateSema(sema, "a")); });

    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
}

TEST(NamedSemaphore, IsNeverRemoved)
{
    SimulatedUnit unit;
    const int first = opened("a");
    ASSERT_TRUE(LinuxWrapper::WaitForSema(first, false));
    LinuxWrapper::CloseSema(first);

    const int second = opened("a");

    EXPECT_FALSE(LinuxWrapper::WaitForSema(second, false)); // it stays acquired
    LinuxWrapper::CloseSema(second);
}

// Without a name.

TEST(PrivateSemaphore, IsCreatedUnderAUniqueNameThatIsRemovedAtOnce)
{
    SimulatedUnit unit;

    const int sema = opened(nullptr);

    EXPECT_THAT(unit.callsTo("/hxSema.XXXXXX"),
                ElementsAre("mkstemp", "unlink", "sem_open creat excl 1", "sem_unlink"));
    LinuxWrapper::CloseSema(sema);
}

TEST(PrivateSemaphore, IsFreeAtFirst)
{
    SimulatedUnit unit;
    const int sema = opened(nullptr);

    EXPECT_TRUE(LinuxWrapper::WaitForSema(sema, false));
    EXPECT_FALSE(LinuxWrapper::WaitForSema(sema, false));
    LinuxWrapper::CloseSema(sema);
}

TEST(PrivateSemaphore, IsNotSharedWithAnother)
{
    SimulatedUnit unit;
    const int first = opened(nullptr);
    const int second = opened(nullptr);
    ASSERT_TRUE(LinuxWrapper::WaitForSema(first, false));

    EXPECT_TRUE(LinuxWrapper::WaitForSema(second, false));
    LinuxWrapper::CloseSema(first);
    LinuxWrapper::CloseSema(second);
}

TEST(PrivateSemaphore, IsCreatedWithoutPermissionToWriteTheRootDirectory)
{
    SimulatedUnit unit;
    unit.fail("/hxSema.XXXXXX", "mkstemp", EACCES);
    int sema = 0;

    EXPECT_TRUE(LinuxWrapper::CreateSema(sema, nullptr));

    EXPECT_TRUE(LinuxWrapper::WaitForSema(sema, false));
    LinuxWrapper::CloseSema(sema);
}

TEST(PrivateSemaphore, UnlinksItsNameAfterAFailureToo)
{
    SimulatedUnit unit;
    unit.fail("/hxSema.XXXXXX", "sem_open", EMFILE);
    int sema = 0;

    const std::string printed = printedBy([&] { EXPECT_FALSE(LinuxWrapper::CreateSema(sema, nullptr)); });

    EXPECT_EQ(printed, "sem_open failed with error: Too many open files\n");
    EXPECT_THAT(unit.callsTo("/hxSema.XXXXXX"),
                ElementsAre("mkstemp", "unlink", "sem_open creat excl 1 !EMFILE", "sem_unlink !ENOENT"));
}

// Waiting and releasing.

TEST(SemaphoreWait, TriesWithoutAMessageWhenItIsTaken)
{
    SimulatedUnit unit;
    const int sema = opened("a");
    ASSERT_TRUE(LinuxWrapper::WaitForSema(sema, true));

    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::WaitForSema(sema, false)); }), "");
    LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreWait, PrintsWhenTryingFailsForAnotherReason)
{
    SimulatedUnit unit;
    const int sema = opened("a");
    unit.fail("/a", "sem_trywait", EINTR);

    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::WaitForSema(sema, false)); }), "sem_trywait failed\n");
    LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreWait, PrintsAndEndsWhenItIsInterrupted)
{
    SimulatedUnit unit;
    const int sema = opened("a");
    unit.fail("/a", "sem_wait", EINTR, 1);

    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::WaitForSema(sema, true)); }), "sem_wait failed\n");
    EXPECT_EQ(errno, EINTR);
    LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreWait, EndsWhenAnotherThreadReleasesIt)
{
    SimulatedUnit unit;
    static int sema;
    sema = opened("a");
    ASSERT_TRUE(LinuxWrapper::WaitForSema(sema, true));
    const auto releaseLater = [](const void*) {
        LinuxWrapper::Sleep(300);
        LinuxWrapper::ReleaseSema(sema);
    };
    ASSERT_EQ(LinuxWrapper::startThread(releaseLater, nullptr), ERR_SUCCESS);

    EXPECT_TRUE(LinuxWrapper::WaitForSema(sema, true));

    EXPECT_EQ(unit.now(), 300);
    LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreRelease, PrintsWhenItFails)
{
    SimulatedUnit unit;
    const int sema = opened("a");
    unit.fail("/a", "sem_post", EOVERFLOW);

    EXPECT_EQ(printedBy([&] { LinuxWrapper::ReleaseSema(sema); }), "failed to release semaphore\n");
    LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreClose, PrintsWhenItFails)
{
    SimulatedUnit unit;
    const int sema = opened("a");
    unit.fail("/a", "sem_close", EINVAL);

    EXPECT_EQ(printedBy([&] { LinuxWrapper::CloseSema(sema); }), "failed to close semaphore\n");
}

// Handles.

TEST(SemaphoreHandle, OfZeroIsInvalid)
{
    SimulatedUnit unit;

    EXPECT_EQ(printedBy([] { EXPECT_FALSE(LinuxWrapper::WaitForSema(0, true)); }), "sem_wait failed\n");
    EXPECT_EQ(printedBy([] { EXPECT_FALSE(LinuxWrapper::WaitForSema(0, false)); }), "sem_trywait failed\n");
    EXPECT_EQ(printedBy([] { LinuxWrapper::ReleaseSema(0); }), "failed to release semaphore\n");
    EXPECT_EQ(printedBy([] { LinuxWrapper::CloseSema(0); }), "failed to close semaphore\n");
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(SemaphoreHandle, IsThePointerOrAnIndexFromOne)
{
    SimulatedUnit unit;
    const int first = opened("a");
    const int second = opened("b");

    if (sizeof(void*) == sizeof(int)) {
        EXPECT_EQ(first, static_cast<int>(reinterpret_cast<std::intptr_t>(LinuxWrapper::CreateSemaHelper("/a"))));
    } else {
        EXPECT_EQ(second, first + 1);
        EXPECT_GE(first, 1);
    }
    LinuxWrapper::CloseSema(first);
    LinuxWrapper::CloseSema(second);
}

TEST(SemaphoreHandle, IsInvalidAfterItsClose)
{
    if (sizeof(void*) == sizeof(int))
        GTEST_SKIP() << "the handle is the pointer";
    SimulatedUnit unit;
    const int sema = opened("a");
    LinuxWrapper::CloseSema(sema);

    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::WaitForSema(sema, false)); }), "sem_trywait failed\n");
    EXPECT_EQ(printedBy([&] { LinuxWrapper::CloseSema(sema); }), "failed to close semaphore\n");
}

TEST(SemaphoreHandle, ServesAHundredOpenSemaphoresAtOnce)
{
    SimulatedUnit unit;
    std::vector<int> semas;
    semas.reserve(100);
    for (int i = 0; i < 100; ++i)
        semas.push_back(opened(("many" + std::to_string(i)).c_str()));

    for (const int sema : semas)
        EXPECT_TRUE(LinuxWrapper::WaitForSema(sema, false));

    std::sort(semas.begin(), semas.end());
    EXPECT_EQ(std::adjacent_find(semas.begin(), semas.end()), semas.end());
    for (const int sema : semas)
        LinuxWrapper::CloseSema(sema);
}

TEST(SemaphoreHandle, ComesFromTheHelperAsAPointerOrNull)
{
    SimulatedUnit unit;
    unit.fail("/refused", "sem_open", EACCES);

    EXPECT_NE(LinuxWrapper::CreateSemaHelper("/given"), nullptr);
    EXPECT_EQ(LinuxWrapper::CreateSemaHelper("/refused"), nullptr);
}

// The owning types.

TEST(Lock, HoldsItsSemaphoreForAScope)
{
    SimulatedUnit unit;
    Semaphore semaphore{"a"};
    {
        const Lock lock{semaphore};
        EXPECT_FALSE(LinuxWrapper::WaitForSema(semaphore.handle(), false));
    }
    EXPECT_TRUE(LinuxWrapper::WaitForSema(semaphore.handle(), false));
}

TEST(Lock, ReleasesNothingThatItDidNotAcquire)
{
    SimulatedUnit unit;
    Semaphore semaphore{"a"};
    unit.fail("/a", "sem_wait", EINVAL, 1);
    (void)printedBy([&] { const Lock lock{semaphore}; });

    EXPECT_THAT(unit.callsTo("/a"), ElementsAre("sem_open creat excl 1", "sem_wait !EINVAL"));
}

} // namespace

} // namespace semaphores_test
