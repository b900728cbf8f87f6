// SPDX-License-Identifier: LicenseRef-HXAux
// Waiting for descriptors some of which belong to the unit.
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

#include <algorithm>
#include <array>
#include <poll.h>
#include <span>
#include <sys/epoll.h>
#include <sys/select.h>
#include <vector>

namespace hxsim {

namespace {

/// Interval of checks of the unit's descriptors, in the unit's time.
constexpr std::int64_t kStepNanoseconds = 1000000;

bool isDevice(int fd)
{
    return Descriptors::table().findDevice(fd) != nullptr;
}

short readiness(int fd, short wanted)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return POLLNVAL; // closed meanwhile
    const int readable = descriptor->device->readable() ? POLLIN | POLLRDNORM : 0;
    return static_cast<short>(wanted & (readable | POLLOUT | POLLWRNORM));
}

/// Checks all of them once; the number of ready ones.
int look(std::span<pollfd> wanted)
{
    std::vector<pollfd> others{wanted.begin(), wanted.end()};
    for (pollfd& other : others)
        if (isDevice(other.fd))
            other.fd = -1;
    int ready = HXSIM_REAL(poll)(others.data(), others.size(), 0);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const bool ours = isDevice(wanted[i].fd);
        wanted[i].revents = ours ? readiness(wanted[i].fd, wanted[i].events) : others[i].revents;
        ready += ours && wanted[i].revents != 0 ? 1 : 0;
    }
    return ready;
}

/// Runs the handlers of signals that arrived while they were blocked; whether there were any.
bool letSignalsIn(const sigset_t* mask)
{
    const timespec none{};
    return mask != nullptr && HXSIM_REAL(ppoll)(nullptr, 0, &none, mask) < 0 && errno == EINTR;
}

/// `count` has a look, and returns how many are ready or what is wrong with them.
template <typename Count>
int pollUnit(Link& link, std::int64_t timeoutNanoseconds, const sigset_t* mask, Count count)
{
    const bool endless = timeoutNanoseconds < 0;
    for (std::int64_t left = timeoutNanoseconds;; left -= kStepNanoseconds) {
        const int ready = count();
        if (ready != 0 || (!endless && left <= 0))
            return ready;
        if (letSignalsIn(mask) || link.sleep(kStepNanoseconds) == -EINTR)
            return -EINTR;
    }
}

/// A wait of the machine with a time limit in the unit's own time; `wait` is a call with another limit, which is 0
/// after that, negative after a failure.
template <typename Wait>
int waitInOwnTime(Link& link, std::int64_t nanoseconds, Wait wait)
{
    int ready = 0;
    link.waitInOwnTime(nanoseconds, [&](std::int64_t step) {
        ready = wait(timespecOf(step));
        if (ready < 0)
            ready = -errno;
        return ready != 0;
    });
    return ready;
}

bool isInOwnTime(Link* link, std::int64_t timeoutNanoseconds)
{
    return link != nullptr && timeoutNanoseconds > 0 && link->hasOwnTime();
}

int pollInOwnTime(Link& link, std::span<pollfd> wanted, std::int64_t timeoutNanoseconds, const sigset_t* mask)
{
    if (wanted.empty() && mask == nullptr)
        return link.sleep(timeoutNanoseconds);
    return waitInOwnTime(link, timeoutNanoseconds, [&](const timespec& time) {
        return HXSIM_REAL(ppoll)(wanted.data(), wanted.size(), &time, mask);
    });
}

template <typename Forward>
int pollOr(pollfd* wanted, nfds_t count, std::int64_t timeoutNanoseconds, const sigset_t* mask, Forward forward)
{
    Link* const link = Link::current();
    const std::span all{wanted, static_cast<std::size_t>(count)};
    const bool isMachines =
        link == nullptr || std::none_of(all.begin(), all.end(), [](const pollfd& one) { return isDevice(one.fd); });
    if (isMachines && !isInOwnTime(link, timeoutNanoseconds))
        return forward();
    KeepErrno keep;
    if (isMachines)
        return keep.answer(pollInOwnTime(*link, all, timeoutNanoseconds, mask));
    return keep.answer(pollUnit(*link, timeoutNanoseconds, mask, [&] { return look(all); }));
}

