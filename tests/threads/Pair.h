// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <atomic>
#include <functional>
#include <thread>

/// Runs two actions at the same time, repeatedly: in the caller's thread and in one of this object.
///
/// They spin while they wait for each other, so that they start together; after a while they sleep in the unit's time,
/// because the other may sleep there too.
class Pair {
public:
    using Action = std::function<void()>;

    Pair() : second_{[this] { live(); }} {}
    ~Pair();
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    void run(const Action& first, const Action& second, int rounds);

private:
    void live();
    void carryOut(const Action& action, unsigned skew);
    void meet();

    std::atomic<unsigned> arrivals_{0};
    const Action* action_ = nullptr; ///< of the second thread, for the next round; null: it ends
    int rounds_ = 0;
    std::thread second_;
};
