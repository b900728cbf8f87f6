// SPDX-License-Identifier: LicenseRef-HXAux
// Defers signals while the tool must not end.
#pragma once

#include "tools/hxaux/Verb.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace hxaux {

/// Defers INT, TERM and HUP during its lifetime: no other program releases the named semaphores that the library
/// acquires if this program dies. Signals received meanwhile take effect when the object ends. Threads started
/// meanwhile never receive them. PIPE is deferred too. Signals that the caller ignores stay ignored.
//
/// A thread that only waits for a lock holds none yet, and may wait forever when the lock is stale: a signal ends the
/// program then, after waiting half a second more. Other locks that it holds are released first: `beforeTheEnd`.
//
/// Several may exist at once, in the main thread, and may end in any order. The last one restores the signals.
class HeldSignals {
public:
    HeldSignals();

    /// Takes a deferred signal, waiting up to a time for it; nothing when none arrived. The signal then has no effect.
    [[nodiscard]] std::optional<int> take(std::chrono::milliseconds wait = {}) const;
    /// The same, but the signal still takes effect at the end: the program ends cleanly first.
    [[nodiscard]] std::optional<int> await(std::chrono::milliseconds wait = {}) const;
    /// Runs in another thread before a signal ends a program that waits for a lock; an empty function removes it.
    /// When this returns, the former function is not running.
    void beforeTheEnd(std::function<void()> release) const;

    /// From now on a wait for a lock of this length ends the program: `end` is called in another thread, after the
    /// former function.
    static void limitWaits(std::chrono::duration<double> limit, std::function<void()> end);

private:
    class Hold;

    std::shared_ptr<Hold> hold_;
};

/// The exit status of a program that this signal ended, as a shell has it.
Exit exitOf(int signal);

} // namespace hxaux
