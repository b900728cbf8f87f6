// SPDX-License-Identifier: LicenseRef-HXAux
// The words that may stand at the end of an unfinished command line, and the scripts that offer them.
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/cli/Kettle.h"
#include "tools/cli/Completion.h"

#include <gmock/gmock.h>

namespace completion_candidates_test {

using cli::Words;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

Words wordsOf(const cli::Candidates& candidates)
{
    Words words;
    for (const cli::Candidate& each : candidates)
        words.push_back(each.word);
    return words;
}

struct Line : Named {
    Words words;
    Words offered;
};

class Offered : public hxtest::TestWithRow<Line> {};

ROW_TEST(Offered, IsWhatCanStandAtTheEnd)
{
    EXPECT_EQ(wordsOf(cli::candidates(kettle::program(), row().words)), row().offered);
}

TEST_ROWS(Command, Offered, kNameOfRow, Line{"ForNoWord", {}, {"boil", "lid", "note", "pour", "start"}},
          Line{"ForAnEmptyWord", {""}, {"boil", "lid", "note", "pour", "start"}},
          Line{"ThatBeginsLikeTheWord", {"l"}, {"lid"}}, Line{"BehindHelp", {"help", "l"}, {"lid"}},
          Line{"ForNothing", {"xyzzy"}, {}}, Line{"BehindAnUnknownOne", {"xyzzy", ""}, {}},
          Line{"OrOption", {"-"}, {"--help", "--json", "--timeout", "--user", "--version"}});

TEST_ROWS(VerbOrValue, Offered, kNameOfRow, Line{"VerbOnce", {"lid", ""}, {"get", "set"}},
          Line{"VerbBehindHelp", {"help", "lid", "g"}, {"get"}},
          Line{"SecondWordOfAVerbBesideValues", {"lid", "set", ""}, {"ajar", "closed", "later", "open"}},
          Line{"ThatBeginsLikeTheWord", {"lid", "set", "o"}, {"open"}},
          Line{"BehindAVerbOfTwoWords", {"lid", "set", "later", ""}, {"ajar", "closed", "open"}},
          Line{"BehindTheLast", {"lid", "set", "open", ""}, {}},
          Line{"OfANumber", {"lid", "set", "later", "open", ""}, {}},
          Line{"BehindAFlag", {"lid", "set", "--json", "o"}, {"open"}},
          Line{"BehindAnOptionWithItsValue", {"lid", "set", "--timeout", "2", "o"}, {"open"}},
          Line{"BehindAnOptionOfOneWord", {"lid", "set", "--timeout=2", "o"}, {"open"}},
          Line{"BehindTheMark", {"lid", "set", "--", "o"}, {"open"}},
          Line{"Repeated", {"pour", "recipe", "tea", ""}, {"tea-milk"}}, Line{"OfAFile", {"pour", ""}, {}});

TEST_ROWS(Option, Offered, kNameOfRow, Line{"OfTheVerb", {"boil", "--l"}, {"--lid"}},
          Line{"OfARepeatedVerb", {"boil", "--c"}, {"--count", "--cup"}},
          Line{"OfAVerbThatIsNotRepeated", {"lid", "get", "--c"}, {}},
          Line{"OfEachVerb", {"lid", "get", "--"}, {"--help", "--json", "--timeout", "--user"}},
          Line{"NotBehindTheMark", {"lid", "set", "--", "-"}, {}});

TEST_ROWS(ValueOfAnOption, Offered, kNameOfRow, Line{"OfAChoice", {"boil", "--lid", ""}, {"ajar", "closed", "open"}},
          Line{"OfANumber", {"boil", "--for", ""}, {}},
          Line{"ThatIsLive", {"lid", "get", "--user", ""}, {"alice", "bob"}},
          Line{"OfALetter", {"lid", "get", "-u", "b"}, {"bob"}},
          Line{"BehindAFlag", {"lid", "get", "--json", "--user", "a"}, {"alice"}},
          Line{"EvenIfItLooksLikeOne", {"boil", "--for", "--lid", ""}, {}});

TEST_ROWS(Program, Offered, kNameOfRow, Line{"Itself", {"start", ""}, {"tea"}},
          Line{"BehindAnOption", {"start", "-v", "3", ""}, {"tea"}},
          Line{"BehindTheMark", {"start", "--", ""}, {"tea"}},
          Line{"WithItsOwnWords", {"start", "radio", ""}, {"radio-milk"}},
          Line{"WithItsOwnWordsBehindTheMark", {"start", "--", "radio", "loud", ""}, {"loud-milk"}},
          Line{"WithoutOptionsOfTheStarter", {"start", "radio", "-"}, {}});

TEST(Candidates, ExplainTheirUnitAndRange)
{
    EXPECT_THAT(cli::candidates(kettle::program(), {"boil", "--fo"}),
                testing::ElementsAre(cli::Candidate{"--for", "keeps it hot (0.5 to 60 s)"}));
}

TEST(Candidates, OfAnImpliedCommandAreItsMostLikelyWordsAndItsValues)
{
    const cli::Program program = kettle::impliedProgram();

    EXPECT_THAT(wordsOf(cli::candidates(program, {""})), AllOf(Contains("hello"), Contains("lid")));
    EXPECT_THAT(wordsOf(cli::candidates(program, {"good", ""})), testing::ElementsAre("good-milk"));
    EXPECT_THAT(wordsOf(cli::candidates(program, {"lid", "g"})), testing::ElementsAre("get"));
}

// What a verb prints.
class Printed : public cli::Call {
public:
    using cli::Call::Call;
    void document(const std::string&, const std::string& text) override { text_ += text; }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

// The output of `tea-pot completion ...`.
std::string output(const Words& words)
{
    static const cli::Object completion = cli::completionObject("tea-pot");
    cli::Program program = kettle::program();
    program.name = "tea-pot";
    program.objects.push_back(&completion);
    const cli::Arguments arguments(program, words);
    Printed call(program, arguments);
    arguments.verb().run(call);
    return call.text();
}

TEST(CompletionScripts, HaveAFunctionThatAShellAllowsForEveryProgram)
{
    EXPECT_THAT(output({"completion", "bash"}),
                AllOf(HasSubstr("\n_tea_pot() {\n"), HasSubstr("\ncomplete -o default -F _tea_pot tea-pot\n"),
                      HasSubstr("tea-pot completion words -- ")));
    EXPECT_THAT(output({"completion", "zsh"}), AllOf(testing::StartsWith("#compdef tea-pot\n_tea_pot() {\n"),
                                                     HasSubstr("\ncompdef _tea_pot tea-pot\n")));
    EXPECT_THAT(output({"completion", "fish"}), AllOf(HasSubstr("\nfunction __tea_pot_words\n"),
                                                      HasSubstr("\ncomplete -c tea-pot -a '(__tea_pot_words)'\n")));
    for (const char* const shell : {"bash", "fish", "zsh"})
        EXPECT_THAT(output({"completion", shell}), AllOf(Not(HasSubstr("NAME")), Not(HasSubstr("FUNCTION"))));
}

TEST(CompletionWords, AreLinesOfAWordATabAndItsMeaning)
{
    EXPECT_EQ(output({"completion", "words", "--", "lid", "set", ""}),
              "ajar\twhere to\nclosed\twhere to\nlater\tMoves the lid after a while.\nopen\twhere to\n");
    EXPECT_EQ(output({"completion", "words", "--", "lid", "get", "-h"}), "");
    EXPECT_EQ(output({"completion", "words", "--", "boil", "--fo"}), "--for\tkeeps it hot (0.5 to 60 s)\n");
}

} // namespace completion_candidates_test
