// SPDX-License-Identifier: LicenseRef-HXAux
// Threads, and the file-creation mask, which the whole process shares.
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Link.h"

#include <cstdio>
#include <pthread.h>
#include <sys/stat.h>

using namespace hxsim;

HXSIM_ENTRY int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                               void* argument) noexcept
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(pthread_create)(thread, attributes, function, argument);
    const KeepErrno keep;
    int error = link->fault("thread", "start");
    if (error == 0)
        error = link->createThread(thread, attributes, function, argument);
    link->note("thread", "start", error);
    return error;
}

HXSIM_ENTRY int pthread_join(pthread_t thread, void** result)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(pthread_join)(thread, result);
    const KeepErrno keep;
    return link->joinThread(thread, result);
}

HXSIM_ENTRY mode_t umask(mode_t mask) noexcept
{
    if (Link* const link = Link::current()) {
        const KeepErrno keep;
        char action[16];
        std::snprintf(action, sizeof action, "%#o", mask);
        link->note("umask", action, 0);
    }
    return HXSIM_REAL(umask)(mask);
}
