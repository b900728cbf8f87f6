// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <atomic>
#include <functional>
#include <semaphore.h>
#include <thread>

/// Runs two actions at the same time, repeatedly: in the caller's thread and in one of this object.
///
/// They spin while they wait for each other, so that they start together. After a while the one that waits sleeps, for
/// the other may sleep in the unit's time, which only goes on when all threads sleep.
class Pair {
public:
    using Action = std::function<void()>;

    Pair();
    ~Pair();
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    void run(const Action& first, const Action& second, int rounds);

private:
    struct Member {
        sem_t wakeUp{};
        std::atomic<bool> sleeps{false};
        std::atomic<unsigned> wokenBy{0}; ///< the arrival, counted in `arrivals_`
    };

    void live();
    void carryOut(Member& self, const Action& action, unsigned skew);
    void meet(Member& self);

    Member members_[2];
    std::atomic<unsigned> arrivals_{0};
    const Action* action_ = nullptr; ///< of the second thread, for the next round; null: it ends
    int rounds_ = 0;
    std::thread second_;
};
