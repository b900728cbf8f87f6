// SPDX-License-Identifier: LicenseRef-HXAux
// Signals that would end the tool at a moment when it must not end.
#ifndef HXAUX_SIGNALS_H
#define HXAUX_SIGNALS_H

#include <chrono>
#include <csignal>
#include <optional>

namespace hxaux {

// Holds INT, TERM and HUP back while it lives: the library takes named semaphores that nobody gives back for a program
// that died. What arrived meanwhile takes effect when the object ends. Threads started meanwhile never see them.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    // Takes a signal that was held back, waiting up to a time for it; nothing when none came.
    [[nodiscard]] std::optional<int> take(std::chrono::milliseconds wait = {}) const;

private:
    sigset_t held_{};
    sigset_t before_{};
};

} // namespace hxaux

#endif
