// SPDX-License-Identifier: LicenseRef-HXAux
// Waits with a time limit within a process, on a unit with a time of its own.
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Link.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>

namespace hxsim {

namespace {

/// The machine's time after these nanoseconds.
timespec fromNow(std::int64_t nanoseconds)
{
    return timespecOf(machineTime(CLOCK_MONOTONIC) + nanoseconds);
}

/// The link of a unit with a time of its own.
Link* linkWithTime()
{
    Link* const link = Link::current();
    return link != nullptr && link->hasOwnTime() ? link : nullptr;
}

std::int64_t leftUntil(Link& link, clockid_t clock, std::int64_t moment)
{
    return moment - link.ownTime(clock).value_or(moment);
}

/// The clock of a condition variable is known to the C library alone: the one whose time is nearer to the moment.
clockid_t clockMeant(Link& link, std::int64_t moment)
{
    return std::abs(leftUntil(link, CLOCK_REALTIME, moment)) < std::abs(leftUntil(link, CLOCK_MONOTONIC, moment))
               ? CLOCK_REALTIME
               : CLOCK_MONOTONIC;
}

/// Counts the signals of condition variables. Between two steps of its wait a thread cannot be signalled, but it sees
/// that the count has changed.
std::array<std::atomic<unsigned>, 256> signals{};

std::atomic<unsigned>& signalsOf(const pthread_cond_t* condition)
{
    return signals[reinterpret_cast<std::uintptr_t>(condition) / sizeof(pthread_cond_t) % signals.size()];
}

int waitForCondition(Link& link, pthread_cond_t* condition, pthread_mutex_t* mutex, std::int64_t nanoseconds)
{
    const KeepErrno keep;
    const unsigned before = signalsOf(condition).load();
    int result = ETIMEDOUT;
    const auto attempt = [&](std::int64_t step) {
        if (signalsOf(condition).load() != before) {
            result = 0;
            return true;
        }
        const timespec until = fromNow(step);
        result = HXSIM_REAL(pthread_cond_clockwait)(condition, mutex, CLOCK_MONOTONIC, &until);
        return result != ETIMEDOUT;
    };
    if (nanoseconds > 0)
        link.waitInOwnTime(nanoseconds, attempt);
    else
        (void)attempt(0);
    return result;
}

int waitForMutex(Link& link, pthread_mutex_t* mutex, std::int64_t nanoseconds)
{
    const KeepErrno keep;
    int result = HXSIM_REAL(pthread_mutex_trylock)(mutex);
    if (result != EBUSY)
        return result;
    result = ETIMEDOUT;
    if (nanoseconds > 0)
        link.waitInOwnTime(nanoseconds, [&](std::int64_t step) {
            const timespec until = fromNow(step);
            result = HXSIM_REAL(pthread_mutex_clocklock)(mutex, CLOCK_MONOTONIC, &until);
            return result != ETIMEDOUT;
        });
    return result;
}

/// Until the set has an event.
int waitForSet(Link& link, int set, std::int64_t nanoseconds, const sigset_t* mask)
{
    const KeepErrno keep;
    pollfd watched{set, POLLIN, 0};
    int result = 0;
    link.waitInOwnTime(nanoseconds, [&](std::int64_t step) {
        const timespec time = timespecOf(step);
        result = HXSIM_REAL(ppoll)(&watched, 1, &time, mask);
        result = result < 0 ? -errno : result;
        return result != 0;
    });
    return result;
}

/// Waits in the unit's time; then `take` takes what is there.
template <typename Take>
int epollOr(int set, std::int64_t nanoseconds, const sigset_t* mask, Take take)
{
    Link* const link = nanoseconds > 0 ? linkWithTime() : nullptr;
    if (link == nullptr)
        return take(false);
    const int result = waitForSet(*link, set, nanoseconds, mask);
    if (result >= 0)
        return take(true);
    errno = -result;
    return -1;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int pthread_cond_signal(pthread_cond_t* condition) noexcept
{
    ++signalsOf(condition);
    return HXSIM_REAL(pthread_cond_signal)(condition);
}

HXSIM_ENTRY int pthread_cond_broadcast(pthread_cond_t* condition) noexcept
{
    ++signalsOf(condition);
    return HXSIM_REAL(pthread_cond_broadcast)(condition);
}

HXSIM_ENTRY int epoll_wait(int set, epoll_event* events, int count, int timeoutMs)
{
    return epollOr(set, std::int64_t{timeoutMs} * 1000000, nullptr,
                   [&](bool isOver) { return HXSIM_REAL(epoll_wait)(set, events, count, isOver ? 0 : timeoutMs); });
}

HXSIM_ENTRY int epoll_pwait(int set, epoll_event* events, int count, int timeoutMs, const sigset_t* mask)
{
    return epollOr(set, std::int64_t{timeoutMs} * 1000000, mask, [&](bool isOver) {
        return HXSIM_REAL(epoll_pwait)(set, events, count, isOver ? 0 : timeoutMs, mask);
    });
}

#define HXSIM_TIMED_WAITS(timedwait, clockwait, timedlock, clocklock, Spec)                                            \
    HXSIM_ENTRY int timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const Spec* moment)                   \
    {                                                                                                                  \
        Link* const link = linkWithTime();                                                                             \
        if (link == nullptr) {                                                                                         \
            using Call = int (*)(pthread_cond_t*, pthread_mutex_t*, const Spec*);                                      \
            return HXSIM_REAL_AS(Call, #timedwait)(condition, mutex, moment);                                          \
        }                                                                                                              \
        const std::int64_t time = nanosecondsOf(*moment);                                                              \
        return waitForCondition(*link, condition, mutex, leftUntil(*link, clockMeant(*link, time), time));             \
    }                                                                                                                  \
    HXSIM_ENTRY int clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock, const Spec* moment)  \
    {                                                                                                                  \
        Link* const link = linkWithTime();                                                                             \
        if (link == nullptr) {                                                                                         \
            using Call = int (*)(pthread_cond_t*, pthread_mutex_t*, clockid_t, const Spec*);                           \
            return HXSIM_REAL_AS(Call, #clockwait)(condition, mutex, clock, moment);                                   \
        }                                                                                                              \
        return waitForCondition(*link, condition, mutex, leftUntil(*link, clock, nanosecondsOf(*moment)));             \
    }                                                                                                                  \
    HXSIM_ENTRY int timedlock(pthread_mutex_t* mutex, const Spec* moment) noexcept                                     \
    {                                                                                                                  \
        Link* const link = linkWithTime();                                                                             \
        if (link == nullptr) {                                                                                         \
            using Call = int (*)(pthread_mutex_t*, const Spec*);                                                       \
            return HXSIM_REAL_AS(Call, #timedlock)(mutex, moment);                                                     \
        }                                                                                                              \
        return waitForMutex(*link, mutex, leftUntil(*link, CLOCK_REALTIME, nanosecondsOf(*moment)));                   \
    }                                                                                                                  \
    HXSIM_ENTRY int clocklock(pthread_mutex_t* mutex, clockid_t clock, const Spec* moment) noexcept                    \
    {                                                                                                                  \
        Link* const link = linkWithTime();                                                                             \
        if (link == nullptr) {                                                                                         \
            using Call = int (*)(pthread_mutex_t*, clockid_t, const Spec*);                                            \
            return HXSIM_REAL_AS(Call, #clocklock)(mutex, clock, moment);                                              \
        }                                                                                                              \
        return waitForMutex(*link, mutex, leftUntil(*link, clock, nanosecondsOf(*moment)));                            \
    }

HXSIM_TIMED_WAITS(pthread_cond_timedwait, pthread_cond_clockwait, pthread_mutex_timedlock, pthread_mutex_clocklock,
                  timespec)
#if defined(__i386__)
HXSIM_TIMED_WAITS(__pthread_cond_timedwait64, __pthread_cond_clockwait64, __pthread_mutex_timedlock64,
                  __pthread_mutex_clocklock64, Timespec64)
#endif
