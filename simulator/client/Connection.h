// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Condition.h"
#include "simulator/client/EventSocket.h"
#include "simulator/protocol/Event.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace hxsim {

/// Waits until a descriptor can be read, at most so long; a negative time is endless. Calls the handler of
/// Connection::onSignal.
bool canBeRead(int fd, int patienceMs);

/// A connection to the event socket of a running unit. One thread at a time uses it.
class Connection {
public:
    /// Throws UnitGone, and BadUsage for a name that no unit can have.
    explicit Connection(const std::string& unit);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    struct Answer {
        std::string text{};
        Time time{0};
        std::map<std::string, std::string> values{}; ///< of the properties that are followed from now on
    };
    /// Sends a command and waits for its answer; events that come before it are kept. Throws BadText with the unit's
    /// message when it refuses.
    Answer command(const std::vector<std::string>& words);

    /// The next event; waits for it. Throws UnitGone when no further one comes.
    Event next();
    /// Waits call this when a signal has interrupted them, and at least twice a second. It may throw.
    static void onSignal(std::function<void()> handler);

    /// The next event that has already been received.
    std::optional<Event> received();

private:
    /// One line from the unit.
    std::string line(int patienceMs);

    int fd_;
    std::string unread_{};
    std::deque<Event> events_{};
    long id_ = 0;
};

/// The names of a running unit.
Vocabulary vocabularyOf(const std::string& unit);

} // namespace hxsim
