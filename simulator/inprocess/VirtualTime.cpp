// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/inprocess/VirtualTime.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <tuple>
#include <utility>

namespace hxsim {

namespace {

/// Hardware that keeps setting timers while every thread waits for an event would loop forever.
constexpr Time kLongestTimerRun = std::chrono::hours{24};
constexpr auto kPatience = std::chrono::seconds{20};

double seconds(Time time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

void VirtualTime::threadLeft()
{
    if (--running_ == 0)
        advance();
}

bool VirtualTime::wait(std::unique_lock<std::mutex>& lock, std::optional<Time> deadline, const void* channel, Rank rank,
                       const std::string& what, std::function<bool()> ready)
{
    Waiter waiter{deadline, channel, rank, asked_++, what, std::move(ready), {}, false, false};
    waiters_.push_back(&waiter);
    if (--running_ == 0)
        advance();
    sleepUntilWoken(lock, waiter);
    return waiter.byChannel;
}

void VirtualTime::sleepUntilWoken(std::unique_lock<std::mutex>& lock, Waiter& waiter)
{
    std::uint64_t seen = moves_;
    while (!waiter.isWoken) {
        if (waiter.woken.wait_for(lock, kPatience) == std::cv_status::no_timeout || waiter.isWoken || stopped_)
            continue;
        if (seen == moves_ && !outsiders_)
            printWaiters("the unit's time stands still, because a thread runs or waits for what the unit cannot see");
        seen = moves_;
    }
}

void VirtualTime::wakeOne(const void* channel)
{
    const auto first = std::find_if(waiters_.begin(), waiters_.end(),
                                    [&](const Waiter* waiter) { return waiter->channel == channel; });
    if (first != waiters_.end())
        wake(**first, true);
}

void VirtualTime::wakeAll(const void* channel)
{
    for (auto next = waiters_.begin(); next != waiters_.end();) {
        Waiter& waiter = **next++;
        if (waiter.channel == channel)
            wake(waiter, true);
    }
}

void VirtualTime::onlyThisThreadIsLeft()
{
    waiters_.clear();
    running_ = 1;
}

void VirtualTime::wake(Waiter& waiter, bool byChannel)
{
    if (stopped_)
        return;
    ++moves_;
    ++running_;
    waiters_.remove(&waiter);
    waiter.byChannel = byChannel;
    waiter.isWoken = true;
    waiter.woken.notify_one();
}

VirtualTime::Waiter* VirtualTime::nextDue() const
{
    Waiter* next = nullptr;
    for (Waiter* waiter : waiters_)
        if (waiter->deadline && (next == nullptr || std::tie(*waiter->deadline, waiter->rank, waiter->order) <
                                                        std::tie(*next->deadline, next->rank, next->order)))
            next = waiter;
    return next;
}

void VirtualTime::wakeReady()
{
    for (auto next = waiters_.begin(); next != waiters_.end();) {
        Waiter& waiter = **next++;
        if (waiter.ready && waiter.ready())
            wake(waiter, true);
    }
}

void VirtualTime::advance()
{
    const Time from = clock_.now();
    while (running_ == 0 && !stopped_) {
        Waiter* due = nextDue();
        const std::optional<Time> timer = clock_.nextDeadline();
        if (timer && (due == nullptr || *timer <= *due->deadline)) {
            clock_.advanceTo(*timer); // may wake threads
            wakeReady();
            if (due == nullptr && clock_.now() - from > kLongestTimerRun)
                break;
            continue;
        }
        if (due != nullptr) {
            clock_.advanceTo(*due->deadline);
            wake(*due, false);
            return;
        }
        break;
    }
    if (running_ == 0 && !stopped_ && !outsiders_ && !waiters_.empty()) {
        printWaiters("every thread of the program waits for another thread");
        std::abort();
    }
}

void VirtualTime::printWaiters(const char* headline) const
{
    std::fprintf(stderr, "%s (unit's time %.3f s, %d running):\n", headline, seconds(clock_.now()), running_);
    for (const Waiter* waiter : waiters_) {
        std::fprintf(stderr, "  %s", waiter->what.c_str());
        if (waiter->deadline)
            std::fprintf(stderr, ", until %.3f s", seconds(*waiter->deadline));
        std::fputc('\n', stderr);
    }
}

} // namespace hxsim
