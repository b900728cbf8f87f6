// SPDX-License-Identifier: LicenseRef-HXAux
// How the unit reads what people write, and shows what it has.
#include "simulator/model/Text.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

#include <cerrno>
#include <fcntl.h>

using namespace hxsim;
using modeltest::refusalOf;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(Text, IsTrimmedOfBlanksOfAnyKindAtBothEndsOnly)
{
    EXPECT_EQ(trimmed(" \t\r\n\v\f a b \t\r\n\v\f"), "a b");
    EXPECT_EQ(trimmed(" \t "), "");
    EXPECT_EQ(trimmed("\f"), "") << "it has no word either";
    EXPECT_EQ(trimmed(""), "");
}

TEST(Text, FallsIntoWordsAtAnyNumberOfBlanks)
{
    EXPECT_THAT(words("  press\tfront   long\n"), ElementsAre("press", "front", "long"));
    EXPECT_THAT(words(" \n"), IsEmpty());
}

TEST(Text, WritesARequestWithEightDigits)
{
    EXPECT_EQ(requestName(0x40010003), "0x40010003");
    EXPECT_EQ(requestName(0xC218004F), "0xc218004f");
    EXPECT_EQ(requestName(0x1A), "0x0000001a");
}

TEST(Text, WritesBytesAsPairsOfDigits)
{
    EXPECT_EQ(hexBytes(std::vector<std::uint8_t>{0x00, 0x0A, 0xFF}), "00 0a ff");
    EXPECT_EQ(hexBytes({}), "");
}

TEST(Text, QuotesBytesAsCDoes)
{
    EXPECT_EQ(inQuotes("2.1.0.5\n"), R"("2.1.0.5\n")");
    EXPECT_EQ(inQuotes("a\"b\\c"), R"("a\"b\\c")");
    EXPECT_EQ(inQuotes("\x01\x7f\xff\r~ "), R"("\x01\x7f\xff\x0d~ ")");
}

struct Number : Named {
    const char* text;
    std::int64_t value;
};

class GoodNumber : public hxtest::TestWithRow<Number> {};

ROW_TEST(GoodNumber, IsTaken)
{
    EXPECT_EQ(parseNumber(row().text, -1000000, 0xFFFFFFFF), row().value);
}

TEST_ROWS(Text, GoodNumber, kNameOfRow, Number{{"Zero"}, "0", 0}, Number{{"Decimal"}, "65535", 65535},
          Number{{"Negative"}, "-56", -56}, Number{{"LeadingZeroIsNoOctal"}, "010", 10},
          Number{{"Hexadecimal"}, "0x1f", 31}, Number{{"UpperX"}, "0X1F", 31},
          Number{{"NegativeHexadecimal"}, "-0x10", -16}, Number{{"Largest"}, "0xffffffff", 4294967295},
          Number{{"Lowest"}, "-1000000", -1000000});

struct BadNumber : Named {
    const char* text;
    const char* refusal;
};

class RefusedNumber : public hxtest::TestWithRow<BadNumber> {};

ROW_TEST(RefusedNumber, SaysWhy)
{
    EXPECT_EQ(refusalOf([] { (void)parseNumber(row().text, 0, 255); }), row().refusal);
}

TEST_ROWS(Text, RefusedNumber, kNameOfRow, BadNumber{{"Nothing"}, "", "'' is not a number"},
          BadNumber{{"Sign"}, "-", "'-' is not a number"}, BadNumber{{"TwoSigns"}, "--5", "'--5' is not a number"},
          BadNumber{{"Plus"}, "+5", "'+5' is not a number"},
          BadNumber{{"NoDigitsBehindX"}, "0x", "'0x' is not a number"},
          BadNumber{{"SignBehindX"}, "0x-5", "'0x-5' is not a number"},
          BadNumber{{"Trailing"}, "5 ", "'5 ' is not a number"}, BadNumber{{"Leading"}, " 5", "' 5' is not a number"},
          BadNumber{{"Fraction"}, "5.0", "'5.0' is not a number"},
          BadNumber{{"DecimalWithLetters"}, "1f", "'1f' is not a number"},
          BadNumber{{"TooManyDigits"}, "99999999999999999999", "'99999999999999999999' is not a number"},
          BadNumber{{"TooLarge"}, "256", "256 is outside 0 to 255"},
          BadNumber{{"TooSmall"}, "-1", "-1 is outside 0 to 255"});

TEST(Text, TakesRealNumbersWhole)
{
    EXPECT_EQ(parseReal("12.5"), 12.5);
    EXPECT_EQ(parseReal("-0.25"), -0.25);
    EXPECT_EQ(parseReal("1e3"), 1000);
    for (const char* bad : {"", "12,5", "12.5V", " 1", "nan", "inf", "-inf", "1e999", "0x10"})
        EXPECT_EQ(refusalOf([&] { (void)parseReal(bad); }), "'" + std::string{bad} + "' is not a number");
}

TEST(Text, TakesFourWordsForOnAndFourForOff)
{
    for (const char* yes : {"on", "yes", "true", "1"})
        EXPECT_TRUE(parseFlag(yes)) << yes;
    for (const char* no : {"off", "no", "false", "0"})
        EXPECT_FALSE(parseFlag(no)) << no;
    for (const char* bad : {"", "On", "2", "onn"})
        EXPECT_EQ(refusalOf([&] { (void)parseFlag(bad); }), "'" + std::string{bad} + "' is neither on nor off");
}

TEST(Text, NamesTheErrnosThatDriversGive)
{
    EXPECT_EQ(errnoName(EIO), "EIO");
    EXPECT_EQ(errnoName(ENOTTY), "ENOTTY");
    EXPECT_EQ(errnoName(ETIMEDOUT), "ETIMEDOUT");
    EXPECT_EQ(errnoName(4095), "E4095");
}

TEST(Text, TakesAnErrnoByNameOrNumber)
{
    EXPECT_EQ(parseErrno("EBUSY"), EBUSY);
    EXPECT_EQ(parseErrno("16"), 16);
    EXPECT_EQ(parseErrno("E16"), 16);
    EXPECT_EQ(parseErrno("4095"), 4095);
}

TEST(Text, RefusesWhatIsNoErrno)
{
    EXPECT_EQ(refusalOf([] { (void)parseErrno("EBUZY"); }), "there is no errno 'EBUZY'; did you mean 'EBUSY'?");
    EXPECT_EQ(refusalOf([] { (void)parseErrno("ebusy"); }).substr(0, 25), "there is no errno 'ebusy'");
    EXPECT_EQ(refusalOf([] { (void)parseErrno("E"); }).substr(0, 21), "there is no errno 'E'");
    EXPECT_EQ(refusalOf([] { (void)parseErrno("0"); }), "0 is outside 1 to 4095");
    EXPECT_EQ(refusalOf([] { (void)parseErrno("-5"); }), "there is no errno '-5'");
}

TEST(Text, WritesHowAFileIsOpened)
{
    EXPECT_EQ(openAction(O_RDONLY), "open rdonly");
    EXPECT_EQ(openAction(O_WRONLY), "open wronly");
    EXPECT_EQ(openAction(O_RDWR | O_NONBLOCK), "open rdwr nonblock");
    EXPECT_EQ(openAction(O_NOCTTY | O_TRUNC | O_APPEND | O_EXCL | O_CREAT | O_RDWR),
              "open rdwr creat excl trunc append noctty");
    EXPECT_EQ(openAction(O_RDONLY | O_CLOEXEC), "open rdonly") << "concerns only the process";
}

} // namespace
