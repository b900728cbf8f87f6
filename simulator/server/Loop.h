// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/server/EventStream.h"
#include "simulator/server/Sessions.h"
#include "simulator/server/TimeKeeper.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace hxsim {

/// Waits for connections, messages and the unit's time, in one thread.
class Loop {
public:
    /// Listens at this path. Throws std::runtime_error when it cannot.
    Loop(const std::string& socket, RunningUnit& unit, Sessions& sessions, EventStream& events);
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop();

    /// Serves programs until `stop` is called, or until `alsoWatched` becomes readable and `seen` says to end.
    void run(int alsoWatched, const std::function<bool()>& seen);
    void stop() { stopping_ = true; }
    TimeKeeper& timeKeeper() { return timeKeeper_; }

private:
    void accept();
    /// The machine's time until something has to be done without a message; nothing when there is no such time.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> patience();
    /// Handles requests in mailboxes for as long as they keep coming, but for no longer than a message on a connection
    /// may wait. Whether the loop may wait now.
    bool serveMailboxes();
    /// After a request.
    void finish();
    /// After a look at all connections: what was ready.
    void keepTime(int ready);

    RunningUnit& unit_;
    Sessions& sessions_;
    EventStream& events_;
    TimeKeeper timeKeeper_{unit_, sessions_, events_};
    const int listener_;
    bool stopping_ = false;
    bool full_ = false; ///< no descriptor is left for another connection
};

} // namespace hxsim
