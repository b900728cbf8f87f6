// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"

#include <cerrno>
#include <ctime>
#include <memory>
#include <new>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

namespace Halvix {

namespace {

struct Start {
    void (*function)(const void*);
    const void* argument;
};

/// POSIX threads return a pointer, ours return nothing. The threads are detached: each releases its own stack.
void* run(void* given)
{
    ::pthread_detach(::pthread_self());
    const Start start = *static_cast<Start*>(given);
    delete static_cast<Start*>(given);
    start.function(start.argument);
    return nullptr;
}

/// Blocks signals on the calling thread for a scope, for a new thread to inherit. Except those raised by a thread's own
/// faults, the abort and the profiler's.
class SignalsBlocked {
public:
    SignalsBlocked()
    {
        sigset_t all;
        ::sigfillset(&all);
        for (const int kept : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT, SIGPROF})
            ::sigdelset(&all, kept);
        ::pthread_sigmask(SIG_BLOCK, &all, &previous_);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t previous_;
};

timespec timeOf(unsigned long milliseconds)
{
    timespec time{};
    time.tv_sec = static_cast<time_t>(milliseconds / 1000);
    time.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    return time;
}

} // namespace

eErr LinuxWrapper::startThread(void (*function)(const void*), const void* argument)
{
    std::unique_ptr<Start> start{new (std::nothrow) Start{function, argument}};
    pthread_t thread{};
    const SignalsBlocked inherited;
    if (start == nullptr || ::pthread_create(&thread, nullptr, run, start.get()) != 0)
        return ERR_CREATE_THREAD;
    (void)start.release(); // the thread frees it
    return ERR_SUCCESS;
}

bool LinuxWrapper::Sleep(unsigned long milliseconds)
{
    const timespec time = timeOf(milliseconds);
    return ::nanosleep(&time, nullptr) == 0;
}

void LinuxWrapper::SleepFully(unsigned long milliseconds)
{
    timespec left = timeOf(milliseconds);
    for (timespec rest{}; ::nanosleep(&left, &rest) != 0 && errno == EINTR; rest = {})
        left = rest;
}

unsigned int LinuxWrapper::umask(unsigned int mask)
{
    return ::umask(mask);
}

} // namespace Halvix
