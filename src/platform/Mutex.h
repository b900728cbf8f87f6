// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/ThreadSafety.h"

#include <mutex>

namespace Halvix {

/// A mutex that clang's analysis follows.
class HX_CAPABILITY("mutex") Mutex : private std::mutex {
public:
    using std::mutex::native_handle;

    void lock() HX_ACQUIRE() { std::mutex::lock(); }
    void unlock() HX_RELEASE() { std::mutex::unlock(); }
};

/// Holds a mutex for a scope.
class HX_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) HX_ACQUIRE(mutex) : mutex_{mutex} { mutex_.lock(); }
    ~MutexLock() HX_RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

} // namespace Halvix
