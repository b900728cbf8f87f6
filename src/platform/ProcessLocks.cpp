// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/ProcessLocks.h"

#include <pthread.h>

namespace Halvix::processlocks {

namespace {

constinit std::mutex maskLock;
constinit std::mutex tableLock;
constinit pthread_once_t registered = PTHREAD_ONCE_INIT;

void lockBoth()
{
    maskLock.lock();
    tableLock.lock();
}

void unlockBoth()
{
    tableLock.unlock();
    maskLock.unlock();
}

/// At first use, not at load. If the registration runs out of memory, only a fork at the wrong moment is unprotected.
void registerOnce()
{
    ::pthread_once(&registered, [] { (void)::pthread_atfork(lockBoth, unlockBoth, unlockBoth); });
}

} // namespace

std::mutex& creationMask()
{
    registerOnce();
    return maskLock;
}

std::mutex& semaphoreTable()
{
    registerOnce();
    return tableLock;
}

} // namespace Halvix::processlocks
