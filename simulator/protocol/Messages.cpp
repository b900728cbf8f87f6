// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/Messages.h"

#include <algorithm>

namespace hxsim::wire {

std::string Unpacker::nextText(bool isLast)
{
    const auto end = isLast ? bytes_.end() : std::find(bytes_.begin(), bytes_.end(), std::uint8_t{0});
    complete_ = complete_ && (isLast || end != bytes_.end());
    std::string text{bytes_.begin(), end};
    bytes_ = bytes_.subspan(std::min(text.size() + 1, bytes_.size()));
    return text;
}

/// What no NUL ends is not a word.
Unpacker& Unpacker::words(std::vector<std::string>& words)
{
    while (std::find(bytes_.begin(), bytes_.end(), std::uint8_t{0}) != bytes_.end())
        words.push_back(nextText(false));
    return *this;
}

} // namespace hxsim::wire
