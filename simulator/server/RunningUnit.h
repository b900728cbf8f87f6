// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/file/UnitCalls.h"
#include "simulator/model/Unit.h"
#include "simulator/protocol/ClockPage.h"
#include "simulator/protocol/UnitFolder.h"
#include "simulator/record/Recorder.h"
#include "simulator/server/KeptMemory.h"

#include <chrono>
#include <memory>
#include <string>

namespace hxsim {

/// How a unit's time passes: by the clock of the machine, `scale` times as fast, or in jumps while no program runs.
struct Pace {
    double scale = 1;
    bool isVirtual = false;
};

/// A unit while programs can use it: its directory, its time, what answers the calls on it, and a recording of them.
class RunningUnit {
public:
    /// Throws std::runtime_error when the unit cannot be started.
    RunningUnit(const std::string& name, Pace pace);

    /// Throws BadText for a bad description.
    void describe(const std::string& text) { unit_.describe(text); }
    /// From now on the contents of the unit's memories are kept in this directory.
    void keepIn(const std::string& folder) { kept_ = std::make_unique<KeptMemory>(unit_, folder); }
    /// Writes the changes of these memories.
    void keep();
    /// From now on this source answers the calls of programs, not the model.
    void answerWith(std::unique_ptr<Calls> source) { calls_ = std::make_unique<UnitCalls>(unit_, std::move(source)); }
    /// Programs find the machine's files and semaphores, or those of the unit that this program itself runs on.
    void withdraw();

    Unit& unit() { return unit_; }
    UnitCalls& calls() { return *calls_; }
    [[nodiscard]] const std::string& folder() const { return folder_.path(); }
    [[nodiscard]] double scale() const { return pace_.scale; }
    [[nodiscard]] bool isVirtual() const { return pace_.isVirtual; }
    /// What programs find at which path, in the lines that wire::Hello describes.
    [[nodiscard]] std::string pathList();

    /// The unit's time; unless it is virtual, by the clock of the machine.
    [[nodiscard]] Time now() const;
    /// Brings the unit to that time.
    void advance() { advanceTo(now()); }
    void advanceTo(Time time);
    /// The machine's time until this time of the unit, which is not virtual; 0 when it has passed.
    [[nodiscard]] std::chrono::nanoseconds until(Time time) const;

    /// Records the calls of this process and its children to a file from now on. The owner is a session, or -1 for this
    /// program itself.
    void record(int owner, const std::string& file, int process);
    /// Stops the owner's recording; returns the number of calls.
    std::size_t endRecord(int owner);

private:
    /// The initial state of the unit that a replay needs.
    [[nodiscard]] Recording recordingHead();

    Pace pace_;
    UnitFolder folder_;
    std::unique_ptr<ClockPage> clockPage_; ///< of virtual time
    Time shown_{0};
    Unit unit_;
    std::unique_ptr<KeptMemory> kept_;
    std::unique_ptr<UnitCalls> calls_ = std::make_unique<UnitCalls>(unit_);
    std::unique_ptr<Recorder> recorder_;
    int recorderOwner_ = -1;
    std::string files_;      ///< directory that contains the unit's files under their own paths
    std::string semaphores_; ///< mark of the unit whose semaphores programs get; empty: the machine's
    bool withdrawn_ = false;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace hxsim
