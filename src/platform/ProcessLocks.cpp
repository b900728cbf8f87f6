// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/ProcessLocks.h"

#include <pthread.h>

namespace Halvix::processlocks {

namespace {

constinit Mutex maskLock;
constinit Mutex tableLock;
constinit pthread_once_t registered = PTHREAD_ONCE_INIT;

void lockBoth() HX_UNCHECKED_LOCKING // held over the fork
{
    maskLock.lock();
    tableLock.lock();
}

void unlockBoth() HX_UNCHECKED_LOCKING
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

Mutex& creationMask()
{
    registerOnce();
    return maskLock;
}

Mutex& semaphoreTable()
{
    registerOnce();
    return tableLock;
}

} // namespace Halvix::processlocks
