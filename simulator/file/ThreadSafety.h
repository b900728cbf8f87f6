// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <mutex>

/// Annotations for clang's -Wthread-safety; empty for other compilers. A guarded field is declared with
/// `HXSIM_GUARDED_BY(lock_)`.
#if defined(__clang__)
#define HXSIM_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define HXSIM_THREAD_ANNOTATION(x)
#endif

#define HXSIM_CAPABILITY(name) HXSIM_THREAD_ANNOTATION(capability(name))
#define HXSIM_SCOPED_CAPABILITY HXSIM_THREAD_ANNOTATION(scoped_lockable)
#define HXSIM_GUARDED_BY(lock) HXSIM_THREAD_ANNOTATION(guarded_by(lock))
#define HXSIM_REQUIRES(...) HXSIM_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define HXSIM_ACQUIRE(...) HXSIM_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define HXSIM_RELEASE(...) HXSIM_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// For functions whose locking the analysis cannot follow: handlers around a fork, which lock in one and unlock in the
/// other, and locks that are moved.
#define HXSIM_UNCHECKED_LOCKING HXSIM_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace hxsim {

class HXSIM_CAPABILITY("mutex") Mutex {
public:
    void lock() HXSIM_ACQUIRE() { mutex_.lock(); }
    void unlock() HXSIM_RELEASE() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

/// Holds a lock for its own life.
template <typename Lock>
class HXSIM_SCOPED_CAPABILITY Held {
public:
    explicit Held(Lock& lock) HXSIM_ACQUIRE(lock) : lock_{lock} { lock_.lock(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() HXSIM_RELEASE() { lock_.unlock(); }

private:
    Lock& lock_;
};

} // namespace hxsim
