// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/IFlasher.h"

#include <algorithm>
#include <cstring>

namespace Halvix {

std::uint32_t percentOf(std::uint32_t done, std::uint32_t total)
{
    return total == 0 ? 0 : done * 100 / total;
}

bool IFlasher::setFileName(const char* name)
{
    constexpr std::size_t kLongest = sizeof fileName_ - 1;
    const std::size_t length = name != nullptr ? std::strlen(name) : 0;
    const std::size_t kept = std::min(length, kLongest);
    if (kept != 0)
        std::memcpy(fileName_, name, kept);
    fileName_[kept] = '\0';
    return length <= kLongest;
}

void IFlasher::updateSharedStatus(UpgradeAction action, unsigned char percent, eErr error)
{
    if (status_ == nullptr || !status_->signal.isOpen())
        return;
    if (published_ && action == lastAction_ && percent == lastPercent_ && error == lastError_)
        return;
    if (!status_->lock.wait())
        return;
    status_->record = {action, percent, {}, error};
    published_ = true;
    lastAction_ = action;
    lastPercent_ = percent;
    lastError_ = error;
    status_->lock.post();
    status_->signal.signal();
}

void IFlasher::attach(SharedStatus& status, Semaphore& runLock)
{
    status_ = &status;
    runLock_ = &runLock;
}

void IFlasher::progress(UpgradeAction action, std::uint32_t percent)
{
    updateSharedStatus(action, static_cast<unsigned char>(percent), ERR_SUCCESS);
}

eErr IFlasher::failed(UpgradeAction action, std::uint32_t percent, eErr error)
{
    updateSharedStatus(action, static_cast<unsigned char>(percent), error);
    return error;
}

void IFlasher::publishOutcome(eErr result)
{
    if (result != ERR_SUCCESS) {
        constexpr unsigned long kReadersSeeTheCauseMs = 100;
        LinuxWrapper::SleepFully(kReadersSeeTheCauseMs);
        updateSharedStatus(UpgradeActionFailed, 0, result);
    } else {
        updateSharedStatus(UpgradeActionFinished, 0, ERR_SUCCESS);
    }
}

// The start of the run has acquired it, perhaps in another thread.
void IFlasher::releaseRunLock() const HX_UNCHECKED_LOCKING
{
    if (runLock_ != nullptr)
        runLock_->post();
}

} // namespace Halvix
