// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Mailbox.h"

#include <chrono>
#include <vector>

namespace hxsim {

class Session;

/// The mailboxes in use: after a request the server watches them for as long as the next one is likely to come.
class Mailboxes {
public:
    using Clock = std::chrono::steady_clock;

    /// The session's program has posted a request and found nobody watching.
    void rung(Session& session);
    void remove(const Session& session);

    /// Whether any is watched.
    [[nodiscard]] bool areWatched() const { return !watched_.empty(); }
    /// Handles what was posted; false when nothing was.
    bool serve();
    /// Whether it is time to wait instead: nothing comes, or other programs need the processor.
    [[nodiscard]] bool shouldRest(Clock::time_point now);
    /// From now on programs have to ring. Handles what was posted before; false when nothing was.
    bool stopWatching();

private:
    /// Whether other programs have taken the processor since the last time this was asked.
    bool wasInterrupted();

    std::vector<Session*> watched_;
    Patience patience_;
    std::chrono::nanoseconds looking_{0}; ///< this time
    Clock::time_point served_{};
    bool hasPaid_ = false; ///< a request came without ringing, and nobody else needed the processor
    Clock::time_point asked_{};
    long interruptions_ = 0; ///< so far
};

} // namespace hxsim
