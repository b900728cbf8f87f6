// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "upgrade/SparseMemory.h"

#include <cstdint>

namespace Halvix {

/// The data of an Intel HEX file as one block from its first data record on. Gaps are zero bytes and take up no memory.
struct HexImage {
    std::uint32_t size = 0;
    std::uint32_t position = 0; ///< the next byte that `hex_read` returns
    SparseMemory data;
    std::uint32_t base = 0;           ///< the first non-zero extended address of the file
    std::uint64_t limit = UINT32_MAX; ///< larger images count as out of memory

    /// Appends zero bytes. False, with nothing changed, when out of memory.
    [[nodiscard]] bool grow(std::uint64_t bytes);
    /// Copies up to `length` bytes from the position on, advances it and returns their number.
    std::uint32_t read(void* buffer, std::uint32_t length);
};

} // namespace Halvix
