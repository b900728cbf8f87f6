// SPDX-License-Identifier: LicenseRef-HXAux
// Signals that would end the tool at a moment when it must not end.
#ifndef HXAUX_SIGNALS_H
#define HXAUX_SIGNALS_H

#include "tools/hxaux/Verb.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace hxaux {

// Holds INT, TERM and HUP back while it lives: the library acquires named semaphores that nobody releases for a program
// that died. What arrived meanwhile takes effect when the object ends. Threads started meanwhile never see them. A
// reader of the output that goes away (PIPE) ends the program no earlier either. What the caller told the tool to
// ignore stays ignored.
//
// A thread that only waits for a lock holds none yet, and may wait forever when the lock is stale: a signal ends the
// program then, once it has waited half a second more. What it holds besides is released first: `beforeTheEnd`.
//
// Several may live at once, in the main thread; they need not end in the opposite order. The last one lets go.
class HeldSignals {
public:
    HeldSignals();

    // Takes a signal that was held back, waiting up to a time for it; nothing when none came. It has no effect then.
    [[nodiscard]] std::optional<int> take(std::chrono::milliseconds wait = {}) const;
    // The same for a signal that still takes effect at the end: the program is to come to its end in order.
    [[nodiscard]] std::optional<int> await(std::chrono::milliseconds wait = {}) const;
    // What another thread does before a signal ends a program that waits for a lock; an empty function: nothing more.
    // When this returns the former one is not at work.
    void beforeTheEnd(std::function<void()> release) const;

private:
    class Hold;

    std::shared_ptr<Hold> hold_;
};

// The exit status of a program that this signal ended, as a shell has it.
Exit exitOf(int signal);

} // namespace hxaux

#endif
