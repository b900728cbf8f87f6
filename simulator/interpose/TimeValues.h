// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Real.h"

#include <cstdint>
#include <ctime>

namespace hxsim {

/// struct timespec of the 64-bit time interface, which 32-bit programs use under names of its own.
struct Timespec64 {
    std::int64_t tv_sec;
    std::int32_t tv_nsec;
    std::int32_t padding;
};

/// The same of struct timeval.
struct Timeval64 {
    std::int64_t tv_sec;
    std::int64_t tv_usec;
};

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;

template <typename Spec>
std::int64_t nanosecondsOf(const Spec& time)
{
    return std::int64_t{time.tv_sec} * kNanosecondsPerSecond + time.tv_nsec;
}

template <typename Spec>
void store(std::int64_t nanoseconds, Spec& time)
{
    time.tv_sec = static_cast<decltype(time.tv_sec)>(nanoseconds / kNanosecondsPerSecond);
    time.tv_nsec = static_cast<decltype(time.tv_nsec)>(nanoseconds % kNanosecondsPerSecond);
}

inline timespec timespecOf(std::int64_t nanoseconds)
{
    timespec time{};
    store(nanoseconds, time);
    return time;
}

/// One of the machine's clocks, whatever the unit's time is.
inline std::int64_t machineTime(clockid_t clock)
{
    timespec now{};
    HXSIM_REAL(clock_gettime)(clock, &now);
    return nanosecondsOf(now);
}

} // namespace hxsim
