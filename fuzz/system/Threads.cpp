// SPDX-License-Identifier: LicenseRef-HXAux
#include "fuzz/Require.h"
#include "fuzz/system/Fiber.h"
#include "fuzz/system/Internal.h"
#include "platform/LinuxWrapper.h"

#include <algorithm>
#include <exception>
#include <list>

namespace fuzzed {

namespace {

struct Worker {
    explicit Worker(std::function<void()> function) : fiber{std::move(function)} {}
    Fiber fiber;
    std::int64_t wakesAt = 0;
};

std::list<Worker> workers;
std::int64_t now = 0;
bool ending = false;
void (*refused)(const void*) = nullptr;

constexpr std::int64_t kLookAgain = 20;       // of a thread that waits for a semaphore
constexpr std::int64_t kLongestPass = 100000; // of busy threads; longer times are skipped

bool isWorker()
{
    return Fiber::current() != nullptr;
}

/// In a worker: yields until that time.
void yieldUntil(std::int64_t time)
{
    mayEnd();
    const auto self = std::find_if(workers.begin(), workers.end(),
                                   [](const Worker& worker) { return &worker.fiber == Fiber::current(); });
    self->wakesAt = time;
    Fiber::yield();
    mayEnd();
}

void resume(Worker& worker)
{
    worker.fiber.resume();
    workers.remove_if([](const Worker& one) { return one.fiber.hasEnded(); });
}

Worker* nextDue(std::int64_t until)
{
    Worker* due = nullptr;
    for (Worker& worker : workers)
        if (worker.wakesAt <= until && (due == nullptr || worker.wakesAt < due->wakesAt))
            due = &worker;
    return due;
}

} // namespace

void beginThreads()
{
    REQUIRE(workers.empty());
    now = 0;
    ending = false;
    refused = nullptr;
}

void refuseThread(void (*function)(const void*))
{
    refused = function;
}

void mayEnd()
{
    if (ending && isWorker() && std::uncaught_exceptions() == 0)
        throw Stop{};
}

void pass(std::int64_t milliseconds)
{
    const std::int64_t until = now + milliseconds;
    const std::int64_t worked = now + std::min(milliseconds, kLongestPass);
    while (Worker* const due = nextDue(worked)) {
        now = std::max(now, due->wakesAt);
        resume(*due);
    }
    now = until;
    for (Worker& worker : workers)
        worker.wakesAt = std::max(worker.wakesAt, now);
}

bool letOthersRun()
{
    constexpr std::int64_t kPatience = 5000;
    if (isWorker()) {
        yieldUntil(now + kLookAgain);
        return true;
    }
    Worker* const due = nextDue(now + kPatience);
    if (due == nullptr)
        return false;
    now = std::max(now, due->wakesAt);
    resume(*due);
    return true;
}

std::int64_t timeNow()
{
    return now;
}

void endThreads()
{
    ending = true;
    while (!workers.empty())
        resume(workers.front());
    ending = false;
}

} // namespace fuzzed

using namespace fuzzed;
using Halvix::eErr;
using Halvix::LinuxWrapper;

eErr LinuxWrapper::startThread(void (*function)(const void*), const void* argument)
{
    if (function == refused || input().oneIn(8))
        return Halvix::ERR_CREATE_THREAD;
    workers.emplace_back([function, argument] {
        try {
            function(argument);
        } catch (const Stop&) { // its resources were released by unwinding
        }
    });
    workers.back().wakesAt = now;
    return Halvix::ERR_SUCCESS;
}

bool LinuxWrapper::Sleep(unsigned long milliseconds)
{
    const auto time = static_cast<std::int64_t>(milliseconds);
    if (!isWorker())
        pass(time);
    else if (std::uncaught_exceptions() == 0)
        yieldUntil(now + time);
    return !input().oneIn(32);
}

void LinuxWrapper::SleepFully(unsigned long milliseconds)
{
    Sleep(milliseconds);
}

unsigned int LinuxWrapper::umask(unsigned int)
{
    return 0;
}
