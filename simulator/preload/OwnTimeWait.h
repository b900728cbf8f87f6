// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/preload/Connections.h"
#include "simulator/protocol/Messages.h"

#include <cstdint>

namespace hxsim {

/// A thread's wait for the unit's virtual time. Whoever leaves it before ends it. A signal's handler that runs during
/// the wait uses the unit as anywhere else.
class OwnTimeWait {
public:
    OwnTimeWait(Connections& connections, const wire::Sleep& sleep);
    OwnTimeWait(const OwnTimeWait&) = delete;
    OwnTimeWait& operator=(const OwnTimeWait&) = delete;
    ~OwnTimeWait();

    /// Waits for the end: 0, or -EINTR after a signal, with the time left in `rest` unless it is null; or another
    /// -errno when the unit cannot be reached.
    int finish(std::int64_t* rest);
    [[nodiscard]] bool hasFailed() const { return state_ == State::Failed; }
    /// Whether the time has come, or the unit has stopped.
    bool isOver();

private:
    enum class State { Waits, Answered, Failed };

    void cancel();
    int receive(std::int64_t* rest);

    Connections& connections_;
    Connections::Connection once_{};
    Connections::Connection& connection_;
    const bool isWatched_;
    State state_ = State::Waits;
    int error_ = 0;
};

} // namespace hxsim
