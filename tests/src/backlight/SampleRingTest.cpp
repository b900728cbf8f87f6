// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/SampleRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>

using namespace Halvix;

namespace {

using Ring = std::unique_ptr<SampleRing, void (*)(SampleRing*)>;

Ring ringOf(std::uint32_t window)
{
    return {makeSampleRing(window), freeSampleRing};
}

Ring filledRing(std::uint32_t window, std::uint32_t lux)
{
    Ring ring = ringOf(window);
    fill(*ring, lux);
    return ring;
}

} // namespace

TEST(SampleRing, BeginsEmptyAndZeroedWithOneSlotMoreThanItsWindow)
{
    const Ring ring = ringOf(5);

    EXPECT_EQ(ring->size, 6U);
    EXPECT_TRUE(isEmpty(*ring));
    EXPECT_EQ(std::count(ring->brightnessInLux, ring->brightnessInLux + 6, 0U), 6);
}

TEST(SampleRing, FilledHoldsTheSampleInEverySlotAndAFullWindow)
{
    const Ring ring = filledRing(5, 77);

    EXPECT_EQ(std::count(ring->brightnessInLux, ring->brightnessInLux + 6, 77U), 6);
    EXPECT_EQ(ring->head, 5U);
    EXPECT_EQ(ring->tail, 0U);
}

TEST(SampleRing, OfAWindowOfZeroHasOneSlotAndIsAlwaysEmpty)
{
    const Ring ring = filledRing(0, 77);

    EXPECT_EQ(ring->size, 1U);
    EXPECT_TRUE(isEmpty(*ring));
}

TEST(SampleRing, IsNotCreatedForAWindowWhoseSizeNoWordCanHold)
{
    EXPECT_EQ(makeSampleRing(0xFFFFFFFF), nullptr);
}

#if __SIZEOF_POINTER__ == 4
TEST(SampleRing, IsNotCreatedForAWindowWhoseBytesNoBlockCanHold)
{
    EXPECT_EQ(makeSampleRing(0xFFFFFFFE), nullptr);
    EXPECT_EQ(makeSampleRing(0x3FFFFFFC), nullptr); // (W + 4) * 4 is 2 to the power of 32
}
#endif

TEST(RejectWindow, SpreadIsThatOfTheLastSamplesAsAPlainQueueGivesIt)
{
    const Ring ring = filledRing(4, 100);
    std::deque<std::uint32_t> queue(4, 100);
    std::uint32_t next = 12345;
    for (int i = 0; i < 1000; ++i) {
        next = next * 1103515245 + 12345;
        const std::uint32_t lux = next % 7000;
        push(*ring, lux);
        queue.push_back(lux);
        queue.pop_front();
        const auto [smallest, largest] = std::minmax_element(queue.begin(), queue.end());

        ASSERT_EQ(spread(*ring), *largest - *smallest) << i;
    }
}

TEST(AverageWindow, SumIsThatOfTheLastSamplesAsAPlainQueueGivesIt)
{
    const Ring ring = filledRing(7, 300);
    std::deque<std::uint32_t> queue(7, 300);
    std::uint32_t sum = 7 * 300;
    std::uint32_t next = 999;
    for (int i = 0; i < 1000; ++i) {
        next = next * 1103515245 + 12345;
        const std::uint32_t lux = next % 7000;
        sum = exchange(*ring, lux, sum);
        advanceHead(*ring);
        queue.push_back(lux);
        queue.pop_front();
        std::uint32_t expected = 0;
        for (const std::uint32_t one : queue)
            expected += one;

        ASSERT_EQ(sum, expected) << i;
    }
}

TEST(AverageWindow, SumWrapsAtThirtyTwoBits)
{
    const Ring ring = filledRing(2, 0xFFFFFFFF);

    const std::uint32_t sum = exchange(*ring, 3, 0xFFFFFFFE);

    EXPECT_EQ(sum, 2U); // 0xFFFFFFFF + 3
}

TEST(AverageWindow, OfOneSampleIsThatSample)
{
    const Ring ring = filledRing(1, 100);
    std::uint32_t sum = 100;
    for (const std::uint32_t lux : {100U, 250U, 3U}) {
        sum = exchange(*ring, lux, sum);
        advanceHead(*ring);

        EXPECT_EQ(sum, lux);
    }
}
