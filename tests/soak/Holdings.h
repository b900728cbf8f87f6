// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/SimulatedUnit.h"
#include "tests/soak/Heap.h"

#include <cstddef>
#include <iosfwd>

namespace soak {

/// Resources that this process uses, and those of the unit on its behalf.
struct Holdings {
    std::size_t descriptors = 0;
    std::size_t mappings = 0;
    std::size_t threads = 0;
    std::size_t locksOnDisk = 0; ///< the unit's named semaphores
    long semaphoresOpen = 0;     ///< opened and not closed again
    Heap heap{};

    /// Measured after ending threads have ended; `lasting` is the number of library threads that never end.
    static Holdings now(const SimulatedUnit& unit, std::size_t lasting = 0);
    bool operator==(const Holdings&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Holdings& holdings);

/// Before the first operation on a unit: the current threads do not belong to the library.
void startMeasurement();
/// After each round: counts the semaphores opened and closed in it, and clears its journal.
void digestJournal();

/// Waits until the library has no more than these threads, so that the next one reuses a stack.
void waitForThreads(std::size_t lasting = 0);

} // namespace soak
