// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/Follower.h"

#include "simulator/protocol/EventJson.h"

#include <algorithm>
#include <cstdlib>

namespace hxsim {

namespace {

using Command = std::vector<std::string>;

/// More events than this after one action: the oldest are forgotten.
constexpr std::size_t kMostKept = 200000;

/// Longer than this no program computes.
constexpr int kPatienceSeconds = 30;
/// Later than any unit runs.
constexpr Time kNever = std::chrono::hours{24 * 365 * 100};

void giveUpIfLate(const Event& held)
{
    if (std::atoi(held.old.c_str()) >= kPatienceSeconds)
        throw TimeHeld{textOfHeld(held)};
}

Finding findingOf(const Evaluation& evaluation)
{
    return {.met = evaluation.verdict() == Verdict::Met, .time = evaluation.decidedAt(), .seen = evaluation.seen()};
}

/// The process waits until this time of the unit, as long as this exists.
class Alarm {
public:
    Alarm(Connection& connection, Time time) : connection_{connection}
    {
        (void)connection_.command({"alarm", std::to_string(time.count())});
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
    ~Alarm()
    {
        try {
            (void)connection_.command({"alarm"});
        } catch (...) { // the unit has gone, and its alarms with it
        }
    }

private:
    Connection& connection_;
};

} // namespace

TimePassing::TimePassing(const std::string& unit)
{
    try {
        connection_.emplace(unit);
        (void)connection_->command({"take-part"});
        (void)connection_->command({"alarm", std::to_string(kNever.count())});
    } catch (const UnitGone&) {
        connection_.reset();
    }
}

void TimePassing::check()
{
    if (!connection_)
        return;
    try {
        (void)connection_->command({"scale"});
    } catch (const UnitGone&) {
        return connection_.reset();
    }
    while (const std::optional<Event> event = connection_->received())
        if (event->kind == Event::Kind::Held)
            giveUpIfLate(*event);
}

Follower::Follower(const std::string& unit, const Command& properties, Observer observer, Sleeps sleeps)
    : unit_{unit}, connection_{unit}, properties_{properties}, sleeps_{sleeps}, observer_{std::move(observer)}
{
    (void)connection_.command({"take-part"});
    const Connection::Answer answer = followAll();
    values_ = answer.values;
    marked_ = answer.time;
}

void Follower::follow(const std::string& property)
{
    if (values_.contains(property))
        return;
    properties_.push_back(property);
    values_[property] = followAll().values[property];
}

Connection::Answer Follower::followAll()
{
    Command words{"events"};
    if (sleeps_ == Sleeps::Ignored)
        words.emplace_back("--without-sleeps");
    words.insert(words.end(), properties_.begin(), properties_.end());
    return connection_.command(words);
}

std::string Follower::act(const Command& words)
{
    const Connection::Answer answer = connection_.command(words);
    // What has come until the answer is older than the action, or the action itself.
    while (const std::optional<Event> event = connection_.received())
        keep(*event);
    forget(events_.size());
    marked_ = answer.time;
    return answer.text;
}

std::string Follower::ask(const Command& words)
{
    return connection_.command(words).text;
}

Time Follower::now()
{
    return synchronize();
}

Time Follower::synchronize()
{
    const Time now = connection_.command({"scale"}).time;
    while (const std::optional<Event> event = connection_.received())
        keep(*event);
    return now;
}

void Follower::keep(const Event& event)
{
    if (event.kind == Event::Kind::Alarm)
        return;
    if (observer_)
        observer_(event);
    if (event.kind == Event::Kind::Held)
        return giveUpIfLate(event);
    if (event.kind == Event::Kind::Output)
        output_.push_back(event);
    if (output_.size() > kMostKept)
        output_.pop_front();
    events_.push_back(event);
    if (events_.size() > kMostKept)
        forget(1);
}

/// The oldest events become part of the values.
void Follower::forget(std::size_t events)
{
    for (; events > 0; --events, events_.pop_front())
        if (events_.front().kind == Event::Kind::Property)
            values_[events_.front().subject] = events_.front().text;
}

void Follower::mark()
{
    marked_ = synchronize();
    forget(events_.size());
}

void Follower::mark(const Finding& finding)
{
    const auto isLater = [&](const Event& event) { return event.number > finding.number; };
    forget(static_cast<std::size_t>(std::ranges::find_if(events_, isLater) - events_.begin()));
    marked_ = std::max(marked_, finding.time);
}

/// In what has happened until now.
Finding Follower::search(const Expectation& expectation) const
{
    Connection past{unit_};
    (void)past.command({"events", "--past"});
    const Time now = past.command({"scale"}).time;
    Evaluation evaluation{expectation, Time{0}, {}};
    while (const std::optional<Event> event = past.received())
        evaluation.feed(*event);
    for (const Event& event : output_)
        evaluation.feed(event);
    evaluation.conclude(now);
    return findingOf(evaluation);
}

Finding Follower::check(const Expectation& expectation)
{
    const bool isNow = !expectation.within && !expectation.stays;
    if (expectation.condition.lasts())
        follow(expectation.condition.subject);
    const Time now = synchronize();
    if (isNow && !expectation.condition.lasts())
        return search(expectation);
    if (isNow) {
        Evaluation::Values current = values_;
        for (const Event& event : events_)
            if (event.kind == Event::Kind::Property)
                current[event.subject] = event.text;
        return findingOf(Evaluation{expectation, now, current});
    }
    Evaluation evaluation{expectation, marked_, values_};
    std::uint64_t decider = 0;
    for (auto event = events_.begin(); event != events_.end() && evaluation.verdict() == Verdict::Pending; ++event) {
        evaluation.feed(*event);
        decider = event->number;
    }
    if (evaluation.verdict() == Verdict::Pending)
        evaluation.advance(now);
    wait(evaluation, decider);
    Finding finding = findingOf(evaluation);
    finding.number = decider;
    return finding;
}

/// Feeds the evaluation until it is decided; `decider` is the number of the last event that it got.
void Follower::wait(Evaluation& evaluation, std::uint64_t& decider)
{
    while (const std::optional<Time> deadline = evaluation.deadline()) {
        const Alarm alarm{connection_, *deadline};
        // A "for" that begins again has a later deadline; otherwise the alarm decides.
        while (evaluation.deadline() == deadline) {
            const Event event = connection_.next();
            keep(event);
            decider = std::max(decider, event.number);
            if (event.kind == Event::Kind::Alarm)
                evaluation.advance(event.time);
            else
                evaluation.feed(event);
        }
    }
}

void Follower::sleepUntil(Time end)
{
    const Alarm alarm{connection_, end};
    for (Time now{0}; now < end;) {
        const Event event = connection_.next();
        keep(event);
        now = event.kind == Event::Kind::Alarm ? event.time : Time{0};
    }
    forget(events_.size());
    marked_ = end;
}

} // namespace hxsim