template <typename Spec>
std::int64_t limitOf(const Spec* timeout)
{
    return timeout == nullptr ? -1 : nanosecondsOf(*timeout);
}

bool has(const fd_set* set, int fd)
{
    return set != nullptr && FD_ISSET(fd, set);
}

bool namesDevice(int count, const fd_set* readers, const fd_set* writers)
{
    for (int fd = 0; fd < count; ++fd)
        if ((has(readers, fd) || has(writers, fd)) && isDevice(fd))
            return true;
    return false;
}

/// One of the sets of a select: what is wanted of its descriptors, and what counts as that.
struct Watched {
    fd_set* set;
    int event;
    int met;
};
using AllWatched = std::array<Watched, 3>;

AllWatched watched(fd_set* readers, fd_set* writers, fd_set* exceptions)
{
    return {{{readers, POLLIN, POLLIN | POLLHUP | POLLERR},
             {writers, POLLOUT, POLLOUT | POLLERR},
             {exceptions, POLLPRI, POLLPRI}}};
}

std::vector<pollfd> requested(int count, const AllWatched& sets)
{
    std::vector<pollfd> all;
    for (int fd = 0; fd < count; ++fd) {
        int events = 0;
        for (const Watched& each : sets)
            events |= has(each.set, fd) ? each.event : 0;
        if (events != 0)
            all.push_back({fd, static_cast<short>(events), 0});
    }
    return all;
}

bool isMet(const pollfd& one, const Watched& set)
{
    return set.set != nullptr && (one.events & set.event) != 0 && (one.revents & set.met) != 0;
}

/// How many a select reports, or -EBADF.
int countMet(const std::vector<pollfd>& all, const AllWatched& sets)
{
    int met = 0;
    for (const pollfd& one : all) {
        if ((one.revents & POLLNVAL) != 0)
            return -EBADF;
        for (const Watched& each : sets)
            met += isMet(one, each) ? 1 : 0;
    }
    return met;
}

void answer(const std::vector<pollfd>& all, const AllWatched& sets)
{
    for (const Watched& each : sets) {
        if (each.set != nullptr)
            FD_ZERO(each.set);
        for (const pollfd& one : all)
            if (isMet(one, each))
                FD_SET(one.fd, each.set);
    }
}

/// The sets of a select, as the program passed them.
class Sets {
public:
    Sets(fd_set* readers, fd_set* writers, fd_set* exceptions) : sets_{readers, writers, exceptions}
    {
        for (std::size_t i = 0; i < sets_.size(); ++i)
            if (sets_[i] != nullptr)
                copies_[i] = *sets_[i];
    }
    /// A call has changed them.
    void restore()
    {
        for (std::size_t i = 0; i < sets_.size(); ++i)
            if (sets_[i] != nullptr)
                *sets_[i] = copies_[i];
    }

private:
    std::array<fd_set*, 3> sets_;
    std::array<fd_set, 3> copies_{};
};

int selectInOwnTime(Link& link, int count, fd_set* readers, fd_set* writers, fd_set* exceptions,
                    std::int64_t timeoutNanoseconds, const sigset_t* mask)
{
    if (count == 0 && mask == nullptr)
        return link.sleep(timeoutNanoseconds);
    Sets sets{readers, writers, exceptions};
    return waitInOwnTime(link, timeoutNanoseconds, [&](const timespec& time) {
        sets.restore();
        return HXSIM_REAL(pselect)(count, readers, writers, exceptions, &time, mask);
    });
}

