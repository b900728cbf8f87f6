// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/I2cBus.h"

#include <algorithm>

namespace hxsim {

/// Eight bits and an acknowledge for each byte, one clock for each start and for the stop.
Time I2cBus::duration(std::size_t bytes, std::size_t starts) const
{
    const std::uint64_t clocks = bytes * 9 + starts + 1;
    return Time{static_cast<std::int64_t>(clocks * 1'000'000'000U / hertz)};
}

I2cBus::Transfer I2cBus::transfer(std::uint8_t address, std::span<const std::uint8_t> written,
                                  std::span<std::uint8_t> read)
{
    const Time start = std::max(clock_.now(), freeAt_);
    const auto found = devices_.find(static_cast<std::uint8_t>(address & 0xFE));
    if (found == devices_.end() || !found->second->answers(start)) {
        freeAt_ = start + duration(1, 1); // no part acknowledges the address
        return {false, freeAt_};
    }
    const bool writes = !written.empty() || read.empty();
    const bool reads = !read.empty();
    const std::size_t starts = static_cast<std::size_t>(writes) + static_cast<std::size_t>(reads);
    freeAt_ = start + duration(starts + written.size() + read.size(), starts);
    if (writes)
        found->second->write(written, freeAt_);
    if (reads)
        found->second->read(read);
    return {true, freeAt_};
}

} // namespace hxsim
