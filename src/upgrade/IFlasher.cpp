// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/IFlasher.h"

#include "platform/Semaphore.h"

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
    if (statusSignal_ == 0)
        return;
    if (published_ && action == lastAction_ && percent == lastPercent_ && error == lastError_)
        return;
    if (!waitThroughSignals(statusLock_))
        return;
    *status_ = {action, percent, {}, error};
    published_ = true;
    lastAction_ = action;
    lastPercent_ = percent;
    lastError_ = error;
    LinuxWrapper::ReleaseSema(statusLock_);
    LinuxWrapper::ReleaseSema(statusSignal_);
}

void IFlasher::attach(int statusLock, int statusSignal, int runLock, UpgradeStatus* status)
{
    statusLock_ = statusLock;
    statusSignal_ = statusSignal;
    runLock_ = runLock;
    status_ = status;
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

void IFlasher::releaseRunLock() const
{
    LinuxWrapper::ReleaseSema(runLock_);
}

} // namespace Halvix
