// SPDX-License-Identifier: LicenseRef-HXAux
// Numbers and names as people write them.
#include "tools/cli/Names.h"

#include "testing/Named.h"
#include "testing/RowTest.h"

#include <gmock/gmock.h>

#include <limits>

namespace names_test {

using cli::toInteger;
using cli::toReal;
using testing::ElementsAre;
using testing::Optional;

struct Number : Named {
    const char* text;
    std::optional<long long> integer;
    std::optional<double> real;
};

class NumberText : public hxtest::TestWithRow<Number> {};

ROW_TEST(NumberText, IsANumberAsAWholeOrNone)
{
    EXPECT_EQ(toInteger(row().text), row().integer);
    EXPECT_EQ(toReal(row().text), row().real);
}

constexpr auto kMost = std::numeric_limits<long long>::max();
constexpr auto kLeast = std::numeric_limits<long long>::min();

TEST_ROWS(Of, NumberText, kNameOfRow, Number{"Zero", "0", 0, 0.0}, Number{"Negative", "-12", -12, -12.0},
          Number{"LeadingZeros", "007", 7, 7.0}, Number{"BaseSixteen", "0x1f", 31, {}},
          Number{"BaseSixteenInCapitals", "0X1F", 31, {}}, Number{"NegativeBehindTheBase", "0x-1", {}, {}},
          Number{"NegativeInFrontOfTheBase", "-0x1", {}, {}}, Number{"TheBaseAlone", "0x", {}, {}},
          Number{"APlus", "+1", {}, {}}, Number{"ABlankBehind", "1 ", {}, {}}, Number{"ABlankInFront", " 1", {}, {}},
          Number{"Nothing", "", {}, {}}, Number{"ALetter", "a", {}, {}}, Number{"ALetterBehind", "1a", {}, {}},
          Number{"AFraction", "1.5", {}, 1.5}, Number{"AFractionWithoutAZero", ".5", {}, 0.5},
          Number{"AComma", "1,5", {}, {}}, Number{"AnExponent", "-2e3", {}, -2000.0}, Number{"Infinity", "inf", {}, {}},
          Number{"NotANumber", "nan", {}, {}}, Number{"TooLargeForAReal", "1e999", {}, {}},
          Number{"TheLargestInteger", "9223372036854775807", kMost, 9223372036854775807.0},
          Number{"OneMore", "9223372036854775808", {}, 9223372036854775808.0},
          Number{"TheSmallestInteger", "-9223372036854775808", kLeast, -9223372036854775808.0},
          Number{"TheLargestOfBaseSixteen", "0x7fffffffffffffff", kMost, {}},
          Number{"TooLargeOfBaseSixteen", "0x8000000000000000", {}, {}});

const cli::Names kDays = cli::namesOf<int>({{1, "monday"}, {2, "tuesday"}, {2, "day-two"}, {10, "never"}});

TEST(Names, MapAValueToItsFirstNameAndAnUnknownOneToItsNumber)
{
    EXPECT_EQ(kDays.nameOf(1), "monday");
    EXPECT_EQ(kDays.nameOf(2), "tuesday");
    EXPECT_EQ(kDays.nameOf(3), "3");
    EXPECT_EQ(kDays.nameOf(-1), "-1");
}

TEST(Names, MapEachNameAndTheNumberOfANameToTheValue)
{
    EXPECT_THAT(kDays.valueOf("day-two"), Optional(2));
    EXPECT_THAT(kDays.valueOf("10"), Optional(10));
    EXPECT_THAT(kDays.valueOf("0xa"), Optional(10));
    EXPECT_EQ(kDays.valueOf("3"), std::nullopt);
    EXPECT_EQ(kDays.valueOf("Monday"), std::nullopt);
    EXPECT_EQ(kDays.valueOf("mon"), std::nullopt);
    EXPECT_EQ(kDays.valueOf(""), std::nullopt);
}

TEST(Names, KeepTheirOrder)
{
    EXPECT_THAT(kDays.all(), ElementsAre("monday", "tuesday", "day-two", "never"));
}

} // namespace names_test
