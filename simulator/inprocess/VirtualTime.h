// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>

#include "simulator/model/Clock.h"

namespace hxsim {

/// Makes time pass when nobody is working. Threads of the program are counted; one that waits says until when and for
/// what. When the last running thread begins to wait, the clock jumps to the earliest deadline: first the hardware's
/// timers of that moment run, then one thread is let go, and the next only when that one waits again. Equal deadlines
/// go in the order in which they were asked for, so that runs repeat.
///
/// All members are called with the unit's lock held.
class VirtualTime {
public:
    /// An observer's wait ends after every other wait that is due at the same moment.
    enum class Rank { Program, Observer };

    explicit VirtualTime(Clock& clock) : clock_{clock} {}

    void threadEntered() { ++running_; }
    void threadLeft();

    /// Waits until `deadline` or until somebody wakes the channel; without a deadline only for the latter. True when
    /// woken. `what` says what is waited for, should nobody ever come.
    ///
    /// A wait with `ready` also ends when that holds after a timer of the hardware has run.
    bool wait(std::unique_lock<std::mutex>& lock, std::optional<Time> deadline, const void* channel, Rank rank,
              const std::string& what, std::function<bool()> ready = {});
    void wakeOne(const void* channel);
    void wakeAll(const void* channel);

    /// From now on no wait ends: for threads that a test leaves behind.
    void stop() { stopped_ = true; }
    /// In the only thread that a fork leaves alive.
    void onlyThisThreadIsLeft();
    /// Somebody outside this program may end a wait: then waiting without a deadline is no mistake.
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
