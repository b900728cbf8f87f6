// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/HexField.h"

#include <algorithm>

namespace Halvix::hexfield {

bool scan(std::string_view& text, unsigned width, unsigned& value)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const std::string_view field = text.substr(0, width);
    std::size_t at = 0;
    const auto skip = [&](std::string_view characters) {
        const bool found = at < field.size() && characters.find(field[at]) != std::string_view::npos;
        at += found ? 1 : 0;
        return found;
    };
    const bool negative = !field.empty() && field[0] == '-';
    (void)skip("+-");
    const std::size_t start = at;
    if (skip("0"))
        (void)skip("xX");
    unsigned number = 0;
    for (; at < field.size() && kDigits[static_cast<unsigned char>(field[at])] < 16; ++at)
        number = number << 4 | kDigits[static_cast<unsigned char>(field[at])];
    text.remove_prefix(at);
    value = negative ? 0 - number : number;
    return at != start;
}

} // namespace Halvix::hexfield
