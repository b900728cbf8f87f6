// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace Halvix {

/// Truncates toward zero as the unit's processor does: NaN and values that do not fit a signed 32-bit number give
/// 0x80000000, whose low bytes are 0. In plain C++ those two cases are undefined, and callers rely on them. A float
/// widens to the double of the same value, so one function serves both.
[[nodiscard]] constexpr std::int32_t x86Truncate(double value)
{
    const bool fits = value > -2147483649.0 && value < 2147483648.0; // false for NaN
    return fits ? static_cast<std::int32_t>(value) : INT32_MIN;
}

/// The low 8 and 16 bits of the truncated value: as sent to a device in a byte or word.
[[nodiscard]] constexpr std::uint8_t x86TruncateToByte(double value)
{
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(x86Truncate(value)) & 0xFFU);
}
[[nodiscard]] constexpr std::uint16_t x86TruncateToWord(double value)
{
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(x86Truncate(value)) & 0xFFFFU);
}

} // namespace Halvix
