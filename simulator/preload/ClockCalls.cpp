// SPDX-License-Identifier: LicenseRef-HXAux
// The clocks that a program reads, on a unit with a time of its own.
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Link.h"

#include <ctime>
#include <sys/time.h>

namespace hxsim {

namespace {

std::optional<std::int64_t> ownTime(clockid_t clock)
{
    Link* const link = Link::current();
    return link == nullptr ? std::nullopt : link->ownTime(clock);
}

template <typename Spec>
int show(std::int64_t nanoseconds, Spec& time)
{
    store(nanoseconds, time);
    return 0;
}

template <typename Value>
int showMicroseconds(std::int64_t nanoseconds, Value& time)
{
    time.tv_sec = static_cast<decltype(time.tv_sec)>(nanoseconds / kNanosecondsPerSecond);
    time.tv_usec = static_cast<decltype(time.tv_usec)>(nanoseconds % kNanosecondsPerSecond / 1000);
    return 0;
}

template <typename Seconds>
Seconds showSeconds(std::int64_t nanoseconds, Seconds* seconds)
{
    const auto now = static_cast<Seconds>(nanoseconds / kNanosecondsPerSecond);
    if (seconds != nullptr)
        *seconds = now;
    return now;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const std::optional<std::int64_t> own = ownTime(clock);
    return own ? show(*own, *time) : HXSIM_REAL(clock_gettime)(clock, time);
}

HXSIM_ENTRY int gettimeofday(timeval* __restrict time, void* __restrict zone) noexcept
{
    const std::optional<std::int64_t> own = ownTime(CLOCK_REALTIME);
    return own ? showMicroseconds(*own, *time) : HXSIM_REAL(gettimeofday)(time, zone);
}

HXSIM_ENTRY time_t time(time_t* seconds) noexcept
{
    const std::optional<std::int64_t> own = ownTime(CLOCK_REALTIME);
    return own ? showSeconds(*own, seconds) : HXSIM_REAL(time)(seconds);
}

HXSIM_ENTRY int timespec_get(timespec* time, int base) noexcept
{
    const std::optional<std::int64_t> own = base == TIME_UTC ? ownTime(CLOCK_REALTIME) : std::nullopt;
    if (!own)
        return HXSIM_REAL(timespec_get)(time, base);
    store(*own, *time);
    return base;
}

#if defined(__i386__)
HXSIM_ENTRY int __clock_gettime64(clockid_t clock, Timespec64* time)
{
    const std::optional<std::int64_t> own = ownTime(clock);
    return own ? show(*own, *time) : HXSIM_REAL_AS(decltype(&__clock_gettime64), "__clock_gettime64")(clock, time);
}

HXSIM_ENTRY int __gettimeofday64(Timeval64* time, void* zone)
{
    const std::optional<std::int64_t> own = ownTime(CLOCK_REALTIME);
    return own ? showMicroseconds(*own, *time)
               : HXSIM_REAL_AS(decltype(&__gettimeofday64), "__gettimeofday64")(time, zone);
}

HXSIM_ENTRY std::int64_t __time64(std::int64_t* seconds)
{
    const std::optional<std::int64_t> own = ownTime(CLOCK_REALTIME);
    return own ? showSeconds(*own, seconds) : HXSIM_REAL_AS(decltype(&__time64), "__time64")(seconds);
}
#endif
