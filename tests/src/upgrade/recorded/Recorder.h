// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/TestTable.h"
#include "upgrade/IFlasher.h"

#include <string>
#include <vector>

/// Sees every status that a flasher publishes, in order and without gaps: this program replaces the semaphores, and
/// posting the status signal records it.
class Recorder {
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void attach(Halvix::IFlasher& flasher);
    /// From now on waiting for the status lock fails.
    void breakLock() { lockIsBroken_ = true; }

    /// "action percent" each, followed by "!error" if there is one.
    [[nodiscard]] const std::vector<std::string>& published() const { return published_; }
    /// The same, with runs of rising percents of one action shortened to "action first..last".
    [[nodiscard]] std::string story() const;
    void clear() { published_.clear(); }
    [[nodiscard]] int runsReleased() const { return runsReleased_; }

    bool wait(int semaphore);
    void post(int semaphore);

private:
    Halvix::SharedStatus status_;
    Halvix::Semaphore run_{nullptr};
    std::vector<std::string> published_;
    bool locked_ = false;
    bool lockIsBroken_ = false;
    int runsReleased_ = 0;
};

/// What a run came to, and the story of its status.
struct Outcome {
    Halvix::eErr result;
    std::string story;
};

/// One run with a file, upgrade or verification.
Outcome record(Halvix::IFlasher& flasher, const std::string& file, Halvix::IFlasher::Task task);

/// A run on a unit that a description makes.
struct StatusRow {
    TestName name;
    const char* description;
    std::string content; ///< of the file
    Halvix::eErr result;
    std::string story;
    Halvix::IFlasher::Task task = Halvix::IFlasher::Task::Program;
};
void checkRun(Halvix::IFlasher& flasher, const StatusRow& row);
