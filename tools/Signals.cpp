// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/Signals.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>

namespace hxaux {

namespace {

using namespace std::chrono_literals;

constexpr auto kLook = 100ms;
constexpr int kLooksUntilStuck = 5;

// Whether a thread of this program sleeps in the system call that semaphores wait with.
bool waitsForALock(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/syscall");
    long number = -1;
    file >> number;
#ifdef SYS_futex_time64
    if (number == SYS_futex_time64)
        return true;
#endif
    return number == SYS_futex;
}

// A pending signal of a set, or nothing. All threads of the tool hold them back, so that they stay pending.
bool isPending(const sigset_t& set)
{
    sigset_t pending;
    sigpending(&pending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        if (sigismember(&set, number) == 1 && sigismember(&pending, number) == 1)
            return true;
    }
    return false;
}

} // namespace

HeldSignals::HeldSignals() : holder_(static_cast<pid_t>(syscall(SYS_gettid)))
{
    sigemptyset(&held_);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&held_, number);
    pthread_sigmask(SIG_BLOCK, &held_, &before_);
    observer_ = std::thread([this] { endWhenStuck(); });
}

HeldSignals::~HeldSignals()
{
    {
        const std::lock_guard lock(mutex_);
        end_ = true;
    }
    ended_.notify_all();
    observer_.join();
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void HeldSignals::endWhenStuck()
{
    std::unique_lock lock(mutex_);
    int looks = 0;
    while (!ended_.wait_for(lock, kLook, [this] { return end_; })) {
        looks = isPending(held_) && waitsForALock(holder_) ? looks + 1 : 0;
        if (looks < kLooksUntilStuck)
            continue;
        std::fputs("hxaux: ended while waiting for a lock; 'hxaux locks' tells who has it\n", stderr);
        std::fflush(stdout);
        pthread_sigmask(SIG_UNBLOCK, &held_, nullptr); // the pending signal takes effect here
    }
}

std::optional<int> HeldSignals::take(std::chrono::milliseconds wait) const
{
    using std::chrono::steady_clock;
    const auto until = steady_clock::now() + wait;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - steady_clock::now()).count();
        timespec time{};
        if (left > 0) {
            time.tv_sec = static_cast<time_t>(left / 1'000'000'000);
            time.tv_nsec = static_cast<long>(left % 1'000'000'000);
        }
        const int number = sigtimedwait(&held_, nullptr, &time);
        if (number > 0)
            return number;
        if (errno != EINTR)
            return std::nullopt;
    }
}

} // namespace hxaux
