// SPDX-License-Identifier: LicenseRef-HXAux
#include "fuzz/Require.h"
#include "fuzz/system/Internal.h"
#include "platform/LinuxWrapper.h"

#include <cerrno>
#include <map>
#include <memory>

namespace fuzzed {

namespace {

struct Semaphore {
    std::string name; ///< empty: a private one
    int count = 1;
    int interrupted = 0; ///< waits in a row that a signal ended
};

std::map<std::string, std::shared_ptr<Semaphore>> named;
std::map<int, std::shared_ptr<Semaphore>> handles;
int nextHandle = 1;
bool mayFail = true;

// An input can wait for notifications as often as it has bytes; an operation that waits forever exceeds that soon.
constexpr int kMostInterruptions = 1000;
// Longer than any lock is held, and than any silence of an upgrade. Threads that run forever advance time forever.
constexpr std::int64_t kLongestWait = 60000;

} // namespace

void beginSemaphores()
{
    named.clear();
    handles.clear();
    mayFail = true;
}

void semaphoresMayFail(bool may)
{
    mayFail = may;
}

int countOf(const std::string& name)
{
    const auto found = named.find(name);
    return found == named.end() ? 1 : found->second->count;
}

} // namespace fuzzed

using namespace fuzzed;
using Halvix::LinuxWrapper;

bool LinuxWrapper::CreateSema(int& sema, const char* name)
{
    if (mayFail && input().oneIn(32))
        return false;
    std::shared_ptr<Semaphore> semaphore;
    if (name == nullptr)
        semaphore = std::make_shared<Semaphore>();
    else if (semaphore = named[name]; semaphore == nullptr)
        semaphore = named[name] = std::make_shared<Semaphore>(Semaphore{.name = name});
    handles[nextHandle] = semaphore;
    sema = nextHandle++;
    return true;
}

void* LinuxWrapper::CreateSemaHelper(const char*)
{
    return nullptr;
}

/// Waiting for a lock that no thread can release is a finding, but a caller may wait for a notification: after some
/// time a signal ends it.
bool LinuxWrapper::WaitForSema(int sema, bool wait)
{
    const auto found = handles.find(sema);
    if (found == handles.end()) {
        errno = EINVAL;
        return false;
    }
    const std::shared_ptr<Semaphore> semaphore = found->second;
    const std::int64_t until = timeNow() + kLongestWait;
    while (semaphore->count == 0 && wait && timeNow() < until && letOthersRun())
        continue;
    if (semaphore->count == 0) {
        REQUIRE(semaphore->name != "FILE_HXAUXINI_IS_IN_USE");
        REQUIRE(++semaphore->interrupted < kMostInterruptions || !wait);
        errno = wait ? EINTR : EAGAIN;
        return false;
    }
    semaphore->interrupted = 0;
    --semaphore->count;
    return true;
}

void LinuxWrapper::ReleaseSema(int sema)
{
    if (const auto found = handles.find(sema); found != handles.end())
        ++found->second->count;
}

void LinuxWrapper::CloseSema(int sema)
{
    REQUIRE(handles.erase(sema) == 1 || sema == 0); // nothing is closed twice
}
