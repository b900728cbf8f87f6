// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/IFlasher.h"

#include <string>
#include <vector>

/// Sees every status that a flasher publishes, in order and without a gap: this program brings its own semaphores, and
/// posting the status signal takes the record down.
class Recorder {
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void attach(Halvix::IFlasher& flasher);
    /// From here on waiting for the status lock fails.
    void breakLock() { lockIsBroken_ = true; }

    /// "action percent" each, with "!error" behind it when there is one.
    [[nodiscard]] const std::vector<std::string>& published() const { return published_; }
    /// The same, with runs of rising percents of one action cut down to "action first..last".
    [[nodiscard]] std::string story() const;
    void clear() { published_.clear(); }
    [[nodiscard]] int runsReleased() const { return runsReleased_; }

    bool wait(int semaphore);
    void post(int semaphore);

private:
    Halvix::UpgradeStatus status_{};
    std::vector<std::string> published_;
    bool locked_ = false;
    bool lockIsBroken_ = false;
    int runsReleased_ = 0;
};
