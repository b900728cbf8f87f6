// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>
#include <iosfwd>

#include "testing/SimulatedUnit.h"
#include "tests/soak/Heap.h"

namespace soak {

/// What this process holds of the system, and what the unit has because of it.
struct Holdings {
    std::size_t descriptors = 0;
    std::size_t mappings = 0;
    std::size_t threads = 0;
    std::size_t locksOnDisk = 0; ///< the unit's named semaphores
    long semaphoresOpen = 0;     ///< opened and not closed again
    Heap heap{};

    /// After the threads that are about to end have ended; `lasting` are those of the library that never do.
    static Holdings now(const SimulatedUnit& unit, std::size_t lasting = 0);
    bool operator==(const Holdings&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Holdings& holdings);

/// Before the first operation on a unit: the threads that there are now are none of the library's.
void startAnew();
/// After each round: counts the semaphores opened and closed in it, and forgets its journal.
void digestJournal();

/// Waits until the library has no more than these threads, so that the next one gets the stack of one that is gone.
void waitForThreads(std::size_t lasting = 0);

} // namespace soak
