// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/X86Convert.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Halvix;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(X86Convert, TruncatesTowardZero)
{
    EXPECT_EQ(x86Truncate(12.999), 12);
    EXPECT_EQ(x86Truncate(-12.999), -12);
}

TEST(X86Convert, KeepsTheOutermostIntegers)
{
    EXPECT_EQ(x86Truncate(2147483647.9), INT32_MAX);
    EXPECT_EQ(x86Truncate(-2147483648.9), INT32_MIN);
}

TEST(X86Convert, GivesTheIndefiniteValueForWhatDoesNotFit)
{
    for (const double value : {kNaN, kInfinity, -kInfinity, 2147483648.0, -2147483649.0, 1e300})
        EXPECT_EQ(x86Truncate(value), INT32_MIN) << value;
}

TEST(X86Convert, KeepsTheLowBitsForBytesAndWords)
{
    EXPECT_EQ(x86TruncateToByte(300.7), 44);
    EXPECT_EQ(x86TruncateToWord(65536.0 + 930.0), 930);
    EXPECT_EQ(x86TruncateToByte(kNaN), 0);
    EXPECT_EQ(x86TruncateToWord(kNaN), 0);
}

} // namespace
