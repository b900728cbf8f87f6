// SPDX-License-Identifier: LicenseRef-HXAux
// Texts of others on their way to a terminal or a file.
#include "tools/cli/Printable.h"

#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tools/cli/Json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <pty.h>
#include <unistd.h>

namespace printable_test {

struct Shown : Named {
    std::string text;
    const char* line;
};

class PrintableText : public hxtest::TestWithRow<Shown> {};

ROW_TEST(PrintableText, IsOneLineOfUtf8)
{
    EXPECT_EQ(cli::printable(row().text), row().line);
}

// The last that is let through and the first that is not, at each edge of UTF-8.
TEST_ROWS(Of, PrintableText, kNameOfRow, Shown{"Blank", " ", " "}, Shown{"LastControl", "\x1f", "\\x1f"},
          Shown{"Tilde", "~", "~"}, Shown{"LastC1", "\xc2\x9f", "\\xc2\\x9f"},
          Shown{"BehindC1", "\xc2\xa0", "\xc2\xa0"}, Shown{"LastOfTwo", "\xdf\xbf", "\xdf\xbf"},
          Shown{"FirstOfThree", "\xe0\xa0\x80", "\xe0\xa0\x80"},
          Shown{"OverlongOfThree", "\xe0\x9f\xbf", "\\xe0\\x9f\\xbf"},
          Shown{"InFrontOfSurrogates", "\xed\x9f\xbf", "\xed\x9f\xbf"},
          Shown{"LastSurrogate", "\xed\xbf\xbf", "\\xed\\xbf\\xbf"},
          Shown{"BehindSurrogates", "\xee\x80\x80", "\xee\x80\x80"},
          Shown{"FirstOfFour", "\xf0\x90\x80\x80", "\xf0\x90\x80\x80"},
          Shown{"OverlongOfFour", "\xf0\x8f\xbf\xbf", "\\xf0\\x8f\\xbf\\xbf"},
          Shown{"Last", "\xf4\x8f\xbf\xbf", "\xf4\x8f\xbf\xbf"},
          Shown{"FirstByteThatNeverBegins", "\xf5\x80\x80\x80", "\\xf5\\x80\\x80\\x80"},
          Shown{"ContinuationAlone", "\x80z", "\\x80z"}, Shown{"CutShortInside", "\xe2\x82z", "\\xe2\\x82z"},
          Shown{"CutShortBeforeACharacter", "\xc3\xc3\xbc", "\\xc3\xc3\xbc"},
          Shown{"CutShortOfFour", "\xf0\x9f\x94", "\\xf0\\x9f\\x94"});

TEST(PrintableLines, KeepTheirEnds)
{
    EXPECT_EQ(cli::printableLines("a\x1b\n\n\tb\r\nc"), "a\\x1b\n\n\\x09b\\x0d\nc");
    EXPECT_EQ(cli::printableLines(""), "");
    EXPECT_EQ(cli::printableLines("\n"), "\n");
}

// Both ends of a terminal or a pipe.
struct Ends {
    int reader = -1;
    std::FILE* writer = nullptr;

    explicit Ends(bool isTerminal)
    {
        std::array<int, 2> ends{-1, -1};
        if (isTerminal ? openpty(ends.data(), &ends[1], nullptr, nullptr, nullptr) == 0 : pipe(ends.data()) == 0) {
            reader = ends[0];
            writer = fdopen(ends[1], "w");
        }
    }
    ~Ends()
    {
        std::fclose(writer);
        close(reader);
    }
    Ends(const Ends&) = delete;
    Ends& operator=(const Ends&) = delete;

    [[nodiscard]] std::string shown(std::string_view text) const
    {
        cli::show(writer, text);
        std::fflush(writer);
        std::array<char, 100> buffer{};
        const ssize_t size = read(reader, buffer.data(), buffer.size());
        return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }
};

TEST(ShownText, IsEscapedOnATerminalAndNowhereElse)
{
    EXPECT_EQ(Ends(true).shown("red \x1b[31m\n"), "red \\x1b[31m\r\n");
    EXPECT_EQ(Ends(false).shown("red \x1b[31m\n"), "red \x1b[31m\n");
}

TEST(ShownText, IsWholeEvenWithAZeroInside)
{
    EXPECT_EQ(Ends(false).shown(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(WrittenJson, IsAsciiWithoutControlCharacters)
{
    EXPECT_EQ(cli::written(nlohmann::json("\x1b\x7f\xc3\xbc\xc2\x9b\xff\xf0\x9f\x94\x86")),
              R"("\u001b\u007f\u00fc\u009b\ufffd\ud83d\udd06")");
}

TEST(WrittenJson, IsIndentedOnRequestAndKeepsAnOrder)
{
    const nlohmann::ordered_json document = {{"b", 1}, {"a", {1, 2}}};

    EXPECT_EQ(cli::written(document), R"({"b":1,"a":[1,2]})");
    EXPECT_EQ(cli::written(nlohmann::ordered_json{{"b", 1}, {"a", 2}}, 1), "{\n \"b\": 1,\n \"a\": 2\n}");
}

} // namespace printable_test
