// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/protocol/Event.h"
#include "simulator/server/Stillness.h"

#include <chrono>
#include <functional>
#include <optional>

namespace hxsim {

class EventStream;
class RunningUnit;
class Sessions;

/// Advances a unit's virtual time: to the next deadline of the hardware, the programs and the clients, whenever all
/// programs wait. Whatever is due wakes one thread or client, and nothing more happens until all of them wait again:
/// so a run is the same every time. At one moment the hardware comes first, then the programs, then the clients.
class TimeKeeper {
public:
    /// Called while a program keeps the time from passing.
    using Report = std::function<void(const Event&)>;

    TimeKeeper(RunningUnit& unit, Sessions& sessions, EventStream& events)
        : unit_{unit}, sessions_{sessions}, events_{events}
    {
    }

    void whenHeld(Report report) { report_ = std::move(report); }

    /// The machine's time until it must be called again; nothing: when something has arrived.
    [[nodiscard]] std::optional<std::chrono::nanoseconds> patience() const;
    /// A look at all connections has found something to do, and it is done.
    void somethingCame();
    /// A look at all connections has found nothing.
    void nothingCame();

private:
    using SteadyClock = std::chrono::steady_clock;

    [[nodiscard]] bool isWanted() const;
    [[nodiscard]] std::optional<Time> next() const;
    [[nodiscard]] std::optional<ThreadState> look();
    [[nodiscard]] std::uint64_t answers() const;
    void pass();
    bool wakeOne();
    void begin();
    void reportIfLate(const std::optional<ThreadState>& running);
    void lookAtBusyPrograms();

    RunningUnit& unit_;
    Sessions& sessions_;
    EventStream& events_;
    Report report_{};
    Stillness stillness_{};
    bool isStill_ = false;       ///< all programs waited at the last look, and nothing has come since
    std::uint64_t answered_ = 0; ///< answers until that look
    bool isEndless_ = false;     ///< what they wait for does not come with time
    bool wasWanted_ = false;
    std::chrono::nanoseconds pause_{0};
    SteadyClock::time_point passed_ = SteadyClock::now(); ///< when time has last passed, or no program ran
    int reported_ = 0;                                    ///< seconds
    SteadyClock::time_point looked_ = SteadyClock::now(); ///< at programs while nobody waits for time
};

} // namespace hxsim
