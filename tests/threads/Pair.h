// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <atomic>
#include <functional>
#include <thread>

/// Two threads that do two things at the same time, over and over: the caller's own, and one of this object.
///
/// They wait for each other awake, so that they start together; one that waits long sleeps in the unit's time, because
/// the other may sleep there too.
class Pair {
public:
    using Deed = std::function<void()>;

    Pair() : second_{[this] { live(); }} {}
    ~Pair();
    Pair(const Pair&) = delete;
    Pair& operator=(const Pair&) = delete;

    void run(const Deed& first, const Deed& second, int rounds);

private:
    void live();
    void carryOut(const Deed& deed, unsigned skew);
    void meet();

    std::atomic<unsigned> arrivals_{0};
    const Deed* deed_ = nullptr; ///< of the second thread, between two meetings; null: it ends
    int rounds_ = 0;
    std::thread second_;
};
