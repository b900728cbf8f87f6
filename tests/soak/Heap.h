// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>

namespace soak {

/// Memory of the program that was allocated and not freed. What the simulated unit allocates while it answers a call is
/// not counted: its journal and its lists of names grow with the calls. (Under a sanitizer everything is counted.)
struct Heap {
    std::size_t blocks = 0;
    std::size_t bytes = 0;

    static Heap now();
    bool operator==(const Heap&) const = default;
};

/// Whether only what the program itself allocates is counted.
[[nodiscard]] bool heapIsExact();

} // namespace soak
