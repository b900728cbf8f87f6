// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/StatusReader.h"

#include <algorithm>
#include <utility>

namespace hxaux {

using Halvix::UpgradeStatus;

StatusReader::StatusReader(Halvix::FirmwareUpgrade& upgrade)
    : upgrade_(upgrade), thread_([this, started = started_.get_future()]() mutable {
          if (started.get())
              read();
      })
{
}

StatusReader::~StatusReader()
{
    if (!begun_)
        started_.set_value(false);
    thread_.join();
}

void StatusReader::begin()
{
    begun_ = true;
    started_.set_value(true);
}

void StatusReader::read()
{
    constexpr bool kWait = true;
    while (!result()) {
        UpgradeStatus status{};
        (void)upgrade_.getUpgradeStatus(&status, kWait); // always succeeds
        take(status);
    }
}

void StatusReader::take(const UpgradeStatus& status)
{
    const std::lock_guard lock(mutex_);
    if (status.action == Halvix::UpgradeActionFinished || status.action == Halvix::UpgradeActionFailed) {
        result_ = status.error;
        return;
    }
    if (status.error != Halvix::ERR_SUCCESS)
        failedIn_ = status.action;
    if (status.action == Halvix::UpgradeActionVerify)
        compared_ = std::max<int>(compared_, status.percent);
    if (news_.empty() || news_.back().action != status.action)
        news_.push_back(status);
    else
        news_.back() = status;
}

std::vector<UpgradeStatus> StatusReader::news()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(news_, {});
}

std::optional<Halvix::eErr> StatusReader::result() const
{
    const std::lock_guard lock(mutex_);
    return result_;
}

std::optional<Halvix::UpgradeAction> StatusReader::failedIn() const
{
    const std::lock_guard lock(mutex_);
    return failedIn_;
}

int StatusReader::compared() const
{
    const std::lock_guard lock(mutex_);
    return compared_;
}

} // namespace hxaux
