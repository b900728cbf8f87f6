// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Completion.h"

#include "testing/Command.h"
#include "tools/hxaux/Objects.h"

using namespace hxaux;
using namespace hxtest;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;

namespace {

std::vector<std::string> words(const std::vector<std::string>& line)
{
    std::vector<std::string> found;
    for (const cli::Candidate& candidate : cli::candidates(program(), line))
        found.push_back(candidate.word);
    return found;
}

bool installed(const std::string& shell)
{
    return run("command -v " + shell).status == 0;
}

} // namespace

TEST(Completion, OffersEachObjectForAnEmptyLine)
{
    EXPECT_EQ(words({""}).size(), program().objects.size());
}

TEST(Completion, OffersTheVerbsOfAnObject)
{
    EXPECT_THAT(words({"completion", ""}), ElementsAre("bash", "fish", "words", "zsh"));
}

TEST(Completion, OffersTheNamesOfAChoiceThatBeginLikeTheWord)
{
    EXPECT_THAT(words({"version", "f"}), ElementsAre("fpga", "front"));
}

TEST(Completion, OffersOptionsOnlyForAWordThatBeginsLikeOne)
{
    EXPECT_THAT(words({"voltage", "--"}), AllOf(Contains("--json"), Contains("--watch")));
    EXPECT_THAT(words({"voltage", ""}), Not(Contains("--json")));
}

TEST(Completion, OffersNothingBehindTheLastValue)
{
    EXPECT_THAT(words({"version", "ss", ""}), IsEmpty());
}

TEST(Completion, OffersNothingForAnUnknownObject)
{
    EXPECT_THAT(words({"xylophone", ""}), IsEmpty());
}

TEST(Completion, ExplainsEachWord)
{
    EXPECT_THAT(
        cli::candidates(program(), {"volt"}),
        ElementsAre(AllOf(Field(&cli::Candidate::word, "voltage"), Field(&cli::Candidate::help, "supply voltages"))));
}

TEST(CompletionScript, OfBashFillsTheReplyWithTheWords)
{
    EXPECT_THAT(run(R"(bash -c 'source <(hxaux completion bash); COMP_WORDS=(hxaux version f); COMP_CWORD=2; _hxaux
echo "${COMPREPLY[@]}"')"),
                AllOf(outputIs("fpga front\n"), errorIs("")));
}

TEST(CompletionScript, OfFishOffersTheWords)
{
    if (!installed("fish"))
        GTEST_SKIP() << "fish is not installed";
    EXPECT_THAT(run("fish -c 'hxaux completion fish | source; complete -C \"hxaux version f\"' | cut -f 1"),
                outputIs("fpga\nfront\n"));
}

TEST(CompletionScript, OfZshIsTakenByTheShell)
{
    if (!installed("zsh"))
        GTEST_SKIP() << "zsh is not installed";
    EXPECT_THAT(run("zsh -f -c 'autoload -U compinit; compinit -D; source <(hxaux completion zsh); whence -w _hxaux'"),
                AllOf(outputIs("_hxaux: function\n"), statusIs(0)));
}

TEST(ManualPage, HasEachCall)
{
    const Outcome page = run("hxaux --man | sed 's/\\\\-/-/g'");
    for (const Object* object : program().objects)
        for (const Verb& verb : object->verbs)
            EXPECT_THAT(page.output, testing::HasSubstr(std::string(verb.example)));
}

TEST(ManualPage, IsTakenByTheFormatterWithoutAWarning)
{
    if (!installed("groff"))
        GTEST_SKIP() << "groff is not installed";
    EXPECT_THAT(run("hxaux --man | groff -man -Tascii -ww >/dev/null"), AllOf(errorIs(""), statusIs(0)));
}
