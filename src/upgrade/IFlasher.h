// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/FirmwareUpgrade.h"
#include "platform/Semaphore.h"
#include "upgrade/UartRedirector.h"

#include <cstdint>
#include <memory>

namespace Halvix {

/// done * 100 / total in 32 bits; 0 when the total is unknown.
[[nodiscard]] std::uint32_t percentOf(std::uint32_t done, std::uint32_t total);

/// The status of the latest run, as its readers see it.
struct SharedStatus {
    Semaphore lock{nullptr};
    Semaphore signal{nullptr}; ///< counts the published changes; starts at 1, so the first wait returns at once
    UpgradeStatus record HX_GUARDED_BY(lock){};
};

/// Common to the two flashers: the file's name, the routing of the UART and the published status.
///
/// One object serves one run, in one thread; only the status is shared with others.
class IFlasher {
public:
    enum class Task { Verify, Program };

    virtual eErr Run(Task task) = 0;
    virtual ~IFlasher() = default;

    /// True when the whole name fits; a longer one is cut at 256 characters.
    bool setFileName(const char* name);
    /// Publishes a change: writes the record under its lock and posts the signal. Repeats are dropped.
    void updateSharedStatus(UpgradeAction action, unsigned char percent, eErr error);

    /// Status and run lock of the object that this flasher works for, which has acquired the lock.
    void attach(SharedStatus& status, Semaphore& runLock);
    /// Keeps the flasher's owner alive until the worker thread, which takes ownership, has ended.
    void holdOwner(std::shared_ptr<void> owner) { owner_ = std::move(owner); }
    [[nodiscard]] std::shared_ptr<void> takeOwner() { return std::move(owner_); }

protected:
    IFlasher() = default;
    [[nodiscard]] const char* fileName() const { return fileName_; }
    void progress(UpgradeAction action, std::uint32_t percent);
    /// Publishes an error, and returns it.
    eErr failed(UpgradeAction action, std::uint32_t percent, eErr error);
    /// The end of every run: publishes success or failure as the last change.
    void publishOutcome(eErr result);
    /// The last use of this flasher: from now on another run may start, which replaces it.
    void releaseRunLock() const;

    UartRedirector redirector_;

private:
    SharedStatus* status_ = nullptr;
    Semaphore* runLock_ = nullptr;
    char fileName_[257] = {};
    bool published_ = false; ///< nothing was published yet: even (0, 0, 0) is a change then
    UpgradeAction lastAction_ = UpgradeActionPrepareHardware;
    unsigned char lastPercent_ = 0;
    eErr lastError_ = ERR_SUCCESS;
    std::shared_ptr<void> owner_;
};

} // namespace Halvix
