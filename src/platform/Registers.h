// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <sys/ioctl.h>

/// The drivers' two requests for the supervisor's registers. Inline, because a return after a system call costs more
/// than the rest of the operation: the return prediction is lost while the kernel runs.
namespace Halvix::registers {

inline constexpr unsigned long kRead = 0xC004003A;
inline constexpr unsigned long kWrite = 0xC004003B;

/// The record that both requests exchange.
struct Block {
    std::uint16_t reg;
    std::uint16_t value;
};
static_assert(sizeof(Block) == 4);

[[nodiscard]] inline bool read(int handle, std::uint8_t reg, std::uint16_t& value)
{
    Block block{reg, 0};
    if (::ioctl(handle, kRead, &block) < 0)
        return false;
    value = block.value;
    return true;
}

[[nodiscard]] inline bool write(int handle, std::uint8_t reg, std::uint16_t value)
{
    Block block{reg, value};
    return ::ioctl(handle, kWrite, &block) >= 0;
}

} // namespace Halvix::registers
