// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/HexImage.h"

#include <algorithm>
#include <cstring>

namespace Halvix {

bool HexImage::grow(std::uint64_t bytes)
{
    const std::uint64_t wanted = size + bytes;
    if (wanted > std::min<std::uint64_t>(limit, SIZE_MAX))
        return false;
    if (wanted > data.size()) {
        // Grows by half, so that a file of many records does not reallocate at each of them.
        const std::uint64_t roomy = std::min<std::uint64_t>(wanted + wanted / 2, std::max(wanted, limit));
        if (!data.grow(static_cast<std::size_t>(roomy)))
            return false;
    }
    size = static_cast<std::uint32_t>(wanted);
    return true;
}

std::uint32_t HexImage::read(void* buffer, std::uint32_t length)
{
    const std::uint32_t count = std::min(length, size - position);
    if (count != 0)
        std::memcpy(buffer, data.get() + position, count);
    position += count;
    return count;
}

} // namespace Halvix
