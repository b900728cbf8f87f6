// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Unit.h"
#include "simulator/protocol/Event.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace hxsim {

/// Observes a unit and publishes what happens on it, in order and numbered. Costs nothing while nobody follows.
class EventSource {
public:
    using Publish = std::function<void(const Event&)>;

    EventSource(Unit& unit, Publish publish);
    EventSource(const EventSource&) = delete;
    EventSource& operator=(const EventSource&) = delete;
    ~EventSource();

    /// Changes of these properties are published from now on.
    void watch(const std::set<std::string>& properties);
    /// Whether anything is published at all.
    void setFollowed(bool followed) { followed_ = followed; }
    /// Publishes the properties that have changed since the last time.
    void look();

    void joined(int process, const std::string& program);
    void left(int process);
    [[nodiscard]] const std::map<int, std::string>& programs() const { return programs_; }
    void printed(int process, const std::string& program, const std::string& line);
    /// A call of the journal as an event without a number.
    [[nodiscard]] static Event eventOf(const Entry& entry);

private:
    /// A property and its value at the last look. Properties live as long as their unit.
    struct Watched {
        const Properties::Property* property;
        std::string value;
    };

    void publish(Event event);
    void lookAgainLater();

    Unit& unit_;
    Publish publish_;
    bool followed_ = false;
    bool looking_ = false;
    std::uint64_t number_ = 0;
    std::map<std::string, Watched> watched_;
    std::map<int, std::string> programs_; ///< those that have joined
    std::optional<Clock::Key> nextLook_;
};

} // namespace hxsim
