// SPDX-License-Identifier: LicenseRef-HXAux
// Named semaphores are real ones under a name of the unit's own.
#include "simulator/file/ThreadSafety.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Generated.h"
#include "simulator/interpose/Link.h"

#include <cstdarg>
#include <ctime>
#include <fcntl.h>
#include <map>
#include <pthread.h>
#include <semaphore.h>

namespace hxsim {

namespace {

/// Maps pointers to semaphores. The C library returns the same pointer for each open of a name.
class Names {
public:
    void opened(sem_t* semaphore, const std::string& name)
    {
        const Held guard{lock_};
        Row& row = rows_[semaphore];
        row.name = name;
        ++row.opens;
    }
    void closed(sem_t* semaphore)
    {
        const Held guard{lock_};
        const auto found = rows_.find(semaphore);
        if (found != rows_.end() && --found->second.opens == 0)
            rows_.erase(found);
    }
    std::string of(sem_t* semaphore)
    {
        const Held guard{lock_};
        const auto found = rows_.find(semaphore);
        return found == rows_.end() ? "semaphore" : found->second.name;
    }
    static Names& table()
    {
        static auto* const names = new Names; // programs use semaphores until their very end
        return *names;
    }
    /// Another thread must not hold the lock at a fork, or the child would wait for it forever. From the start, because
    /// handlers of a program's own locks, held around its calls, have to come later.
    static void keepAcrossForks()
    {
        pthread_atfork([]() HXSIM_UNCHECKED_LOCKING { table().lock_.lock(); },
                       []() HXSIM_UNCHECKED_LOCKING { table().lock_.unlock(); },
                       []() HXSIM_UNCHECKED_LOCKING { table().lock_.unlock(); });
    }

private:
    struct Row {
        std::string name;
        int opens = 0;
    };
    Mutex lock_;
    std::map<sem_t*, Row> rows_ HXSIM_GUARDED_BY(lock_);
};

__attribute__((constructor)) void keepNamesAcrossForks()
{
    Names::keepAcrossForks();
}

sem_t* openSemaphore(Link& link, const char* text, int flags, mode_t mode, unsigned value)
{
    KeepErrno keep;
    const std::string name = text;
    std::string action = "sem_open";
    action += (flags & O_CREAT) != 0 ? " creat" : "";
    action += (flags & O_EXCL) != 0 ? " excl" : "";
    if ((flags & O_CREAT) != 0)
        action += ' ' + std::to_string(value);
    sem_t* semaphore = SEM_FAILED;
    const std::string shown = shownName(name);
    int error = link.fault(shown, "sem_open");
    if (error == 0) {
        semaphore = HXSIM_REAL(sem_open)(link.semaphoreName(name).c_str(), flags, mode, value);
        error = semaphore == SEM_FAILED ? errno : 0;
        if (error == 0 && (flags & O_CREAT) != 0 && link.isOver())
            HXSIM_REAL(sem_unlink)(link.semaphoreName(name).c_str());
    }
    if (error == 0)
        Names::table().opened(semaphore, shown);
    link.note(shown, action, error);
    (void)keep.answer(-error);
    return semaphore;
}

/// A call on an open semaphore: can fail by injection, is recorded when done.
template <typename Call>
int semaphoreCall(Link& link, sem_t* semaphore, const char* action, Call call)
{
    KeepErrno keep;
    const std::string name = Names::table().of(semaphore);
    int result = -link.fault(name, action);
    if (result == 0)
        result = call(name);
    link.note(name, action, result < 0 ? -result : 0);
    return keep.answer(result);
}

int waitUntil(Link& link, sem_t* semaphore, clockid_t clock, std::int64_t seconds, std::int64_t nanoseconds)
{
    const bool isMoment = nanoseconds >= 0 && nanoseconds < kNanosecondsPerSecond;
    if (!isMoment || (clock != CLOCK_REALTIME && clock != CLOCK_MONOTONIC)) // before a look at the semaphore
        return semaphoreCall(link, semaphore, "sem_timedwait", [](const std::string&) { return -EINVAL; });
    timespec now{};
    clock_gettime(clock, &now);
    const std::int64_t left = (seconds - now.tv_sec) * kNanosecondsPerSecond + nanoseconds - std::int64_t{now.tv_nsec};
    return semaphoreCall(link, semaphore, "sem_timedwait",
                         [&](const std::string& name) { return link.wait(semaphore, name, left > 0 ? left : 0); });
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY sem_t* sem_open(const char* name, int flags, ...) noexcept
{
    va_list arguments;
    va_start(arguments, flags);
    const bool creates = (flags & O_CREAT) != 0;
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start stands above
    const mode_t mode = creates ? va_arg(arguments, mode_t) : 0;
    const unsigned value = creates ? va_arg(arguments, unsigned) : 0;
    va_end(arguments);
    Link* const link = Link::current();
    if (link != nullptr)
        return openSemaphore(*link, name, flags, mode, value);
    if (isProductSemaphore(name))
        dieOutsideAUnit(std::string{"semaphore "} + name);
    return HXSIM_REAL(sem_open)(name, flags, mode, value);
}

HXSIM_ENTRY int sem_close(sem_t* semaphore) noexcept
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_close)(semaphore);
    const int result = semaphoreCall(*link, semaphore, "sem_close", [&](const std::string&) {
        return HXSIM_REAL(sem_close)(semaphore) == 0 ? 0 : -errno;
    });
    if (result == 0)
        Names::table().closed(semaphore);
    return result;
}

HXSIM_ENTRY int sem_unlink(const char* name) noexcept
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_unlink)(name);
    KeepErrno keep;
    const int result = HXSIM_REAL(sem_unlink)(link->semaphoreName(name).c_str()) == 0 ? 0 : -errno;
    link->note(shownName(name), "sem_unlink", -result);
    return keep.answer(result);
}

