// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace hxpanel {

using Milliseconds = std::chrono::milliseconds;
using SteadyTime = std::chrono::steady_clock::time_point;

/// Waits for descriptors and times. The whole server runs in this one thread, so that nothing needs a lock.
class Loop {
public:
    using Work = std::function<void()>;
    using Timer = std::uint64_t; ///< 0: none

    Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    /// Calls `work` whenever one of these EPOLL... events is on the descriptor, until it is forgotten. Watching again
    /// changes the events and the work.
    void watch(int fd, std::uint32_t events, Work work);
    void forget(int fd);
    Timer after(Milliseconds time, Work work);
    void cancel(Timer timer);

    /// Called in every round, after the descriptors and timers; returns for how long the loop may wait at most.
    void inEachRound(std::function<Milliseconds()> work) { round_ = std::move(work); }
    void run();
    void stop() { stopping_ = true; }

private:
    void runTimers();
    [[nodiscard]] int patience(Milliseconds most) const;

    struct Due {
        Timer number;
        Work work;
    };

    int epoll_;
    bool stopping_ = false;
    Timer timers_ = 0;
    std::map<int, std::shared_ptr<Work>> watched_{};
    std::multimap<SteadyTime, Due> due_{};
    std::function<Milliseconds()> round_{};
};

} // namespace hxpanel