template <typename Forward>
int selectOr(int count, fd_set* readers, fd_set* writers, fd_set* exceptions, std::int64_t timeoutNanoseconds,
             const sigset_t* mask, Forward forward)
{
    Link* const link = Link::current();
    const bool isMachines = link == nullptr || !namesDevice(count, readers, writers);
    if (isMachines && !isInOwnTime(link, timeoutNanoseconds))
        return forward();
    KeepErrno keep;
    if (isMachines)
        return keep.answer(selectInOwnTime(*link, count, readers, writers, exceptions, timeoutNanoseconds, mask));
    const AllWatched sets = watched(readers, writers, exceptions);
    std::vector<pollfd> all = requested(count, sets);
    const int ready = pollUnit(*link, timeoutNanoseconds, mask, [&] {
        (void)look(all);
        return countMet(all, sets);
    });
    if (ready >= 0)
        answer(all, sets);
    return keep.answer(ready);
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int poll(pollfd* wanted, nfds_t count, int timeoutMs)
{
    return pollOr(wanted, count, std::int64_t{timeoutMs} * 1000000, nullptr,
                  [&] { return HXSIM_REAL(poll)(wanted, count, timeoutMs); });
}

HXSIM_ENTRY int __poll_chk(pollfd* wanted, nfds_t count, int timeoutMs, std::size_t size)
{
    return pollOr(wanted, count, std::int64_t{timeoutMs} * 1000000, nullptr,
                  [&] { return HXSIM_REAL_AS(decltype(&__poll_chk), "__poll_chk")(wanted, count, timeoutMs, size); });
}

#define HXSIM_PPOLL(name, Spec)                                                                                        \
    HXSIM_ENTRY int name(pollfd* wanted, nfds_t count, const Spec* timeout, const sigset_t* mask)                      \
    {                                                                                                                  \
        return pollOr(wanted, count, limitOf(timeout), mask, [&] {                                                     \
            using Call = int (*)(pollfd*, nfds_t, const Spec*, const sigset_t*);                                       \
            return HXSIM_REAL_AS(Call, #name)(wanted, count, timeout, mask);                                           \
        });                                                                                                            \
    }

HXSIM_PPOLL(ppoll, timespec)
#if defined(__i386__)
HXSIM_PPOLL(__ppoll64, Timespec64)
#endif

// NOLINTBEGIN(bugprone-macro-parentheses): a type
#define HXSIM_SELECT(name, Value)                                                                                      \
    HXSIM_ENTRY int name(int count, fd_set* readers, fd_set* writers, fd_set* exceptions, Value* timeout)              \
    {                                                                                                                  \
        const std::int64_t nanoseconds = timeout == nullptr ? -1                                                       \
                                                            : std::int64_t{timeout->tv_sec} * kNanosecondsPerSecond +  \
                                                                  std::int64_t{timeout->tv_usec} * 1000;               \
        return selectOr(count, readers, writers, exceptions, nanoseconds, nullptr, [&] {                               \
            using Call = int (*)(int, fd_set*, fd_set*, fd_set*, Value*);                                              \
            return HXSIM_REAL_AS(Call, #name)(count, readers, writers, exceptions, timeout);                           \
        });                                                                                                            \
    }
// NOLINTEND(bugprone-macro-parentheses)

HXSIM_SELECT(select, timeval)
#if defined(__i386__)
HXSIM_SELECT(__select64, Timeval64)
#endif

#define HXSIM_PSELECT(name, Spec)                                                                                      \
    HXSIM_ENTRY int name(int count, fd_set* readers, fd_set* writers, fd_set* exceptions, const Spec* timeout,         \
                         const sigset_t* mask)                                                                         \
    {                                                                                                                  \
        return selectOr(count, readers, writers, exceptions, limitOf(timeout), mask, [&] {                             \
            using Call = int (*)(int, fd_set*, fd_set*, fd_set*, const Spec*, const sigset_t*);                        \
            return HXSIM_REAL_AS(Call, #name)(count, readers, writers, exceptions, timeout, mask);                     \
        });                                                                                                            \
    }

HXSIM_PSELECT(pselect, timespec)
#if defined(__i386__)
HXSIM_PSELECT(__pselect64, Timespec64)
#endif

/// The unit's devices cannot be watched that way, as many of the kernel's cannot.
HXSIM_ENTRY int epoll_ctl(int set, int operation, int fd, epoll_event* event) noexcept
{
    if (!isDevice(fd))
        return HXSIM_REAL(epoll_ctl)(set, operation, fd, event);
    errno = EPERM;
    return -1;
}
