// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <atomic>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace hxsim {

/// A unit's virtual time as its programs see it: a file in the unit's folder, which they map.
struct ClockMemory {
    std::atomic<std::int64_t> now; ///< nanoseconds of the unit's time
    std::int64_t realtime;         ///< the machine's clocks when the unit's time began
    std::int64_t monotonic;
};
// Not is_always_lock_free: clang answers it for a plain number, whose alignment on i386 is 4.
static_assert(sizeof(ClockMemory) == 24 && alignof(ClockMemory) == 8 &&
              __atomic_always_lock_free(sizeof(std::int64_t), nullptr));

/// The server's end.
class ClockPage {
public:
    /// Creates the file. Throws std::runtime_error when it cannot.
    explicit ClockPage(const std::string& folder);
    ClockPage(const ClockPage&) = delete;
    ClockPage& operator=(const ClockPage&) = delete;
    ~ClockPage();

    void show(Time now) { memory_->now.store(now.count(), std::memory_order_release); }

private:
    ClockMemory* memory_ = nullptr;
};

/// A program's end: mapped until the program is gone. Null when the unit's time is not virtual.
const ClockMemory* clockOfUnit(const std::string& folder);
/// What one of the machine's clocks shows in the unit's time; nothing for a clock of processor time.
std::optional<std::int64_t> shownBy(const ClockMemory& clock, clockid_t id);

} // namespace hxsim
