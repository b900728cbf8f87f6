// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace Halvix {

/// A window of the last W samples, plus one slot for the next one. One zeroed heap block of W + 4 words.
///
/// Empty when `head` equals `tail`; once filled, the window is the W entries from `tail` up to the slot before `head`.
/// All indices and sums are 32 bits wide and wrap.
struct SampleRing {
    std::uint32_t head; ///< Slot of the next sample.
    std::uint32_t tail; ///< Slot of the oldest sample.
    std::uint32_t size; ///< W + 1.
    std::uint32_t brightnessInLux[];
};

/// Null when a block for this window cannot be described or allocated.
[[nodiscard]] SampleRing* makeSampleRing(std::uint32_t window);
/// Null is allowed.
void freeSampleRing(SampleRing* ring);

[[nodiscard]] inline bool isEmpty(const SampleRing& ring)
{
    return ring.head == ring.tail;
}

/// Writes the sample into every slot and makes the window full.
void fill(SampleRing& ring, std::uint32_t lux);

/// Adds the sample to the window of recent samples and advances the window by one.
void push(SampleRing& ring, std::uint32_t lux);

/// Largest minus smallest sample of the window.
[[nodiscard]] std::uint32_t spread(const SampleRing& ring);

/// Writes the sample at `head`, drops the oldest and returns the window's new sum. `head` is not moved.
[[nodiscard]] std::uint32_t exchange(SampleRing& ring, std::uint32_t lux, std::uint32_t sum);

void advanceHead(SampleRing& ring);

} // namespace Halvix
