// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/LinuxWrapper.h"
#include "platform/ThreadSafety.h"

#include <cerrno>

namespace Halvix {

/// A named semaphore (or a private one, for a null name), opened in the constructor and closed in the destructor.
///
/// When it cannot be opened every `wait` is false and every `post` only prints: the functions that use it continue.
class HX_CAPABILITY("semaphore") Semaphore {
public:
    explicit Semaphore(const char* name)
    {
        if (!LinuxWrapper::CreateSema(handle_, name))
            handle_ = 0;
    }
    ~Semaphore() { LinuxWrapper::CloseSema(handle_); }
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    [[nodiscard]] bool isOpen() const { return handle_ != 0; }
    [[nodiscard]] int handle() const { return handle_; }

    // As a lock. A handler of the application does not end a wait.

    /// Blocks until it is acquired; false only when the semaphore is not open.
    [[nodiscard]] bool wait() HX_TRY_ACQUIRE(true) { return awaitCount(); }
    /// The same for callers that continue without the lock when the semaphore is not open.
    void acquire() HX_ACQUIRE() HX_UNCHECKED_LOCKING { (void)wait(); }
    /// False at once if it is already acquired.
    [[nodiscard]] bool tryWait() HX_TRY_ACQUIRE(true) { return LinuxWrapper::WaitForSema(handle_, false); }
    void post() HX_RELEASE() { LinuxWrapper::ReleaseSema(handle_); }

    // As a signal, whose count is a number of events.

    void signal() { LinuxWrapper::ReleaseSema(handle_); }
    /// Blocks until there is an event; false only when the semaphore is not open.
    [[nodiscard]] bool awaitSignal() { return awaitCount(); }
    /// False when there is no event; with `wait` only after a handler of the application has run.
    [[nodiscard]] bool takeSignal(bool wait) { return LinuxWrapper::WaitForSema(handle_, wait); }

private:
    [[nodiscard]] bool awaitCount() const
    {
        bool taken = LinuxWrapper::WaitForSema(handle_, true);
        while (!taken && errno == EINTR)
            taken = LinuxWrapper::WaitForSema(handle_, true);
        return taken;
    }

    int handle_ = 0;
};

/// Acquires a semaphore for a scope. A semaphore that could not be acquired is not released.
class HX_SCOPED_CAPABILITY Lock {
public:
    explicit Lock(Semaphore& semaphore) HX_ACQUIRE(semaphore) HX_UNCHECKED_LOCKING // a failed wait continues unlocked
        : semaphore_{semaphore},
          taken_{semaphore.wait()}
    {
    }
    ~Lock() HX_RELEASE() HX_UNCHECKED_LOCKING // only what was acquired
    {
        if (taken_)
            semaphore_.post();
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    Semaphore& semaphore_;
    bool taken_;
};

} // namespace Halvix
