// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/server/EventStream.h"
#include "simulator/server/Loop.h"
#include "simulator/server/Ramps.h"
#include "simulator/server/RunningUnit.h"
#include "simulator/server/Sessions.h"

#include <functional>
#include <map>
#include <string>

namespace hxsim {

/// The server of a unit: the unit, the sessions of the programs that use it, the event stream, and the loop
/// that serves them.
class Host {
public:
    /// Throws std::runtime_error when the unit cannot be started.
    Host(const std::string& unit, Pace pace);

    RunningUnit& running() { return running_; }
    Unit& unit() { return running_.unit(); }
    Ramps& ramps() { return ramps_; }
    /// The programs that use the unit, by their process.
    [[nodiscard]] const std::map<int, std::string>& programs() { return events_.source().programs(); }
    [[nodiscard]] const std::string& folder() const { return running_.folder(); }

    /// Serves programs until `stop` is called, or until `alsoWatched` becomes readable and `seen` says to end.
    void run(int alsoWatched, const std::function<bool()>& seen) { loop_.run(alsoWatched, seen); }
    void stop() { loop_.stop(); }
    /// Called while a program keeps virtual time from passing.
    void whenHeld(TimeKeeper::Report report) { held_ = std::move(report); }
    /// Sends new journal entries to this connection, as lines or as JSON.
    void follow(int connection, bool asJson) { sessions_.at(connection).follow(asJson); }

private:
    RunningUnit running_;
    Ramps ramps_{running_.unit()};
    EventStream events_;
    Sessions sessions_;
    Loop loop_;
    TimeKeeper::Report held_{};
};

} // namespace hxsim
