// SPDX-License-Identifier: LicenseRef-HXAux
// The texts of help, made from the table.
#include "tools/cli/Help.h"

#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/cli/Kettle.h"
#include "tools/cli/Manual.h"

#include <gmock/gmock.h>

#include <sstream>

namespace help_test {

using cli::Argument;
using cli::Words;
using testing::HasSubstr;
using testing::Le;
using testing::SizeIs;

const cli::Object& object(const char* name)
{
    return *kettle::program().find(name);
}

std::string helpOf(const char* name, std::size_t verb = 0, std::size_t width = cli::kUsualWidth)
{
    return cli::verbHelp(kettle::program(), object(name), object(name).verbs[verb], width);
}

Words linesOf(const std::string& text)
{
    Words lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Words wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

TEST(Help, OfAVerbHasItsValuesItsOptionsAndThoseOfAllVerbs)
{
    EXPECT_EQ(helpOf("boil"), "kettle boil [HEAT]\n"
                              "\n"
                              "Boils water.\n"
                              "It whistles when it is done.\n"
                              "\n"
                              "Values:\n"
                              "  [HEAT]  how hot (20 to 100 degrees C)\n"
                              "\n"
                              "Options:\n"
                              "  --for SECONDS      keeps it hot (0.5 to 60 s)\n"
                              "  --keep             keeps it hot until noon\n"
                              "  --lid LID          position of the lid (closed, open, ajar)\n"
                              "  --cup CUP          where to pour it\n"
                              "  --watch            repeats\n"
                              "  --count TIMES      how often (1 to 9 times)\n"
                              "  --json             prints JSON\n"
                              "  --timeout SECONDS  how long to wait (0.1 to 60 s)\n"
                              "  -u, --user NAME    who asks\n"
                              "  -h, --help         prints this help\n"
                              "\n"
                              "Example:\n"
                              "  kettle boil 90\n");
}

TEST(Help, OfAVerbWithoutValuesHasNoTitleForThem)
{
    EXPECT_EQ(helpOf("lid").find("Values:"), std::string::npos);
}

TEST(Help, OfAnObjectHasEachCallWithItsValues)
{
    EXPECT_EQ(cli::objectHelp(kettle::program(), object("lid")),
              "kettle lid: the lid\n"
              "\n"
              "Calls:\n"
              "  kettle lid get                Shows the lid.\n"
              "  kettle lid set POSITION       Moves the lid.\n"
              "  kettle lid set later POSITION DELAY\n"
              "                                Moves the lid after a while.\n"
              "\n"
              "Add --help to a call for its values and options.\n");
}

TEST(Help, OfAProgramHasItsCommandsAndItsStatuses)
{
    EXPECT_EQ(cli::programHelp(kettle::program()),
              "kettle COMMAND [VALUES]\n"
              "\n"
              "Makes tea.\n"
              "\n"
              "Commands:\n"
              "  boil   Boils water.\n"
              "  lid    the lid\n"
              "  note   notes on the fridge\n"
              "  pour   Pours drinks.\n"
              "  start  Starts a program beside the kettle.\n"
              "\n"
              "Exit statuses:\n"
              "  0  done\n"
              "  2  usage error\n"
              "\n"
              "'kettle COMMAND --help' explains one of them; 'kettle --version' prints the\n"
              "version.\n");
}

TEST(Help, HasTheSameWordsInAnyWidth)
{
    for (const std::size_t width : {40U, 50U, 200U}) {
        const std::string help = helpOf("boil", 0, width);

        EXPECT_EQ(wordsOf(help), wordsOf(helpOf("boil"))) << width;
        EXPECT_THAT(linesOf(help), testing::Each(SizeIs(Le(width)))) << width;
    }
}

TEST(Help, ContinuesAnExplanationBelowItsBeginning)
{
    EXPECT_THAT(helpOf("boil", 0, 50), HasSubstr("  --lid LID          position of the lid (closed,\n"
                                                 "                     open, ajar)\n"));
}

TEST(Help, LeavesAWordWhole)
{
    const std::string word(60, 'x');
    const cli::Verb verb{.name = "", .help = word, .example = "x"};

    EXPECT_THAT(cli::verbHelp(kettle::program(), object("boil"), verb, 40), HasSubstr("\n" + word + "\n"));
}

struct Row : Named {
    Argument argument;
    const char* term; // as an option
    const char* text;
};

const cli::Names kNoise = cli::namesOf<int>({{1, "quiet"}, {2, "loud"}});

Argument named(Argument argument)
{
    argument.names = &kNoise;
    return argument;
}

Argument shown(Argument argument, const char* name)
{
    argument.shown = name;
    return argument;
}

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

class Explanation : public hxtest::TestWithRow<Row> {};

ROW_TEST(Explanation, NamesUnitAndRange)
{
    EXPECT_EQ(cli::optionTerm(row().argument), row().term);
    EXPECT_EQ(cli::explanation(row().argument), row().text);
}

TEST_ROWS(Of, Explanation, kNameOfRow,
          Row{"Seconds", cli::real("for", 0.01, 86400, "s", "how long"), "--for SECONDS", "how long (0.01 to 86400 s)"},
          Row{"Milliseconds", cli::integer("for", 0, 5, "ms", "how long"), "--for MILLISECONDS",
              "how long (0 to 5 ms)"},
          Row{"Volts", cli::real("at", 9, 28, "V", ""), "--at VOLTS", "9 to 28 V"},
          Row{"Hertz", cli::integer("tone", 1, 2, "Hz", "pitch"), "--tone HERTZ", "pitch (1 to 2 Hz)"},
          Row{"Percent", cli::integer("duty", 0, 100, "%", "share"), "--duty PERCENT", "share (0 to 100 %)"},
          Row{"Degrees", cli::integer("heat", -25, 5, "degrees C", "how hot"), "--heat DEGREES",
              "how hot (-25 to 5 degrees C)"},
          Row{"AnotherUnit", cli::integer("count", 1, 1e9, "times", "how often"), "--count TIMES",
              "how often (1 to 1000000000 times)"},
          Row{"AUnitWithoutARange", cli::real("light", kLowest, kHighest, "lux", "how bright"), "--light LUX",
              "how bright (in lux)"},
          Row{"ALowestValueAlone", cli::real("x", 1, kHighest, "", "x"), "--x X", "x (1 to 1.79769313486232e+308)"},
          Row{"NoUnit", cli::integer("level", 0, 255, "", "how bright"), "--level LEVEL", "how bright (0 to 255)"},
          Row{"AFlag", cli::flag("all", "everything"), "--all", "everything"},
          Row{"AText", cli::text("key", "which"), "--key KEY", "which"},
          Row{"AChoice", cli::choice("noise", kNoise, "how loud"), "--noise NOISE", "how loud (quiet, loud)"},
          Row{"NamesBesideNumbers", named(cli::integer("noise", 0, 9, "", "how loud")), "--noise NOISE",
              "how loud (quiet, loud, or 0 to 9)"},
          Row{"ANameOfItsOwn", shown(cli::real("for", 0, 1, "s", "how long"), "TIME"), "--for TIME",
              "how long (0 to 1 s)"},
          Row{"NothingToExplain", cli::text("key", ""), "--key KEY", ""});

TEST(Metavariable, ShowsWhetherAValueIsOptionalOrRepeated)
{
    EXPECT_EQ(cli::metavariable(cli::integer("heat", 0, 1, "s", "")), "HEAT");
    EXPECT_EQ(cli::metavariable(cli::text("heat", "").optional()), "[HEAT]");
    EXPECT_EQ(cli::metavariable(cli::text("heat", "").repeated()), "HEAT...");
    EXPECT_EQ(cli::metavariable({.name = "radio", .kind = cli::Kind::Program}), "RADIO...");
    EXPECT_EQ(cli::metavariable(shown(cli::text("heat", ""), "KEY=VALUE")), "KEY=VALUE");
}

struct Request : Named {
    Words words;
    const char* begins; // null: the words request no text
};

class Information : public hxtest::TestWithRow<Request> {};

ROW_TEST(Information, IsWhatTheWordsRequest)
{
    const auto text = cli::information(kettle::program(), row().words);

    ASSERT_EQ(text.has_value(), row().begins != nullptr) << *text;
    if (text) {
        EXPECT_THAT(*text, testing::StartsWith(row().begins));
    }
}

constexpr const char* kProgram = "kettle COMMAND [VALUES]\n";
constexpr const char* kVersion = "kettle 2.5\n";
constexpr const char* kManual = ".\\\" Made from";

TEST_ROWS(OnTheProgram, Information, kNameOfRow, Request{"Version", {"--version"}, kVersion},
          Request{"ShortVersion", {"-V"}, kVersion}, Request{"VersionWithOneDash", {"-version"}, kVersion},
          Request{"VersionBehindAFlag", {"--json", "--version"}, kVersion}, Request{"Manual", {"--man"}, kManual},
          Request{"ManualBehindAFlag", {"--json", "--man"}, kManual}, Request{"HelpAlone", {"help"}, kProgram},
          Request{"Usage", {"--usage"}, kProgram}, Request{"QuestionMark", {"-?"}, kProgram},
          Request{"OneDash", {"-help"}, kProgram}, Request{"Short", {"-h"}, kProgram},
          Request{"BesideAnotherOption", {"--json", "--help"}, kProgram}, Request{"NoWord", {}, nullptr},
          Request{"ACommand", {"lid"}, nullptr}, Request{"VersionBehindACommand", {"lid", "--version"}, nullptr});

TEST_ROWS(OnACommand, Information, kNameOfRow, Request{"InFront", {"help", "lid"}, "kettle lid: the lid\n"},
          Request{"Behind", {"lid", "help"}, "kettle lid: the lid\n"},
          Request{"OfAVerb", {"lid", "get", "--help"}, "kettle lid get\n"},
          Request{"OfAVerbInBetween", {"lid", "--help", "get"}, "kettle lid get\n"},
          Request{"OfAVerbOfTwoWords", {"help", "lid", "set", "later"}, "kettle lid set later POSITION DELAY\n"},
          Request{"OfAVerbWithItsValues", {"lid", "set", "open", "-h"}, "kettle lid set POSITION\n"},
          Request{"OfAVerbWithBadValues", {"lid", "set", "xyzzy", "-h"}, "kettle lid set POSITION\n"},
          Request{"OfACommandWithoutVerbs", {"boil", "help"}, "kettle boil [HEAT]\n"},
          Request{"TheWordInPlaceOfAChoice", {"lid", "set", "help"}, "kettle lid set POSITION\n"},
          Request{"TheWordInPlaceOfAText", {"note", "show", "help"}, nullptr},
          Request{"TheWordInPlaceOfAFile", {"pour", "help"}, nullptr},
          Request{"TheWordInPlaceOfAProgram", {"start", "help"}, nullptr},
          Request{"TheWordBehindAValue", {"lid", "set", "open", "help"}, nullptr},
          Request{"BehindTheMark", {"note", "add", "--", "--help"}, nullptr},
          Request{"OfTheProgramThatIsStarted", {"start", "radio", "--help"}, nullptr},
          Request{"OfTheProgramBehindAnOption", {"start", "-v", "3", "radio", "--help"}, nullptr},
          Request{"InFrontOfTheProgram", {"start", "-v", "3", "--help"}, "kettle start PROGRAM...\n"},
          Request{"InFrontOfTheProgramThatFollows", {"start", "--help", "radio"}, "kettle start PROGRAM...\n"});

TEST(Information, RefusesWhatDoesNotExist)
{
    const auto mistake = [](const Words& words) -> std::string {
        try {
            (void)cli::information(kettle::program(), words);
        } catch (const cli::UsageError& error) {
            return error.what();
        }
        return "";
    };

    EXPECT_EQ(mistake({"help", "lidd"}), "there is no command 'lidd'; did you mean 'lid'?");
    EXPECT_EQ(mistake({"lid", "sett", "--help"}), "there is no verb 'sett'; did you mean 'set'?");
    EXPECT_EQ(mistake({"help", "lid", "later"}), "there is no verb 'later'; the verbs are get, set, set later");
}

} // namespace help_test
