// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>

namespace soak {

/// Memory of the program that was allocated and not freed. Allocations of the simulated unit during a call are not
/// counted: its journal and its lists of names grow with the calls. (Under a sanitizer everything is counted.)
struct Heap {
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    static Heap now();
    bool operator==(const Heap&) const = default;
};

/// Whether only allocations of the program itself are counted.
[[nodiscard]] bool heapIsExact();

} // namespace soak
