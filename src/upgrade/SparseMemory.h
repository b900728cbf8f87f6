// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>

namespace Halvix {

/// A growing block of zero bytes, in which only the pages that were written take up memory.
class SparseMemory {
public:
    SparseMemory() = default;
    ~SparseMemory();
    SparseMemory(const SparseMemory&) = delete;
    SparseMemory& operator=(const SparseMemory&) = delete;

    /// False, with nothing changed, when out of memory. The block may move.
    [[nodiscard]] bool grow(std::size_t bytes);
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] unsigned char* get() const { return bytes_; }
    unsigned char& operator[](std::size_t index) const { return bytes_[index]; }

private:
    unsigned char* bytes_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Halvix
