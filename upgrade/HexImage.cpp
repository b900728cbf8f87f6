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
    if (wanted > capacity) {
        // By half more than before, so that a file of many records does not copy the image for each of them.
        const std::uint64_t roomy = std::min<std::uint64_t>(wanted + wanted / 2, std::max(wanted, limit));
        auto* larger = static_cast<unsigned char*>(std::realloc(data.get(), static_cast<std::size_t>(roomy)));
        if (larger == nullptr)
            return false;
        (void)data.release(); // realloc has freed or moved it
        data.reset(larger);
        capacity = static_cast<std::uint32_t>(roomy);
    }
    if (bytes != 0)
        std::memset(data.get() + size, 0, static_cast<std::size_t>(bytes));
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
