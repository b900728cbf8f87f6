// SPDX-License-Identifier: LicenseRef-HXAux
// Properties of every row of the verb table.
#include "testing/Command.h"
#include "tools/cli/Arguments.h"
#include "tools/cli/Help.h"
#include "tools/hxaux/Objects.h"

#include <set>

using namespace hxaux;
using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;

namespace {

template <typename Check>
void forEachVerb(Check check)
{
    for (const Object* object : program().objects) {
        for (const Verb& verb : object->verbs) {
            SCOPED_TRACE(cli::spoken(*object, verb));
            check(*object, verb);
        }
    }
}

// The words of an example behind the verb's own; quotes are the only thing of the shell that examples use.
std::vector<std::string> wordsBehind(std::string_view command, std::string_view example)
{
    std::vector<std::string> words;
    std::string word;
    bool quoted = false;
    for (const char character : std::string(example.substr(command.size())) + " ") {
        if (character == '\'' || character == '"')
            quoted = !quoted;
        else if (character != ' ' || quoted)
            word += character;
        else if (!word.empty())
            words.push_back(std::exchange(word, ""));
    }
    return words;
}

} // namespace

TEST(VerbTable, NamesEachObjectAndEachVerbOnce)
{
    std::set<std::string> seen;
    forEachVerb(
        [&](const Object& object, const Verb& verb) { EXPECT_TRUE(seen.insert(cli::spoken(object, verb)).second); });
}

TEST(VerbTable, HasAFunctionAndASentenceForEachVerb)
{
    forEachVerb([](const Object&, const Verb& verb) {
        EXPECT_TRUE(verb.run);
        EXPECT_THAT(std::string(verb.help), testing::MatchesRegex("[A-Z].*\\.")) << "one sentence with a full stop";
        EXPECT_LE(verb.help.size(), 110U);
    });
}

TEST(VerbTable, ExplainsEachValueAndOption)
{
    forEachVerb([](const Object&, const Verb& verb) {
        for (const auto* group : {&verb.values, &verb.options})
            for (const Argument& argument : *group)
                EXPECT_NE(cli::explanation(argument), "") << argument.name;
    });
}

TEST(VerbTable, HasAnExampleForEachVerbThatItsOwnParserTakes)
{
    forEachVerb([](const Object& object, const Verb& verb) {
        const std::string command = "hxaux " + cli::spoken(object, verb);
        ASSERT_THAT(std::string(verb.example), testing::StartsWith(command));
        EXPECT_NO_THROW(cli::Arguments(program(), wordsBehind("hxaux", verb.example)));
    });
}

TEST(VerbTable, PutsOptionalAndRepeatedValuesLast)
{
    forEachVerb([](const Object&, const Verb& verb) {
        for (std::size_t i = 1; i < verb.values.size(); ++i)
            EXPECT_EQ(verb.values[i - 1].presence == cli::Presence::Required ||
                          verb.values[i].presence == cli::Presence::Optional,
                      true);
    });
}

TEST(VerbTable, HelpsForEachVerbFromTheCommandLine)
{
    forEachVerb([](const Object& object, const Verb& verb) {
        EXPECT_THAT(
            run("hxaux " + cli::spoken(object, verb) + " --help"),
            AllOf(outputIs(object.verbs.size() > 1 && verb.name.empty() ? cli::objectHelp(program(), object)
                                                                        : cli::verbHelp(program(), object, verb)),
                  errorIs(""), statusIs(0)));
    });
}

TEST(VerbTable, ListsEachObjectInTheHelpOfTheTool)
{
    const std::string help = cli::programHelp(program());
    for (const Object* object : program().objects)
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(object->name) + " "));
}

TEST(VerbTable, ListsEachVerbInTheHelpOfItsObject)
{
    forEachVerb([](const Object& object, const Verb& verb) {
        EXPECT_THAT(cli::objectHelp(program(), object, 500),
                    AllOf(HasSubstr(cli::usageLine(program(), object, verb)), HasSubstr(std::string(verb.help))));
    });
}
