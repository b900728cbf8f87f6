// SPDX-License-Identifier: LicenseRef-HXAux
// Sleeping. The requested duration is in the unit's time.
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Link.h"

#include <ctime>
#include <unistd.h>

namespace hxsim {

namespace {

std::string shown(std::int64_t nanoseconds)
{
    if (nanoseconds % 1000000 == 0)
        return std::to_string(nanoseconds / 1000000) + " ms";
    return std::to_string(nanoseconds) + " ns";
}

/// 0 or -errno; `rest` is the time left after a signal.
int sleepFor(Link& link, std::int64_t nanoseconds, std::int64_t& rest)
{
    rest = nanoseconds;
    return link.sleepAs(shown(nanoseconds), nanoseconds, &rest);
}

template <typename Spec>
bool isValid(const Spec& time)
{
    return time.tv_sec >= 0 && time.tv_nsec >= 0 && time.tv_nsec < kNanosecondsPerSecond;
}

/// The time left until a moment on one of the machine's clocks.
std::int64_t until(clockid_t clock, std::int64_t moment)
{
    timespec now{};
    clock_gettime(clock, &now);
    return moment > nanosecondsOf(now) ? moment - nanosecondsOf(now) : 0;
}

template <typename Spec>
int sleepCall(Link& link, const Spec* wanted, Spec* rest)
{
    if (!isValid(*wanted))
        return -EINVAL;
    std::int64_t left = 0;
    const int result = sleepFor(link, nanosecondsOf(*wanted), left);
    if (result == -EINTR && rest != nullptr)
        store(left, *rest);
    return result;
}

template <typename Spec>
int clockCall(Link& link, clockid_t clock, int flags, const Spec* wanted, Spec* rest)
{
    if (!isValid(*wanted))
        return EINVAL;
    std::int64_t left = 0;
    if ((flags & TIMER_ABSTIME) != 0)
        return -sleepFor(link, until(clock, nanosecondsOf(*wanted)), left);
    return -sleepCall(link, wanted, rest);
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int nanosleep(const timespec* wanted, timespec* rest)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(nanosleep)(wanted, rest);
    KeepErrno keep;
    return keep.answer(sleepCall(*link, wanted, rest));
}

HXSIM_ENTRY int clock_nanosleep(clockid_t clock, int flags, const timespec* wanted, timespec* rest)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(clock_nanosleep)(clock, flags, wanted, rest);
    const KeepErrno keep;
    return clockCall(*link, clock, flags, wanted, rest);
}

HXSIM_ENTRY int usleep(useconds_t microseconds)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(usleep)(microseconds);
    KeepErrno keep;
    std::int64_t left = 0;
    return keep.answer(sleepFor(*link, std::int64_t{microseconds} * 1000, left));
}

HXSIM_ENTRY unsigned sleep(unsigned seconds)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sleep)(seconds);
    const KeepErrno keep;
    std::int64_t left = 0;
    if (sleepFor(*link, std::int64_t{seconds} * kNanosecondsPerSecond, left) == 0)
        return 0;
    return static_cast<unsigned>((left + kNanosecondsPerSecond / 2) / kNanosecondsPerSecond);
}

#if defined(__i386__)
HXSIM_ENTRY int __nanosleep64(const Timespec64* wanted, Timespec64* rest)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL_AS(decltype(&__nanosleep64), "__nanosleep64")(wanted, rest);
    KeepErrno keep;
    return keep.answer(sleepCall(*link, wanted, rest));
}

HXSIM_ENTRY int __clock_nanosleep_time64(clockid_t clock, int flags, const Timespec64* wanted, Timespec64* rest)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL_AS(decltype(&__clock_nanosleep_time64), "__clock_nanosleep_time64")(clock, flags, wanted,
                                                                                              rest);
    const KeepErrno keep;
    return clockCall(*link, clock, flags, wanted, rest);
}
#endif
