// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/FirmwareUpgrade.h"
#include "upgrade/UartRedirector.h"

#include <cstdint>
#include <memory>

namespace Halvix {

/// done * 100 / total in 32 bits; 0 when the total is unknown.
[[nodiscard]] std::uint32_t percentOf(std::uint32_t done, std::uint32_t total);

/// Common to the two flashers: the file's name, the routing of the UART and the published status.
///
/// One object serves one run, in one thread. The status record is shared with readers and guarded by the status lock.
class IFlasher {
public:
    virtual eErr Run(bool write) = 0;
    virtual ~IFlasher() = default;

    /// True when the whole name fits; a longer one is cut at 256 characters.
    bool setFileName(const char* name);
    /// Publishes a change: writes the record under its lock and posts the signal. Repeats are dropped.
    void updateSharedStatus(UpgradeAction action, unsigned char percent, eErr error);

    /// The semaphores and the record of the object that this flasher works for.
    void attach(int statusLock, int statusSignal, int runLock, UpgradeStatus* status);
    /// Keeps the flasher's owner alive until the worker thread, which takes ownership, has ended.
    void holdOwner(std::shared_ptr<void> owner) { owner_ = std::move(owner); }
    [[nodiscard]] std::shared_ptr<void> takeOwner() { return std::move(owner_); }

protected:
    IFlasher() = default;
    [[nodiscard]] const char* fileName() const { return fileName_; }
    /// The end of every run: publishes success or failure as the last change.
    void publishOutcome(eErr result);
    /// The last use of this flasher: from now on another run may start, which replaces it.
    void releaseRunLock() const;

    UartRedirector redirector_;

private:
    int statusLock_ = 0;
    int statusSignal_ = 0;
    int runLock_ = 0;
    UpgradeStatus* status_ = nullptr;
    char fileName_[257] = {};
    bool published_ = false; ///< nothing was published yet: even (0, 0, 0) is a change then
    UpgradeAction lastAction_ = UpgradeActionPrepareHardware;
    unsigned char lastPercent_ = 0;
    eErr lastError_ = ERR_SUCCESS;
    std::shared_ptr<void> owner_;
};

} // namespace Halvix
