// SPDX-License-Identifier: LicenseRef-HXAux
#include "settings/IniSettings.h"
#include "testing/RowTest.h"

#include <climits>
#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <locale>
#include <random>
#include <sstream>
#include <string_view>

using namespace Halvix;
using namespace std::string_view_literals;

namespace {

// Trimming.

std::string trimmed(std::string text)
{
    IniSettings::trim(text);
    return text;
}

TEST(SettingsTrim, RemovesBlanksAtBothEnds)
{
    EXPECT_EQ(trimmed("  a b  "), "a b");
}
TEST(SettingsTrim, EmptiesATextOfBlanks)
{
    EXPECT_EQ(trimmed("    "), "");
}
TEST(SettingsTrim, LeavesAnEmptyTextAlone)
{
    EXPECT_EQ(trimmed(""), "");
}
TEST(SettingsTrim, KeepsOtherWhiteSpace)
{
    EXPECT_EQ(trimmed("\t a\r\n"), "\t a\r\n");
}

// Numbers to texts.

std::string textOf(unsigned long value)
{
    std::string text;
    EXPECT_EQ(IniSettings::ConvertLongToStr(value, &text), ERR_SUCCESS);
    return text;
}

TEST(SettingsNumbers, AreWrittenInDecimal)
{
    EXPECT_EQ(textOf(0), "0");
    EXPECT_EQ(textOf(4294967295UL), "4294967295");
    EXPECT_EQ(textOf(ULONG_MAX), std::to_string(ULONG_MAX));
}

struct RealText {
    double value;
    const char* text;
};

class SettingsReals : public hxtest::TestWithRow<RealText> {};

ROW_TEST(SettingsReals, AreWrittenWithAtMostSixDigits)
{
    std::string text;

    EXPECT_EQ(IniSettings::ConvertDoubleToStr(row().value, &text), ERR_SUCCESS);

    EXPECT_EQ(text, row().text);
}

TEST_ROWS(Values, SettingsReals, hxtest::kNumbered, RealText{0.5, "0.5"}, RealText{1000000.0, "1e+06"},
          RealText{1234567.0, "1.23457e+06"}, RealText{0.0, "0"}, RealText{-0.0, "-0"}, RealText{100000.0, "100000"},
          RealText{0.0001, "0.0001"}, RealText{0.00001, "1e-05"}, RealText{1.0 / 3.0, "0.333333"},
          RealText{-2.5e300, "-2.5e+300"});

// Texts to numbers.

struct Conversion {
    const char* text;
    eErr result;
    unsigned long value;
};

constexpr unsigned long kBefore = 77;

class SettingsTexts : public hxtest::TestWithRow<Conversion> {};

ROW_TEST(SettingsTexts, BecomeNumbersOrLeaveTheNumberAlone)
{
    unsigned long value = kBefore;

    EXPECT_EQ(IniSettings::ConvertStrToLong(&value, row().text), row().result);

    EXPECT_EQ(value, row().value);
}

TEST_ROWS(Values, SettingsTexts, hxtest::kNumbered, Conversion{"12abc", ERR_SUCCESS, 12},
          Conversion{"  7", ERR_SUCCESS, 7}, Conversion{"\t7", ERR_SUCCESS, 7}, Conversion{"+3", ERR_SUCCESS, 3},
          Conversion{"0x10", ERR_SUCCESS, 0}, Conversion{"010", ERR_SUCCESS, 10}, Conversion{"3.9", ERR_SUCCESS, 3},
          Conversion{"4294967295", ERR_SUCCESS, 4294967295UL}, Conversion{"-5", ERR_SUCCESS, 0UL - 5UL},
          Conversion{"abc", ERR_DATATYPE_MISMATCH, kBefore}, Conversion{"", ERR_DATATYPE_MISMATCH, kBefore},
          Conversion{"   ", ERR_DATATYPE_MISMATCH, kBefore}, Conversion{"-", ERR_DATATYPE_MISMATCH, kBefore},
          Conversion{"99999999999999999999999", ERR_DATATYPE_MISMATCH, kBefore});

TEST(SettingsTexts, ReachAsFarAsAnUnsignedLong)
{
    unsigned long value = kBefore;

    const eErr err = IniSettings::ConvertStrToLong(&value, "4294967296");

    if (sizeof value == 4) {
        EXPECT_EQ(err, ERR_DATATYPE_MISMATCH);
        EXPECT_EQ(value, kBefore);
    } else {
        EXPECT_EQ(err, ERR_SUCCESS);
        EXPECT_EQ(value, 4294967296ULL);
    }
}

struct RealConversion {
    const char* text;
    eErr result;
    double value;
};

class SettingsRealTexts : public hxtest::TestWithRow<RealConversion> {};

ROW_TEST(SettingsRealTexts, BecomeNumbersOrLeaveTheNumberAlone)
{
    double value = 77.5;

    EXPECT_EQ(IniSettings::ConvertStrToDouble(&value, row().text), row().result);

    EXPECT_EQ(value, row().value);
}

TEST_ROWS(Values, SettingsRealTexts, hxtest::kNumbered, RealConversion{"0.5", ERR_SUCCESS, 0.5},
          RealConversion{".5", ERR_SUCCESS, 0.5}, RealConversion{"1.5x", ERR_SUCCESS, 1.5},
          RealConversion{" -2", ERR_SUCCESS, -2.0}, RealConversion{"1e3", ERR_SUCCESS, 1000.0},
          RealConversion{"1,5", ERR_SUCCESS, 1.0}, RealConversion{"inf", ERR_DATATYPE_MISMATCH, 77.5},
          RealConversion{"nan", ERR_DATATYPE_MISMATCH, 77.5}, RealConversion{"1e", ERR_DATATYPE_MISMATCH, 77.5},
          RealConversion{"1e999", ERR_DATATYPE_MISMATCH, 77.5}, RealConversion{"", ERR_DATATYPE_MISMATCH, 77.5},
          RealConversion{"x", ERR_DATATYPE_MISMATCH, 77.5});

/// Groups digits and writes a comma, as an application's own locale may.
class CommaPunctuation : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(SettingsNumbers, DoNotFollowTheApplicationsLocale)
{
    const std::locale before = std::locale::global(std::locale{std::locale::classic(), new CommaPunctuation});
    std::string text;
    double value = 0;

