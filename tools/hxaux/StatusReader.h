// SPDX-License-Identifier: LicenseRef-HXAux
// Collects the status changes that a run of the library publishes.
#pragma once

#include "hx-aux/FirmwareUpgrade.h"

#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace hxaux {

/// Waits for the changes on a thread of its own, because polling misses some. Even so a change can be missed when the
/// next one follows at once; only progress may depend on having seen one.
class StatusReader {
public:
    /// Create it before the run is started, so that a failed thread creation does not leave a run without a reader.
    explicit StatusReader(Halvix::FirmwareUpgrade& upgrade);
    ~StatusReader();
    StatusReader(const StatusReader&) = delete;
    StatusReader& operator=(const StatusReader&) = delete;

    /// Call after the start: the run ends with a final change, which ends the reading.
    void begin();

    /// The newest change of each action since the last call.
    [[nodiscard]] std::vector<Halvix::UpgradeStatus> news();
    /// The run's result, once there is one.
    [[nodiscard]] std::optional<Halvix::eErr> result() const;
    /// The action that was published with an error, if it was seen.
    [[nodiscard]] std::optional<Halvix::UpgradeAction> failedIn() const;
    /// The highest percentage of the verification that was seen.
    [[nodiscard]] int compared() const;

private:
    void read();
    void take(const Halvix::UpgradeStatus& status);

    Halvix::FirmwareUpgrade& upgrade_;
    mutable std::mutex mutex_;
    std::vector<Halvix::UpgradeStatus> news_;
    std::optional<Halvix::eErr> result_;
    std::optional<Halvix::UpgradeAction> failedIn_;
    int compared_ = 0;
    std::promise<bool> started_;
    bool begun_ = false;
    std::thread thread_;
};

} // namespace hxaux
