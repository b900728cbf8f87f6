// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Condition.h"
#include "simulator/protocol/Event.h"

#include <deque>
#include <map>
#include <optional>
#include <string>

namespace hxsim {

enum class Verdict { Pending, Met, Failed };

/// Decides one expectation from the events of a unit, in their order, and its time. It has no clock and no connection:
/// the same events always give the same verdict.
class Evaluation {
public:
    using Values = std::map<std::string, std::string>;

    /// `values` are those of the properties at the time `start`.
    Evaluation(Expectation expectation, Time start, const Values& values);

    void feed(const Event& event);
    /// All events up to this time have been fed.
    void advance(Time now);
    /// No event follows: what has not happened until now has not happened.
    void conclude(Time now);

    [[nodiscard]] Verdict verdict() const { return verdict_; }
    [[nodiscard]] Time decidedAt() const { return decidedAt_; }
    /// The time at which it is decided if nothing happens until then.
    [[nodiscard]] std::optional<Time> deadline() const;
    /// What was seen: "backlight.level was 128, then 90".
    [[nodiscard]] std::string seen() const;

private:
    void decide(Verdict verdict, Time time);
    void start(Time time);
    void change(const Event& event);
    void remember(const Event& event);
    /// The verdict at the deadline.
    [[nodiscard]] Verdict atDeadline() const;

    Expectation expectation_;
    Time start_;
    Time since_; ///< the condition holds since then
    bool holds_ = false;
    Verdict verdict_ = Verdict::Pending;
    Time decidedAt_{0};
    std::deque<std::string> seen_; ///< the last values or lines
    bool forgotten_ = false;       ///< there were more
};

} // namespace hxsim
