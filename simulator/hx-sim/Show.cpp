// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/hx-sim/Show.h"

#include <cstdint>
#include <unistd.h>

namespace hxsim {

namespace {

std::uint8_t byteAt(std::string_view text, std::size_t at)
{
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : 0;
}

/// Number of bytes of the UTF-8 character there; 0 for none or a control character.
std::size_t lengthOfShown(std::string_view text)
{
    const std::uint8_t first = byteAt(text, 0);
    if (first < 0x80)
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    const std::size_t length = first >= 0xF5 ? 0 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byteAt(text, i) & 0xC0) != 0x80)
            return 0;
    const std::uint8_t second = byteAt(text, 1);
    const bool control = first == 0xC2 && second < 0xA0;
    const bool tooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool noCharacter = (first == 0xED && second >= 0xA0) || (first == 0xF4 && second >= 0x90);
    return control || tooLong || noCharacter ? 0 : length;
}

std::string escaped(char c)
{
    constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<std::uint8_t>(c);
    return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
}

} // namespace

std::string forTerminal(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = text.front() == '\n' ? 1 : lengthOfShown(text);
        shown += length == 0 ? escaped(text.front()) : std::string{text.substr(0, length)};
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return shown;
}

void show(std::FILE* stream, std::string_view text)
{
    const std::string shown = isatty(fileno(stream)) != 0 ? forTerminal(text) : std::string{text};
    std::fwrite(shown.data(), 1, shown.size(), stream);
}

} // namespace hxsim
