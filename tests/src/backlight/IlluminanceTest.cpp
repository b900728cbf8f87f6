// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/Illuminance.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Halvix;

namespace {

/// Counts by stepping through the converter's scale from the bottom: sixteen steps of each chord, and on the way from
/// chord to chord half of the old and half of the new step.
unsigned walkedCount(unsigned code)
{
    unsigned twice = 0; // in half counts, so that nothing is rounded before the end
    for (unsigned at = 1; at <= code; ++at) {
        const unsigned step = 1U << (at >> 4U);
        const unsigned before = 1U << ((at - 1) >> 4U);
        twice += step + before;
    }
    return twice / 2;
}

/// Lux in extended precision, with the exponent's sum in another order than in the library.
unsigned expectedLux(unsigned byte0, unsigned byte1)
{
    const long double c0 = walkedCount(byte0 & 0x7FU);
    const long double c1 = walkedCount(byte1 & 0x7FU);
    if (c0 <= c1)
        return 0;
    const long double visible = c0 - c1;
    return static_cast<unsigned>(0.39L * visible * expl(-0.181L * (c1 * c1) / (visible * visible)));
}

unsigned luxOf(unsigned byte0, unsigned byte1)
{
    unsigned short lux = 0xFFFF;
    EXPECT_EQ(measureToLux(&lux, {static_cast<unsigned char>(byte0), static_cast<unsigned char>(byte1)}), ERR_SUCCESS);
    return lux;
}

} // namespace

TEST(Illuminance, IsThatOfTheDataSheetForEveryPairOfCompletedBytes)
{
    unsigned pairs = 0;
    unsigned differing = 0;
    for (unsigned byte0 = 0x80; byte0 <= 0xFF; ++byte0)
        for (unsigned byte1 = 0x80; byte1 <= 0xFF; ++byte1, ++pairs)
            differing += luxOf(byte0, byte1) != expectedLux(byte0, byte1) ? 1U : 0U;

    EXPECT_EQ(pairs, 16384U);
    EXPECT_EQ(differing, 0U);
}

TEST(Illuminance, OfTheDocumentedReadingsIsAsDocumented)
{
    EXPECT_EQ(luxOf(0xC5, 0xA3), 102U);
    EXPECT_EQ(luxOf(0xFF, 0x80), 1565U);
    EXPECT_EQ(luxOf(0x90, 0x90), 0U);
}

TEST(Illuminance, IsZeroWhenInfraredIsAsStrongOrStronger)
{
    EXPECT_EQ(luxOf(0xA0, 0xA0), 0U);
    EXPECT_EQ(luxOf(0xA0, 0xA1), 0U);
    EXPECT_EQ(luxOf(0x80, 0xFF), 0U);
}

TEST(Illuminance, RefusesAnUnfinishedConversionAndLeavesTheOutput)
{
    for (const _ValueType value : {_ValueType{0x45, 0xA3}, _ValueType{0xC5, 0x23}, _ValueType{0x45, 0x23}}) {
        unsigned short lux = 4711;

        EXPECT_EQ(measureToLux(&lux, value), ERR_INVALID_DATA);

        EXPECT_EQ(lux, 4711);
    }
}

TEST(ChannelCount, OfEveryByteFollowsTheChordsAndSteps)
{
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        unsigned short count = 0xFFFF;

        EXPECT_EQ(measureToCount(&count, byte), ERR_SUCCESS);

        EXPECT_EQ(count, walkedCount(byte & 0x7FU)) << byte;
    }
}

TEST(ChannelCount, OfTheDocumentedBytesIsAsDocumented)
{
    const struct {
        unsigned byte;
        unsigned short count;
    } kRows[] = {{0x80, 0}, {0x90, 16}, {0xA0, 49}, {0xA3, 61}, {0xC5, 327}, {0xF0, 2095}, {0xFF, 4015}};
    for (const auto& row : kRows) {
        unsigned short count = 0;

        EXPECT_EQ(measureToCount(&count, row.byte), ERR_SUCCESS);

        EXPECT_EQ(count, row.count) << row.byte;
    }
}

TEST(ChannelCount, RefusesEveryByteWithoutTheValidBit)
{
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        unsigned short count = 4711;

        EXPECT_EQ(measureToCount(&count, byte), ERR_INVALID_DATA);

        EXPECT_EQ(count, 4711);
    }
}
