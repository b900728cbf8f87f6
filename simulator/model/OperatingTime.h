// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <cstdint>

namespace hxsim {

/// Counts model time while something is on.
class OperatingTime {
public:
    explicit OperatingTime(const Clock& clock) : clock_{clock} {}

    void run(bool on)
    {
        counted_ = total();
        since_ = clock_.now();
        running_ = on;
    }
    void setSeconds(std::uint64_t seconds)
    {
        counted_ = std::chrono::seconds{seconds};
        since_ = clock_.now();
    }
    [[nodiscard]] std::uint64_t seconds() const
    {
        return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::seconds>(total()).count());
    }

private:
    [[nodiscard]] Time total() const { return running_ ? counted_ + (clock_.now() - since_) : counted_; }

    const Clock& clock_;
    Time counted_{0};
    Time since_{0};
    bool running_ = false;
};

} // namespace hxsim
