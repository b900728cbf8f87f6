// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>

namespace hxsim {

/// Advances time when no thread is running. Threads of the program are counted; a waiting one passes its deadline and
/// its reason. When the last running thread begins to wait, the clock jumps to the earliest deadline: first the
/// hardware's timers of that moment run, then one thread is woken, and the next only when that one waits again. Equal
/// deadlines keep their order, so that runs are reproducible.
///
/// All members are called with the unit's lock held.
class VirtualTime {
public:
    /// An observer's wait ends after every other wait that is due at the same moment.
    enum class Rank { Program, Observer };

    explicit VirtualTime(Clock& clock) : clock_{clock} {}

    void threadEntered() { ++running_; }
    void threadLeft();

    /// Waits until `deadline` or until the channel is woken; without a deadline only for the latter. True when woken.
    /// `what` names the reason in the report of a deadlock.
    ///
    /// A wait with `ready` also ends when that holds after a timer of the hardware has run.
    bool wait(std::unique_lock<std::mutex>& lock, std::optional<Time> deadline, const void* channel, Rank rank,
              const std::string& what, std::function<bool()> ready = {});
    void wakeOne(const void* channel);
    void wakeAll(const void* channel);

    /// From now on no wait ends: for threads that a test leaves behind.
    void stop() { stopped_ = true; }
    /// For the only thread that exists after a fork.
    void onlyThisThreadIsLeft();
    /// A wait can be ended from outside this program: then waiting without a deadline is not a deadlock.
    void expectOutsiders() { outsiders_ = true; }
    [[nodiscard]] bool outsidersExpected() const { return outsiders_; }

private:
    struct Waiter {
        std::optional<Time> deadline;
        const void* channel;
        Rank rank;
        std::uint64_t order;
        std::string what;
        std::function<bool()> ready;
        std::condition_variable woken;
        bool isWoken = false;
        bool byChannel = false;
    };

    void advance();
    [[nodiscard]] Waiter* nextDue() const;
    void wakeReady();
    void wake(Waiter& waiter, bool byChannel);
    void sleepUntilWoken(std::unique_lock<std::mutex>& lock, Waiter& waiter);
    void printWaiters(const char* headline) const;

    Clock& clock_;
    int running_ = 0;
    bool stopped_ = false;
    bool outsiders_ = false;
    std::uint64_t asked_ = 0;
    std::uint64_t moves_ = 0;
    std::list<Waiter*> waiters_;
};

} // namespace hxsim