    EXPECT_EQ(textOf(1234567), "1234567");
    EXPECT_EQ(IniSettings::ConvertDoubleToStr(0.5, &text), ERR_SUCCESS);
    EXPECT_EQ(text, "0.5");
    EXPECT_EQ(IniSettings::ConvertStrToDouble(&value, "1.5"), ERR_SUCCESS);
    EXPECT_EQ(value, 1.5);

    std::locale::global(before);
}

// Every text against a stream of the classic locale, whose form the file's numbers have.

template <class Number>
struct Result {
    eErr err;
    Number value;

    bool operator==(const Result&) const = default;
};

template <class Number>
Result<Number> readByAStream(const std::string& text)
{
    std::istringstream stream{text};
    stream.imbue(std::locale::classic());
    Number value{};
    if (!(stream >> value))
        return {ERR_DATATYPE_MISMATCH, 77};
    return {ERR_SUCCESS, value};
}

void expectAsByAStream(const std::string& text)
{
    Result<unsigned long> number{ERR_SUCCESS, 77};
    number.err = IniSettings::ConvertStrToLong(&number.value, text);
    ASSERT_EQ(number, readByAStream<unsigned long>(text)) << testing::PrintToString(text);

    Result<double> real{ERR_SUCCESS, 77};
    real.err = IniSettings::ConvertStrToDouble(&real.value, text);
    ASSERT_EQ(real, readByAStream<double>(text)) << testing::PrintToString(text);
}

constexpr std::string_view kCharacters = "0+-.e5x \0E9\tinfa,1"sv;

TEST(SettingsTextsByAStream, OfUpToFourCharactersGiveTheSameNumbers)
{
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(expectAsByAStream(texts[i]));
        if (texts[i].size() < 4)
            for (const char character : kCharacters)
                texts.push_back(texts[i] + character);
    }
}

TEST(SettingsTextsByAStream, OfAnyLengthGiveTheSameNumbers)
{
    std::mt19937 random{20}; // NOLINT(cert-msc51-cpp): the same texts in every run
    for (int i = 0; i < 100000; ++i) {
        std::string text(random() % 40, ' ');
        for (char& character : text)
            character =
                random() % 4 != 0 ? static_cast<char>('0' + random() % 10) : kCharacters[random() % kCharacters.size()];
        ASSERT_NO_FATAL_FAILURE(expectAsByAStream(text));
    }
}

TEST(SettingsNumbers, OfAnySizeAreWrittenAsByAStream)
{
    std::mt19937_64 random{21}; // NOLINT(cert-msc51-cpp): the same numbers in every run
    for (int i = 0; i < 100000; ++i) {
        const auto value = std::bit_cast<double>(random()); // also NaN, infinite and tiny ones
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        std::string text;

        ASSERT_EQ(IniSettings::ConvertDoubleToStr(value, &text), ERR_SUCCESS);

        ASSERT_EQ(text, stream.str());
    }
}

} // namespace
