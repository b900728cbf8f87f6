// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"

#include <pthread.h>
#include <sys/stat.h>

#include <ctime>
#include <memory>
#include <new>

namespace Halvix {

namespace {

struct Start {
    void (*function)(const void*);
    const void* argument;
};

/// POSIX threads answer a pointer, ours answer nothing.
void* run(void* given)
{
    const Start start = *static_cast<Start*>(given);
    delete static_cast<Start*>(given);
    start.function(start.argument);
    return nullptr;
}

} // namespace

eErr LinuxWrapper::startThread(void (*function)(const void*), const void* argument)
{
    std::unique_ptr<Start> start{new (std::nothrow) Start{function, argument}};
    pthread_t thread{};
    if (start == nullptr || ::pthread_create(&thread, nullptr, run, start.get()) != 0)
        return ERR_CREATE_THREAD;
    (void)start.release(); // the thread frees it
    return ERR_SUCCESS;
}

bool LinuxWrapper::Sleep(unsigned long milliseconds)
{
    timespec time{};
    time.tv_sec = static_cast<time_t>(milliseconds / 1000);
    time.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000;
    return ::nanosleep(&time, nullptr) == 0;
}

unsigned int LinuxWrapper::umask(unsigned int mask)
{
    return ::umask(mask);
}

} // namespace Halvix
