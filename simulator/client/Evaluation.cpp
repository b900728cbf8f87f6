// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/Evaluation.h"

#include "simulator/model/Text.h"

#include <utility>

namespace hxsim {

namespace {

constexpr std::size_t kShown = 5;

} // namespace

Evaluation::Evaluation(Expectation expectation, Time start, const Values& values)
    : expectation_{std::move(expectation)}, start_{start}, since_{start}
{
    const Condition& condition = expectation_.condition;
    if (!condition.lasts())
        return;
    const auto found = values.find(condition.subject);
    if (found == values.end())
        throw BadText{"the unit has no property '" + condition.subject + "'"};
    seen_.push_back(found->second);
    holds_ = condition.holdsFor(found->second);
    this->start(start);
}

void Evaluation::start(Time time)
{
    const bool waits = expectation_.within.has_value();
    if (expectation_.never) {
        if (holds_)
            decide(Verdict::Failed, time);
    } else if (expectation_.stays) {
        if (!holds_ && !waits)
            decide(Verdict::Failed, time);
    } else if (holds_ || !waits) {
        decide(holds_ ? Verdict::Met : Verdict::Failed, time);
    }
}

void Evaluation::decide(Verdict verdict, Time time)
{
    verdict_ = verdict;
    decidedAt_ = time;
}

std::optional<Time> Evaluation::deadline() const
{
    if (verdict_ != Verdict::Pending)
        return std::nullopt;
    if (expectation_.stays && (holds_ || !expectation_.within))
        return since_ + *expectation_.stays;
    if (expectation_.within)
        return start_ + *expectation_.within;
    return std::nullopt;
}

Verdict Evaluation::atDeadline() const
{
    return expectation_.never || (expectation_.stays && holds_) ? Verdict::Met : Verdict::Failed;
}

void Evaluation::advance(Time now)
{
    if (const std::optional<Time> end = deadline(); end && now >= *end)
        decide(atDeadline(), *end);
}

void Evaluation::conclude(Time now)
{
    advance(now);
    if (verdict_ == Verdict::Pending)
        decide(expectation_.never ? Verdict::Met : Verdict::Failed, now);
}

void Evaluation::feed(const Event& event)
{
    if (const std::optional<Time> end = deadline(); end && event.time > *end)
        decide(atDeadline(), *end);
    if (verdict_ != Verdict::Pending)
        return;
    const Condition& condition = expectation_.condition;
    if (condition.lasts() && event.kind == Event::Kind::Property && event.subject == condition.subject)
        return change(event);
    remember(event);
    if (condition.happensWith(event))
        decide(expectation_.never ? Verdict::Failed : Verdict::Met, event.time);
}

/// The property has a new value.
void Evaluation::change(const Event& event)
{
    seen_.push_back(event.text);
    if (seen_.size() > kShown) {
        seen_.pop_front();
        forgotten_ = true;
    }
    const bool held = std::exchange(holds_, expectation_.condition.holdsFor(event.text));
    if (expectation_.stays && !expectation_.never) {
        if (holds_ && !held)
            since_ = event.time;
        const bool isTooLate = !expectation_.within || event.time > start_ + *expectation_.within;
        if (!holds_ && isTooLate)
            decide(Verdict::Failed, event.time);
    } else if (holds_) {
        decide(expectation_.never ? Verdict::Failed : Verdict::Met, event.time);
    }
}

/// What could have been meant, for the message.
void Evaluation::remember(const Event& event)
{
    const Condition& condition = expectation_.condition;
    const bool isCall = event.kind == Event::Kind::Request;
    if (condition.kind == Condition::Kind::Request && isCall &&
        (condition.subject == "*" || condition.subject == event.subject))
        seen_.push_back((condition.subject == "*" ? event.subject + ' ' : "") + event.text);
    else if (condition.kind == Condition::Kind::Log && isCall)
        seen_.push_back(event.subject + ' ' + event.text);
    else if (condition.kind == Condition::Kind::Output && event.kind == Event::Kind::Output)
        seen_.push_back(event.text);
    if (seen_.size() > kShown) {
        seen_.pop_front();
        forgotten_ = true;
    }
}

std::string Evaluation::seen() const
{
    const Condition& condition = expectation_.condition;
    std::string list;
    for (const std::string& text : seen_)
        list += (list.empty()        ? ""
                 : condition.lasts() ? ", then "
                                     : "; ") +
                (text.empty()                                ? "empty"
                 : condition.kind == Condition::Kind::Output ? inQuotes(text)
                                                             : text);
    if (forgotten_)
        list = "... " + list;
    switch (condition.kind) {
    case Condition::Kind::Property:
        return condition.subject + " was " + list;
    case Condition::Kind::Request: {
        const std::string where = condition.subject == "*" ? "" : " on " + condition.subject;
        return list.empty() ? "there was no call" + where : "the last calls" + where + " were: " + list;
    }
    case Condition::Kind::Output:
        return list.empty() ? "there was no output" : "the last output was: " + list;
    default:
        return list.empty() ? "the log had no new line" : "the last lines were: " + list;
    }
}

} // namespace hxsim
