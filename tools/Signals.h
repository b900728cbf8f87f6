// SPDX-License-Identifier: LicenseRef-HXAux
// Signals that would end the tool at a moment when it must not end.
#ifndef HXAUX_SIGNALS_H
#define HXAUX_SIGNALS_H

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <optional>
#include <sys/types.h>
#include <thread>

namespace hxaux {

// Holds INT, TERM and HUP back while it lives: the library takes named semaphores that nobody gives back for a program
// that died. What arrived meanwhile takes effect when the object ends. Threads started meanwhile never see them.
//
// A thread that only waits for a lock holds none yet, and may wait for ever when the lock is stale: a signal ends the
// program then, once it has waited half a second more.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    // Takes a signal that was held back, waiting up to a time for it; nothing when none came.
    [[nodiscard]] std::optional<int> take(std::chrono::milliseconds wait = {}) const;

private:
    void endWhenStuck();

    sigset_t held_{};
    sigset_t before_{};
    pid_t holder_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool end_ = false;
    std::thread observer_;
};

} // namespace hxaux

#endif
