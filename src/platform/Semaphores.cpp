// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/CreationMask.h"
#include "platform/LinuxWrapper.h"
#include "platform/ProcessLocks.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <semaphore.h>
#include <unistd.h>
#include <utility>

namespace Halvix {

namespace {

constexpr std::size_t kNameSize = 80; // longer names are cut, in every process alike

#if __SIZEOF_POINTER__ == __SIZEOF_INT__

// The handle is the pointer. Addresses above 2 GB give negative handles; only 0 is invalid.

int keep(sem_t* semaphore)
{
    return reinterpret_cast<int>(semaphore);
}

sem_t* find(int handle)
{
    return reinterpret_cast<sem_t*>(handle);
}

void forget(int /*handle*/) {}

#else

// A pointer does not fit an int: the handle is an index into this table, whose entry 0 stays empty. The table grows and
// is never freed, because threads of the library outlive the program's static objects.

constinit sem_t** table HX_GUARDED_BY(processlocks::semaphoreTable()) = nullptr;
constinit int tableSize HX_GUARDED_BY(processlocks::semaphoreTable()) = 0;

int freeIndex() HX_REQUIRES(processlocks::semaphoreTable())
{
    for (int i = 1; i < tableSize; ++i)
        if (table[i] == nullptr)
            return i;
    const int grown = tableSize == 0 ? 16 : tableSize * 2;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the elements are pointers
    void* memory = std::realloc(table, static_cast<std::size_t>(grown) * sizeof *table);
    if (memory == nullptr)
        return 0;
    table = static_cast<sem_t**>(memory);
    std::fill(table + tableSize, table + grown, nullptr);
    return std::exchange(tableSize, grown) == 0 ? 1 : grown / 2;
}

/// 0 when it runs out of memory.
int keep(sem_t* semaphore)
{
    const MutexLock guard{processlocks::semaphoreTable()};
    const int index = freeIndex();
    if (index != 0)
        table[index] = semaphore;
    return index;
}

sem_t* find(int handle)
{
    const MutexLock guard{processlocks::semaphoreTable()};
    return handle > 0 && handle < tableSize ? table[handle] : nullptr;
}

void forget(int handle)
{
    const MutexLock guard{processlocks::semaphoreTable()};
    table[handle] = nullptr;
}

#endif

/// The C library locks its list of semaphores in sem_open and sem_close, and no fork resets that lock.
int closeOutsideForks(sem_t* semaphore)
{
    const MutexLock noFork{processlocks::creationMask()};
    return ::sem_close(semaphore);
}

/// Prints, and keeps the `errno` of the failed call: callers check whether a wait was interrupted.
void complain(const char* message)
{
    const int reason = errno;
    (void)std::puts(message);
    errno = reason;
}

/// The semaphore of the handle, or null with the error that the system sets for one that is not open.
sem_t* openSemaphore(int handle)
{
    sem_t* semaphore = find(handle);
    if (semaphore == nullptr)
        errno = EINVAL;
    return semaphore;
}

/// A unique name. Without permission to create the file, the template is filled in nevertheless.
void makeUniqueName(char (&name)[kNameSize])
{
    std::snprintf(name, sizeof name, "%s", "/hxSema.XXXXXX");
    const int file = ::mkstemp(name);
    if (file < 0)
        return;
    ::unlink(name);
    ::close(file);
}

} // namespace

void* LinuxWrapper::CreateSemaHelper(const char* name)
{
    const CreationMask forEverybody{0};
    sem_t* semaphore = ::sem_open(name, O_CREAT | O_EXCL, 0777, 1);
    if (semaphore == SEM_FAILED && errno == EEXIST)
        semaphore = ::sem_open(name, 0);
    return semaphore != SEM_FAILED ? semaphore : nullptr;
}

bool LinuxWrapper::CreateSema(int& sema, const char* name)
{
    char finalName[kNameSize];
    if (name == nullptr)
        makeUniqueName(finalName);
    else
        std::snprintf(finalName, sizeof finalName, name[0] == '/' ? "%s" : "/%s", name);

    auto* semaphore = static_cast<sem_t*>(CreateSemaHelper(finalName));
    const int handle = semaphore != nullptr ? keep(semaphore) : 0;
    if (handle != 0)
        sema = handle;
    else
        std::printf("sem_open failed with error: %s\n", std::strerror(errno));
    if (handle == 0 && semaphore != nullptr) // out of memory for a handle
        (void)closeOutsideForks(semaphore);
    if (name == nullptr)
        ::sem_unlink(finalName); // private to this process from now on
    return handle != 0;
}

bool LinuxWrapper::WaitForSema(int sema, bool wait)
{
    sem_t* semaphore = openSemaphore(sema);
    if (wait) {
        if (semaphore != nullptr && ::sem_wait(semaphore) == 0)
            return true;
        complain("sem_wait failed");
        return false;
    }
    if (semaphore != nullptr && ::sem_trywait(semaphore) == 0)
        return true;
    if (errno != EAGAIN) // an acquired semaphore is not an error to print
        complain("sem_trywait failed");
    return false;
}

void LinuxWrapper::ReleaseSema(int sema)
{
    sem_t* semaphore = openSemaphore(sema);
    if (semaphore == nullptr || ::sem_post(semaphore) != 0)
        complain("failed to release semaphore");
}

void LinuxWrapper::CloseSema(int sema)
{
    sem_t* semaphore = openSemaphore(sema);
    if (semaphore != nullptr)
        forget(sema);
    if (semaphore == nullptr || closeOutsideForks(semaphore) != 0)
        complain("failed to close semaphore");
}

} // namespace Halvix
