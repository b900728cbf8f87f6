// SPDX-License-Identifier: LicenseRef-HXAux
// The manual page and the reference, made from the table.
#include "tools/cli/Manual.h"

#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/cli/Kettle.h"

#include <gmock/gmock.h>

namespace manual_test {

using testing::HasSubstr;
using testing::Not;

// The part of a text from one line up to another.
std::string part(const std::string& text, const std::string& from, const std::string& to)
{
    const std::size_t begin = text.find(from);
    return begin == std::string::npos ? "" : text.substr(begin, text.find(to, begin + from.size()) - begin);
}

TEST(ManualText, HasAHeadForTheIndexOfPages)
{
    EXPECT_THAT(cli::manualPage(kettle::program()),
                testing::StartsWith(".\\\" Made from the table of commands by kettle --man.\n"
                                    ".TH KETTLE 1 \"\" \"HXAux 2.5\" \"User commands\"\n"
                                    ".SH NAME\n"
                                    "kettle \\- make \\- and serve \\- tea\n"
                                    ".SH SYNOPSIS\n"
                                    ".B kettle\n"
                                    "COMMAND [VALUES]\n"
                                    ".SH DESCRIPTION\n"
                                    "Makes tea.\n"
                                    ".SH COMMANDS\n"
                                    ".SS boil\n"));
}

TEST(ManualText, HasTheValuesAndTheOwnOptionsOfACall)
{
    EXPECT_EQ(part(cli::manualPage(kettle::program()), ".SS boil\n", ".SS lid"),
              ".SS boil\n"
              "Boils water.\n"
              ".TP\n"
              ".B kettle boil [HEAT]\n"
              "Boils water.\n"
              "It whistles when it is done.\n"
              ".RS\n"
              ".TP\n"
              ".B [HEAT]\n"
              "how hot (20 to 100 degrees C)\n"
              ".TP\n"
              ".B \\-\\-for SECONDS\n"
              "keeps it hot (0.5 to 60 s)\n"
              ".TP\n"
              ".B \\-\\-keep\n"
              "keeps it hot until noon\n"
              ".TP\n"
              ".B \\-\\-lid LID\n"
              "position of the lid (closed, open, ajar)\n"
              ".TP\n"
              ".B \\-\\-cup CUP\n"
              "where to pour it\n"
              ".PP\n"
              "Example:\n"
              ".B kettle boil 90\n"
              ".RE\n");
}

TEST(ManualText, HasTheCommonOptionsAndTheStatusesOnce)
{
    EXPECT_EQ(part(cli::manualPage(kettle::program()), ".SH OPTIONS\n", "\f"),
              ".SH OPTIONS\n"
              ".TP\n.B \\-\\-watch\nrepeats\n"
              ".TP\n.B \\-\\-count TIMES\nhow often (1 to 9 times)\n"
              ".TP\n.B \\-\\-json\nprints JSON\n"
              ".TP\n.B \\-\\-timeout SECONDS\nhow long to wait (0.1 to 60 s)\n"
              ".TP\n.B \\-u, \\-\\-user NAME\nwho asks\n"
              ".TP\n.B \\-h, \\-\\-help\nprints this help\n"
              ".SH EXIT STATUS\n"
              ".TP\n.B 0\ndone\n"
              ".TP\n.B 2\nusage error\n"
              ".SH SEE ALSO\n"
              ".BR toaster (1)\n");
}

struct Hostile : Named {
    const char* text;
    const char* shown;
};

class TextOnTheManualPage : public hxtest::TestWithRow<Hostile> {};

ROW_TEST(TextOnTheManualPage, IsShownLiterally)
{
    const cli::Object object = cli::command({.name = "x", .help = row().text, .example = "x"});
    cli::Program program = kettle::program();
    program.objects = {&object};

    EXPECT_THAT(cli::manualPage(program), HasSubstr(std::string("\n.B kettle x\n") + row().shown + "\n.RS\n"));
}

TEST_ROWS(Of, TextOnTheManualPage, kNameOfRow, Hostile{"ADotInFront", ".TH", "\\&.TH"},
          Hostile{"AQuoteInFront", "'br", "\\&'br"}, Hostile{"ADotInside", "a.TH", "a.TH"},
          Hostile{"ABackslash", "a\\fBb", "a\\efBb"}, Hostile{"AMinus", "-a-", "\\-a\\-"});

TEST(Reference, HasASectionForEachCommandAndEachCall)
{
    const std::string text = cli::markdownReference(kettle::program());

    EXPECT_EQ(part(text, "## boil", "## note"), "## boil: Boils water.\n"
                                                "\n"
                                                "### `kettle boil [HEAT]`\n"
                                                "\n"
                                                "Boils water. It whistles when it is done.\n"
                                                "\n"
                                                "- `[HEAT]`: how hot (20 to 100 degrees C)\n"
                                                "- `--for SECONDS`: keeps it hot (0.5 to 60 s)\n"
                                                "- `--keep`: keeps it hot until noon\n"
                                                "- `--lid LID`: position of the lid (closed, open, ajar)\n"
                                                "- `--cup CUP`: where to pour it\n"
                                                "- `--watch`, `--count TIMES`\n"
                                                "\n"
                                                "Example: `kettle boil 90`\n"
                                                "\n"
                                                "## lid: the lid\n"
                                                "\n"
                                                "### `kettle lid get`\n"
                                                "\n"
                                                "Shows the lid.\n"
                                                "\n"
                                                "Example: `kettle lid get`\n"
                                                "\n"
                                                "### `kettle lid set POSITION`\n"
                                                "\n"
                                                "Moves the lid.\n"
                                                "\n"
                                                "- `POSITION`: where to (closed, open, ajar)\n"
                                                "\n"
                                                "Example: `kettle lid set open`\n"
                                                "\n"
                                                "### `kettle lid set later POSITION DELAY`\n"
                                                "\n"
                                                "Moves the lid after a while.\n"
                                                "\n"
                                                "- `POSITION`: where to (closed, open, ajar)\n"
                                                "- `DELAY`: when, from now (-1 to 60 s)\n"
                                                "\n"
                                                "Example: `kettle lid set later ajar 5`\n"
                                                "\n");
    EXPECT_THAT(text, testing::StartsWith("# Reference of kettle\n\n"));
    EXPECT_THAT(text, testing::EndsWith("Example: `kettle start radio`\n"));
    EXPECT_THAT(text, Not(HasSubstr("\n\n\n")));
}

} // namespace manual_test
