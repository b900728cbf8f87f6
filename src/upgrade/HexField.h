// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace Halvix::hexfield {

/// The value of each character as a hexadecimal digit; more than 15 for any other.
inline constexpr std::array<std::uint8_t, 256> kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(0xFF);
    for (unsigned i = 0; i < 16; ++i) {
        digits[static_cast<unsigned char>("0123456789abcdef"[i])] = static_cast<std::uint8_t>(i);
        digits[static_cast<unsigned char>("0123456789ABCDEF"[i])] = static_cast<std::uint8_t>(i);
    }
    return digits;
}();

/// Reads a number as `scanf` reads "%x" with this width, and removes its characters from the text: blanks before it,
/// which do not count, a sign, "0x", and as many digits as follow. False when there is no digit.
///
/// Firmware tools rely on these rules: "1G" is 1, "-1" is 255, and the checksum must detect both.
[[nodiscard]] bool scan(std::string_view& text, unsigned width, unsigned& value);

/// The same for a field of two characters, in which two digits are the rule.
[[nodiscard]] inline bool byte(const char (&text)[2], unsigned char& value)
{
    const unsigned high = kDigits[static_cast<unsigned char>(text[0])];
    const unsigned low = kDigits[static_cast<unsigned char>(text[1])];
    if ((high | low) < 16) {
        value = static_cast<unsigned char>(high << 4 | low);
        return true;
    }
    std::string_view field{text, 2};
    unsigned number = 0;
    if (!scan(field, 2, number))
        return false;
    value = static_cast<unsigned char>(number);
    return true;
}

} // namespace Halvix::hexfield
