// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Signals.h"

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <string>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace hxaux {

namespace {

using namespace std::chrono_literals;

constexpr auto kLook = 100ms;
constexpr int kLooksUntilStuck = 5;

// Whether a thread of this program waits for a semaphore.
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

// A pending signal of a set, or nothing. All threads of the tool block them, so that they stay pending.
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

bool isIgnored(int number)
{
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

class HeldSignals::Hold {
public:
    Hold();
    ~Hold();
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    std::optional<int> take(std::chrono::milliseconds wait) const;
    std::optional<int> await(std::chrono::milliseconds wait);
    void beforeTheEnd(std::function<void()> release);

private:
    void endWhenStuck();
    void endWhenTooLong();
    [[nodiscard]] bool isStuck() const;

    sigset_t held_{};
    sigset_t before_{};
    std::optional<int> awaited_;
    pid_t holder_;
    std::mutex mutex_;
    std::function<void()> release_;
    std::condition_variable ended_;
    bool end_ = false;
    std::chrono::milliseconds waited_{};
    std::thread observer_;
};

HeldSignals::Hold::Hold() : holder_(static_cast<pid_t>(syscall(SYS_gettid)))
{
    sigemptyset(&held_);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(number)) // a blocked one would arrive anyway
            sigaddset(&held_, number);
    sigset_t blocked = held_;
    sigaddset(&blocked, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &blocked, &before_);
    observer_ = std::thread([this] { endWhenStuck(); });
}

HeldSignals::Hold::~Hold()
{
    {
        const std::lock_guard lock(mutex_);
        end_ = true;
    }
    ended_.notify_all();
    observer_.join();
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    if (awaited_)
        std::raise(*awaited_);
}

namespace {

// How long a wait for a lock may last; without an end it may last forever.
struct Limit {
    std::chrono::duration<double> time{};
    std::function<void()> end;
};

Limit& limit()
{
    static Limit theLimit;
    return theLimit;
}

} // namespace

// Another wait for a lock may have begun meanwhile: only the sum of what was seen counts.
void HeldSignals::Hold::endWhenTooLong()
{
    waited_ = waitsForALock(holder_) ? waited_ + kLook : 0ms;
    if (!limit().end || waited_ < limit().time)
        return;
    if (release_)
        std::exchange(release_, {})();
    if (waitsForALock(holder_))
        limit().end();
}

bool HeldSignals::Hold::isStuck() const
{
    return isPending(held_) && waitsForALock(holder_);
}

void HeldSignals::Hold::endWhenStuck()
{
    std::unique_lock lock(mutex_);
    int looks = 0;
    while (!ended_.wait_for(lock, kLook, [this] { return end_; })) {
        endWhenTooLong();
        looks = isStuck() ? looks + 1 : 0;
        if (looks < kLooksUntilStuck)
            continue;
        if (release_)
            std::exchange(release_, {})();
        if (!isStuck())
            continue; // it has acquired the lock meanwhile, and ends cleanly
        std::fputs("hxaux: ended while waiting for a lock; 'hxaux locks' shows the holder\n", stderr);
        std::fflush(stdout);
        pthread_sigmask(SIG_UNBLOCK, &held_, nullptr); // the pending signal takes effect here
    }
}

void HeldSignals::Hold::beforeTheEnd(std::function<void()> release)
{
    const std::lock_guard lock(mutex_);
    release_ = std::move(release);
}

std::optional<int> HeldSignals::Hold::await(std::chrono::milliseconds wait)
{
    if (!awaited_)
        awaited_ = take(wait);
    return awaited_;
}

std::optional<int> HeldSignals::Hold::take(std::chrono::milliseconds wait) const
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

HeldSignals::HeldSignals()
{
    static std::weak_ptr<Hold> theHold;
    hold_ = theHold.lock();
    if (hold_ == nullptr)
        theHold = hold_ = std::make_shared<Hold>();
}

std::optional<int> HeldSignals::take(std::chrono::milliseconds wait) const
{
    return hold_->take(wait);
}

std::optional<int> HeldSignals::await(std::chrono::milliseconds wait) const
{
    return hold_->await(wait);
}

void HeldSignals::beforeTheEnd(std::function<void()> release) const
{
    hold_->beforeTheEnd(std::move(release));
}

void HeldSignals::limitWaits(std::chrono::duration<double> time, std::function<void()> end)
{
    limit() = {time, std::move(end)};
}

Exit exitOf(int signal)
{
    return static_cast<Exit>(128 + signal);
}

} // namespace hxaux
