// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Clock.h"

#include <algorithm>

namespace hxsim {

Clock::Key Clock::at(Time time, Callback callback)
{
    const Key key{std::max(time, now_), added_++};
    timers_.emplace(key, std::move(callback));
    return key;
}

std::optional<Time> Clock::nextDeadline() const
{
    if (timers_.empty())
        return std::nullopt;
    return timers_.begin()->first.first;
}

void Clock::advanceTo(Time time)
{
    while (!timers_.empty() && timers_.begin()->first.first <= time) {
        auto due = timers_.extract(timers_.begin());
        now_ = std::max(now_, due.key().first);
        due.mapped()();
        if (listener_)
            listener_();
    }
    now_ = std::max(now_, time);
}

} // namespace hxsim
