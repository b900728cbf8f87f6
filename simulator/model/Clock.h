// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace hxsim {

/// Model time: nanoseconds since the unit was switched on.
using Time = std::chrono::nanoseconds;

/// The unit's time and its timers. Nothing here reads the machine's clock: the host of the model advances it, so the
/// same model runs in virtual, real or scaled time.
class Clock {
public:
    using Callback = std::function<void()>;
    using Key = std::pair<Time, std::uint64_t>;

    [[nodiscard]] Time now() const { return now_; }

    /// Runs the callback when model time reaches `time`; a time in the past means at the next advance.
    /// Callbacks of equal times run in the order of their registration.
    Key at(Time time, Callback callback);
    Key after(Time delay, Callback callback) { return at(now_ + delay, std::move(callback)); }
    void cancel(const Key& key) { timers_.erase(key); }

    [[nodiscard]] std::optional<Time> nextDeadline() const;

    /// Called after each timer, with the time of the timer.
    void listen(Callback listener) { listener_ = std::move(listener); }

    /// Advances to `time` and runs the timers that fall due, also those that a callback adds. Never goes back.
    void advanceTo(Time time);

private:
    Time now_{0};
    std::uint64_t added_ = 0;
    std::map<Key, Callback> timers_;
    Callback listener_;
};

} // namespace hxsim
