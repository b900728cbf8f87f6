// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Printable.h"

#include <array>
#include <cstddef>
#include <unistd.h>

namespace cli {

namespace {

using Byte = unsigned char;

// Length of a UTF-8 sequence by its first byte; 0 for a byte that cannot begin one.
std::size_t lengthOf(Byte first)
{
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first < 0xE0)
        return 2;
    if (first >= 0xE0 && first < 0xF0)
        return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

// Whether the second byte makes an overlong form, a surrogate or a code point above U+10FFFF.
bool isForbidden(Byte first, Byte second)
{
    return (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) || (first == 0xF0 && second < 0x90) ||
           (first == 0xF4 && second >= 0x90);
}

// The length of the character at the start of the text; 0 when it is not UTF-8.
std::size_t characterLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<Byte>(text[i]); };
    const std::size_t length = lengthOf(byte(0));
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    return length > 1 && isForbidden(byte(0), byte(1)) ? 0 : length;
}

bool isControl(std::string_view character)
{
    const auto first = static_cast<Byte>(character[0]);
    if (character.size() == 1)
        return first < 0x20 || first == 0x7F;
    return first == 0xC2 && static_cast<Byte>(character[1]) < 0xA0; // U+0080 to U+009F
}

void appendEscaped(std::string& shown, std::string_view bytes)
{
    for (const char byte : bytes) {
        std::array<char, 5> escaped{};
        std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<Byte>(byte));
        shown += escaped.data();
    }
}

} // namespace

std::string printable(std::string_view text)
{
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = characterLength(rest);
        const std::string_view character = rest.substr(0, length == 0 ? 1 : length);
        if (length == 0 || isControl(character))
            appendEscaped(shown, character);
        else
            shown += character;
        rest.remove_prefix(character.size());
    }
    return shown;
}

std::string printableLines(std::string_view text)
{
    std::string shown;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        shown += printable(text.substr(0, end)) + '\n';
        text.remove_prefix(end + 1);
    }
    return shown + printable(text);
}

void show(std::FILE* stream, std::string_view text)
{
    const std::string shown = isatty(fileno(stream)) != 0 ? printableLines(text) : std::string(text);
    std::fwrite(shown.data(), 1, shown.size(), stream);
}

} // namespace cli