HXSIM_ENTRY int sem_wait(sem_t* semaphore)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_wait)(semaphore);
    return semaphoreCall(*link, semaphore, "sem_wait",
                         [&](const std::string& name) { return link->wait(semaphore, name, std::nullopt); });
}

HXSIM_ENTRY int sem_trywait(sem_t* semaphore) noexcept
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_trywait)(semaphore);
    return semaphoreCall(*link, semaphore, "sem_trywait",
                         [&](const std::string&) { return HXSIM_REAL(sem_trywait)(semaphore) == 0 ? 0 : -errno; });
}

HXSIM_ENTRY int sem_post(sem_t* semaphore) noexcept
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_post)(semaphore);
    KeepErrno keep;
    const std::string name = Names::table().of(semaphore);
    const int error = link->fault(name, "sem_post");
    link->note(name, "sem_post", error); // before a waiting thread can continue
    return keep.answer(error != 0 ? -error : link->post(semaphore));
}

HXSIM_ENTRY int sem_timedwait(sem_t* semaphore, const timespec* moment)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_timedwait)(semaphore, moment);
    return waitUntil(*link, semaphore, CLOCK_REALTIME, moment->tv_sec, moment->tv_nsec);
}

HXSIM_ENTRY int sem_clockwait(sem_t* semaphore, clockid_t clock, const timespec* moment)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL(sem_clockwait)(semaphore, clock, moment);
    return waitUntil(*link, semaphore, clock, moment->tv_sec, moment->tv_nsec);
}

#if defined(__i386__)
HXSIM_ENTRY int __sem_timedwait64(sem_t* semaphore, const Timespec64* moment)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL_AS(decltype(&__sem_timedwait64), "__sem_timedwait64")(semaphore, moment);
    return waitUntil(*link, semaphore, CLOCK_REALTIME, moment->tv_sec, moment->tv_nsec);
}

HXSIM_ENTRY int __sem_clockwait64(sem_t* semaphore, clockid_t clock, const Timespec64* moment)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return HXSIM_REAL_AS(decltype(&__sem_clockwait64), "__sem_clockwait64")(semaphore, clock, moment);
    return waitUntil(*link, semaphore, clock, moment->tv_sec, moment->tv_nsec);
}
#endif
