// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/VersionText.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace Halvix {

bool scanVersion(const char* text, VersionParts& parts)
{
    // Reads a long and limits it to an int's range, so that both ABIs return what the 32-bit one returns.
    std::array<long, 4> read{};
    if (std::sscanf(text, "%ld.%ld.%ld.%ld", &read[0], &read[1], &read[2], &read[3]) != 4)
        return false;
    static constexpr long kSmallest = std::numeric_limits<int>::min();
    static constexpr long kLargest = std::numeric_limits<int>::max();
    std::ranges::transform(read, parts.begin(),
                           [](long part) { return static_cast<int>(std::clamp(part, kSmallest, kLargest)); });
    return true;
}

} // namespace Halvix
