// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/ThreadSafety.h"

#include <csignal>
#include <mutex>
#include <pthread.h>

namespace hxsim {

/// A lock held for a few instructions with signals blocked: a handler may read, write, duplicate and close descriptors,
/// and would otherwise deadlock with the thread that it interrupts. It is locked before a fork and unlocked on both
/// sides, so that no child waits for a thread that does not exist there.
class HXSIM_CAPABILITY("lock") SignalSafeLock {
public:
    void lock() HXSIM_ACQUIRE()
    {
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        mutex_.lock();
        before_ = before;
    }
    void unlock() HXSIM_RELEASE()
    {
        const sigset_t before = before_;
        mutex_.unlock();
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

private:
    std::mutex mutex_;
    sigset_t before_{}; ///< of the thread that holds it
};

} // namespace hxsim
