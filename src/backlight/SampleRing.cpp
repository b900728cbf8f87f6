// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/SampleRing.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Halvix {

namespace {

constexpr std::uint64_t kHeaderWords = 3;

std::uint32_t next(const SampleRing& ring, std::uint32_t index)
{
    return index + 1 == ring.size ? 0 : index + 1;
}

} // namespace

SampleRing* makeSampleRing(std::uint32_t window)
{
    const std::uint64_t entries = std::uint64_t{window} + 1;
    const std::uint64_t words = kHeaderWords + entries;
    if (entries > std::numeric_limits<std::uint32_t>::max() ||
        words > std::numeric_limits<std::size_t>::max() / sizeof(std::uint32_t))
        return nullptr;
    // The entries follow the head; both are counted in words. NOLINTNEXTLINE(clang-analyzer-unix.MallocSizeof)
    auto* ring = static_cast<SampleRing*>(std::calloc(static_cast<std::size_t>(words), sizeof(std::uint32_t)));
    if (ring != nullptr)
        ring->size = static_cast<std::uint32_t>(entries);
    return ring;
}

void freeSampleRing(SampleRing* ring)
{
    std::free(ring);
}

void fill(SampleRing& ring, std::uint32_t lux)
{
    std::fill_n(ring.brightnessInLux, ring.size, lux);
    ring.head = ring.size - 1;
}

void push(SampleRing& ring, std::uint32_t lux)
{
    ring.brightnessInLux[ring.head] = lux;
    advanceHead(ring);
    ring.tail = next(ring, ring.tail);
}

std::uint32_t spread(const SampleRing& ring)
{
    std::uint32_t smallest = 0xFFFFFFFF;
    std::uint32_t largest = 0;
    for (std::uint32_t i = ring.tail; i != ring.head; i = next(ring, i)) {
        smallest = std::min(smallest, ring.brightnessInLux[i]);
        largest = std::max(largest, ring.brightnessInLux[i]);
    }
    return largest - smallest;
}

std::uint32_t exchange(SampleRing& ring, std::uint32_t lux, std::uint32_t sum)
{
    ring.brightnessInLux[ring.head] = lux;
    sum -= ring.brightnessInLux[ring.tail];
    ring.tail = next(ring, ring.tail);
    return sum + ring.brightnessInLux[ring.head];
}

void advanceHead(SampleRing& ring)
{
    ring.head = next(ring, ring.head);
}

} // namespace Halvix
