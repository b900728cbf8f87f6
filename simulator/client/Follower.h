// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Connection.h"
#include "simulator/client/Evaluation.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace hxsim {

/// Virtual time has not passed for so long that nothing is to be expected any more; what() says which program runs.
class TimeHeld : public BadText {
public:
    using BadText::BadText;
};

/// Virtual time passes while this exists, although the process waits for something else than the unit.
class TimePassing {
public:
    /// A unit that has stopped has no time; this is no error.
    explicit TimePassing(const std::string& unit);
    /// Throws TimeHeld when time has not passed for too long.
    void check();

private:
    std::optional<Connection> connection_{};
};

/// What an expectation came to.
struct Finding {
    bool met = false;
    Time time{0};             ///< of the unit, when it was decided
    std::uint64_t number = 0; ///< of the event that decided it; 0: none did
    std::string seen{};
};

/// Checks expectations on a running unit. Virtual time passes only while this program waits in here. Their time begins
/// with the last action, so that nothing which the action causes is missed, however late the expectation is checked.
class Follower {
public:
    using Observer = std::function<void(const Event&)>;

    /// Programs sleep often: who expects nothing of it does not follow it.
    enum class Sleeps { Followed, Ignored };

    /// Follows these properties from the beginning. `observer` is called with each event, when it is read.
    Follower(const std::string& unit, const std::vector<std::string>& properties, Observer observer = {},
             Sleeps sleeps = Sleeps::Followed);

    /// An action on the unit, in the words of hx-sim: {"set", "light = 250"}. Throws BadText when the unit refuses.
    std::string act(const std::vector<std::string>& words);
    /// A question that changes nothing: {"get", "light"}.
    std::string ask(const std::vector<std::string>& words);
    /// Waits until it is decided. A call without a time counts when it is in the unit's log, a line when it was printed
    /// since this object exists.
    Finding check(const Expectation& expectation);
    /// Waits until the unit's time; the time of expectations begins then.
    void sleepUntil(Time time);
    [[nodiscard]] Time now();
    /// The time at which the time of expectations begins: that of the last action.
    [[nodiscard]] Time marked() const { return marked_; }
    /// The time of expectations begins now.
    void mark();
    /// The time of expectations begins where this one was decided.
    void mark(const Finding& finding);
    /// Follows one more property, from now on. An expectation follows those that it needs.
    void follow(const std::string& property);
    /// Of the followed properties, at the last action.
    [[nodiscard]] const Evaluation::Values& values() const { return values_; }

private:
    /// Reads what has arrived, up to now.
    Time synchronize();
    void keep(const Event& event);
    Connection::Answer followAll();
    void forget(std::size_t events);
    void wait(Evaluation& evaluation, std::uint64_t& decider);
    [[nodiscard]] Finding search(const Expectation& expectation) const;

    std::string unit_;
    Connection connection_;
    std::vector<std::string> properties_;
    Sleeps sleeps_;
    Evaluation::Values values_{}; ///< at the last action
    std::deque<Event> events_{};  ///< since then
    std::deque<Event> output_{};  ///< the lines so far
    Time marked_{0};
    Observer observer_;
};

} // namespace hxsim
