// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/server/TimeKeeper.h"

#include "simulator/server/EventStream.h"
#include "simulator/server/RunningUnit.h"
#include "simulator/server/Sessions.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

/// Between two looks at programs that run.
constexpr std::chrono::nanoseconds kShortestPause = 20us;
constexpr std::chrono::nanoseconds kLongestPause = 2ms;
/// For which messages wait while timers of the hardware run.
constexpr std::chrono::nanoseconds kSlice = 2ms;
/// Between two looks at a line that drains, in the unit's time.
constexpr Time kDrainAgain = 1ms;
constexpr std::chrono::seconds kReportEvery = 5s;

std::string stateOf(const ThreadState& thread)
{
    switch (thread.state) {
    case 'T':
    case 't':
        return "is stopped";
    case 'D':
        return "waits for the machine";
    default:
        return "is running";
    }
}

} // namespace

std::optional<std::chrono::nanoseconds> TimeKeeper::patience() const
{
    const bool isNew = answers() != answered_;
    if (!isWanted())
        return kReportEvery; // one that waits by asking for the time waits forever
    if (isEndless_ && !isNew)
        return std::nullopt;
    return isStill_ || isNew ? 0ns : pause_;
}

/// Clients that take part decide how far time may pass; without one, it passes as long as programs wait for it.
bool TimeKeeper::isWanted() const
{
    return events_.awaitsAlarm() || (!events_.hasParticipants() && sessions_.anyWaits());
}

std::optional<Time> TimeKeeper::next() const
{
    std::optional<Time> least;
    const auto atMost = [&](std::optional<Time> time) {
        if (time)
            least = std::max(least ? std::min(*least, *time) : *time, unit_.now());
    };
    atMost(unit_.unit().clock().nextDeadline());
    atMost(sessions_.nextDeadline());
    atMost(sessions_.nextWake());
    if (sessions_.drains())
        atMost(unit_.now() + kDrainAgain);
    return least;
}

std::uint64_t TimeKeeper::answers() const
{
    return sessions_.answers() + events_.lines();
}

std::optional<ThreadState> TimeKeeper::look()
{
    if (const std::optional<Caller> unaware = sessions_.unaware())
        return ThreadState{unaware->process, unaware->thread, 'R'};
    std::vector<int> processes = sessions_.processes();
    std::ranges::copy(events_.participants(), std::back_inserter(processes));
    processes.push_back(getpid()); // a unit that belongs to a program has started it
    return stillness_.threadThatRuns(processes, [this](int thread) { return sessions_.sleeps(thread); });
}

void TimeKeeper::somethingCame()
{
    isStill_ = false;
    isEndless_ = false;
    pause_ = 0ns;
    begin();
    const Caller last = sessions_.lastCaller();
    if (!wasWanted_)
        return lookAtBusyPrograms();
    reportIfLate(ThreadState{last.process, last.thread, 'R'});
}

void TimeKeeper::nothingCame()
{
    begin();
    isStill_ = isStill_ && answers() == answered_;
    isEndless_ = isEndless_ && answers() == answered_;
    if (!wasWanted_)
        return lookAtBusyPrograms();
    if (isEndless_)
        return;
    if (isStill_)
        return pass();
    answered_ = answers();
    const std::optional<ThreadState> running = look();
    isStill_ = !running;
    if (isStill_)
        return; // until it has been seen that they have not sent anything before
    pause_ = std::clamp(2 * pause_, kShortestPause, kLongestPause);
    reportIfLate(running);
}

/// At one moment: the hardware's timers, with them what they answer; then a thread; then the clients.
bool TimeKeeper::wakeOne()
{
    return sessions_.wakeFirst() || events_.ringFirst();
}

void TimeKeeper::pass()
{
    const auto end = SteadyClock::now() + kSlice;
    const std::uint64_t before = answers();
    do {
        const std::optional<Time> time = next();
        const std::optional<Time> timer = unit_.unit().clock().nextDeadline();
        if ((!timer || *timer > unit_.now()) && wakeOne())
            break;
        isEndless_ = !time;
        if (isEndless_)
            break;
        unit_.advanceTo(*time);
        sessions_.retryWaiting();
    } while (answers() == before && SteadyClock::now() < end);
    isStill_ = answers() == before;
    answered_ = before;
    pause_ = 0ns;
    passed_ = SteadyClock::now();
    reported_ = 0;
}

/// The time for which programs keep it from passing counts from when somebody waits for it.
void TimeKeeper::begin()
{
    const bool wasWanted = std::exchange(wasWanted_, isWanted());
    if (wasWanted || !wasWanted_)
        return;
    passed_ = SteadyClock::now();
    reported_ = 0;
}

/// Nobody waits for time to pass. A program that runs at each look may do so by asking for the time again and again.
void TimeKeeper::lookAtBusyPrograms()
{
    const auto now = SteadyClock::now();
    if (now - looked_ < kReportEvery)
        return;
    looked_ = now;
    const std::optional<ThreadState> running = look();
    if (!running) {
        passed_ = now;
        reported_ = 0;
    }
    reportIfLate(running);
}

void TimeKeeper::reportIfLate(const std::optional<ThreadState>& running)
{
    const auto late = std::chrono::duration_cast<std::chrono::seconds>(SteadyClock::now() - passed_);
    if (late.count() < reported_ + kReportEvery.count() || !report_ || !running)
        return;
    reported_ = static_cast<int>(late.count());
    report_({.kind = Event::Kind::Held,
             .time = unit_.now(),
             .subject = nameOfProcess(running->process),
             .text = stateOf(*running),
             .old = std::to_string(late.count()),
             .process = running->process,
             .thread = running->thread});
}

} // namespace hxsim
