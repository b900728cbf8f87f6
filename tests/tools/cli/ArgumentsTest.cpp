// SPDX-License-Identifier: LicenseRef-HXAux
// What a command line means, and what is wrong with one.
#include "tools/cli/Arguments.h"

#include "testing/Named.h"
#include "testing/RowTest.h"
#include "tests/tools/cli/Kettle.h"

#include <gmock/gmock.h>

namespace arguments_test {

using cli::Arguments;
using cli::UsageError;
using cli::Words;
using testing::ElementsAre;
using testing::IsEmpty;

UsageError mistakeIn(const Words& words, const cli::Program& program = kettle::program())
{
    try {
        const Arguments arguments(program, words);
    } catch (const UsageError& mistake) {
        return mistake;
    }
    ADD_FAILURE() << "it was taken: " << testing::PrintToString(words);
    return UsageError("");
}

struct Refused : Named {
    Words words;
    const char* text;
};

class Mistake : public hxtest::TestWithRow<Refused> {};

ROW_TEST(Mistake, IsNamed)
{
    EXPECT_STREQ(mistakeIn(row().words).what(), row().text);
}

TEST_ROWS(
    InTheCommand, Mistake, kNameOfRow, Refused{"NoWord", {}, "missing argument: a command; 'kettle --help' lists them"},
    Refused{"AMistypedCommand", {"biol"}, "there is no command 'biol'; did you mean 'boil'?"},
    Refused{
        "ACommandUnlikeAll", {"xyzzy"}, "there is no command 'xyzzy'; the commands are boil, lid, note, pour, start"},
    Refused{"AnEmptyCommand", {""}, "there is no command ''; the commands are boil, lid, note, pour, start"},
    Refused{"AMistypedOptionInFront", {"--jsn", "boil"}, "there is no option '--jsn'; did you mean '--json'?"},
    Refused{"NoVerb", {"lid"}, "missing argument: a verb, one of get, set, set later"},
    Refused{"AnOptionInTheVerbsPlace", {"lid", "--loud"}, "missing argument: a verb, one of get, set, set later"},
    Refused{"AMistypedVerb", {"lid", "sett"}, "there is no verb 'sett'; did you mean 'set'?"},
    Refused{"AVerbUnlikeAll", {"lid", "hide"}, "there is no verb 'hide'; the verbs are get, set, set later"},
    Refused{"TheSecondWordOfAVerb", {"lid", "later"}, "there is no verb 'later'; the verbs are get, set, set later"},
    Refused{"OnlyFlagsOfEachVerb", {"--json"}, "missing argument: a command; 'kettle --help' lists them"});

TEST_ROWS(InAValue, Mistake, kNameOfRow, Refused{"BelowTheRange", {"boil", "19"}, "heat: 19 is outside 20 to 100"},
          Refused{"AboveTheRange", {"boil", "101"}, "heat: 101 is outside 20 to 100"},
          Refused{"AFraction", {"boil", "20.5"}, "heat: '20.5' is not an integer"},
          Refused{"AnExponent", {"boil", "1e2"}, "heat: '1e2' is not an integer"},
          Refused{"AnEmptyText", {"boil", ""}, "heat: '' is not an integer"},
          Refused{"AnotherUnit", {"boil", "90C"}, "heat: '90C' is not an integer"},
          Refused{"ANumberBelowTheRange", {"lid", "set", "later", "open", "-1.5"}, "delay: -1.5 is outside -1 to 60"},
          Refused{"WhatIsNotANumber", {"lid", "set", "later", "open", "soon"}, "delay: 'soon' is not a number"},
          Refused{"AMistypedName",
                  {"lid", "set", "opne"},
                  "position: 'opne' is not one of closed, open, ajar; did you mean 'open'?"},
          Refused{"ANameUnlikeAll", {"lid", "set", "gone"}, "position: 'gone' is not one of closed, open, ajar"},
          Refused{"TheNumberOfNoName", {"lid", "set", "2"}, "position: '2' is not one of closed, open, ajar"},
          Refused{"WhatItsOwnCheckRefuses", {"lid", "get", "--user", "bob!"}, "--user: 'bob!' shouts"},
          Refused{"AMissingOne", {"lid", "set"}, "missing argument: position; usage: kettle lid set POSITION"},
          Refused{"AMissingSecondOne",
                  {"lid", "set", "later", "open"},
                  "missing argument: delay; usage: kettle lid set later POSITION DELAY"},
          Refused{"AMissingRepeatedOne", {"note", "add"}, "missing argument: line; usage: kettle note add LINE..."},
          Refused{"AMissingProgram", {"start"}, "missing argument: program; usage: kettle start PROGRAM..."},
          Refused{"OneTooMany", {"boil", "90", "95"}, "too many arguments: '95'; usage: kettle boil [HEAT]"},
          Refused{"OneTooManyThatLooksLikeANumber",
                  {"boil", "90", "-5"},
                  "too many arguments: '-5'; usage: kettle boil [HEAT]"},
          Refused{"OneTooManyBehindTheMark",
                  {"lid", "get", "--", "--json"},
                  "too many arguments: '--json'; usage: kettle lid get"});

TEST_ROWS(InAnOption, Mistake, kNameOfRow,
          Refused{"Mistyped", {"boil", "--kep"}, "there is no option '--kep'; did you mean '--keep'?"},
          Refused{"UnlikeAll", {"boil", "--xyzzy"}, "there is no option '--xyzzy'"},
          Refused{"OfAnotherVerb", {"lid", "get", "--tag", "x"}, "there is no option '--tag'"},
          Refused{"UnknownLetter", {"boil", "-x"}, "there is no option '-x'"},
          Refused{"MistypedBesideAMissingValue",
                  {"lid", "set", "--jsno"},
                  "there is no option '--jsno'; did you mean '--json'?"},
          Refused{"WithoutItsValue", {"boil", "--for"}, "--for needs a value"},
          Refused{"WithAnEmptyValue", {"boil", "--for=", "90"}, "--for: '' is not a number"},
          Refused{"GivenTwice", {"boil", "--for", "1", "--for", "2"}, "--for is given twice"},
          Refused{"GivenTwiceInTwoForms", {"lid", "get", "--user=a", "-u", "b"}, "--user is given twice"},
          Refused{"OutOfRange", {"boil", "--for", "0.4"}, "--for: 0.4 is outside 0.5 to 60"},
          Refused{"NotANumber", {"boil", "--for", "long"}, "--for: 'long' is not a number"},
          Refused{"Excluded", {"boil", "--keep", "--for", "1"}, "--keep and --for exclude each other"},
          Refused{"ExcludedInTheOtherOrder", {"boil", "--for", "1", "--keep"}, "--keep and --for exclude each other"},
          Refused{"WithoutTheOneThatItNeeds", {"boil", "--cup", "mine"}, "--cup needs --lid"},
          Refused{"AFlagWithAValue", {"boil", "--keep=no"}, "--keep takes no value"},
          Refused{"AFlagOfEachVerbWithAValue", {"boil", "--json=false"}, "--json takes no value"},
          Refused{"HelpWithAValue", {"boil", "--help=yes"}, "--help takes no value"},
          Refused{"ForRepetitionOfAVerbThatIsNotRepeated", {"lid", "get", "--watch"}, "there is no option '--watch'"});

TEST_ROWS(InAnOptionInFront, Mistake, kNameOfRow,
          Refused{"WithoutAValue", {"--timeout"}, "missing argument: a command; 'kettle --help' lists them"},
          Refused{"WithoutACommand", {"--timeout", "2"}, "missing argument: a command; 'kettle --help' lists them"},
          Refused{
              "OfOneWordWithoutACommand", {"--timeout=2"}, "missing argument: a command; 'kettle --help' lists them"},
          Refused{"WithTheMarkForAValue",
                  {"--timeout", "--", "boil"},
                  "missing argument: a command; 'kettle --help' lists them"},
          Refused{"WithABadValue", {"--timeout", "0", "boil"}, "--timeout: 0 is outside 0.1 to 60"},
          Refused{"OfOneWordWithABadValue", {"--timeout=x", "boil"}, "--timeout: 'x' is not a number"},
          Refused{"ThatOnlyOneVerbHas", {"--for", "1", "boil"}, "there is no option '--for'"});

TEST(Mistakes, SuggestNoOptionThatTheProgramLacks)
{
    cli::Program program = kettle::program();
    program.always.clear();

    EXPECT_STREQ(mistakeIn({"--json", "lid"}, program).what(), "there is no option '--json'");
    EXPECT_STREQ(mistakeIn({"--versoin"}, program).what(), "there is no option '--versoin'; did you mean '--version'?");
}

TEST(Mistakes, BelongToTheObjectAndVerbAsFarAsTheyAreKnown)
{
    EXPECT_THAT(mistakeIn({"xyzzy"}).object, IsEmpty());
    EXPECT_EQ(mistakeIn({"lid", "xyzzy"}).object, "lid");
    EXPECT_THAT(mistakeIn({"lid", "xyzzy"}).verb, IsEmpty());
    EXPECT_EQ(mistakeIn({"lid", "set", "later", "open", "x"}).verb, "set later");
}

struct Taken : Named {
    Words words;
    const char* value;
    Words texts;
};

class Value : public hxtest::TestWithRow<Taken> {};

ROW_TEST(Value, IsTakenAsItIs)
{
    const Arguments arguments(kettle::program(), row().words);

    EXPECT_EQ(arguments.texts(row().value), row().texts);
}

TEST_ROWS(
    Of, Value, kNameOfRow, Taken{"AnOptionBehindAnEqualsSign", {"boil", "--for=2"}, "for", {"2"}},
    Taken{"AnOptionInFrontOfTheValue", {"boil", "--for", "2", "90"}, "heat", {"90"}},
    Taken{"ALetter", {"note", "add", "x", "-t", "a"}, "tag", {"a"}},
    Taken{"ALetterInOneWord", {"note", "add", "x", "-ta"}, "tag", {"a"}},
    Taken{"ARepeatedOption", {"note", "add", "x", "--tag", "a", "--tag=b", "-t", "c"}, "tag", {"a", "b", "c"}},
    Taken{"AnEmptyOption", {"note", "add", "x", "--tag=", "y"}, "tag", {""}},
    Taken{"AWordBehindAnEmptyOption", {"note", "add", "x", "--tag=", "y"}, "line", {"x", "y"}},
    Taken{"AnOptionThatHasAnEqualsSign", {"note", "add", "x", "--tag", "a="}, "tag", {"a="}},
    Taken{"AProgramWithAnEmptyOption", {"start", "radio", "--station="}, "program", {"radio", "--station="}},
    Taken{"ANegativeNumber", {"lid", "set", "later", "open", "-0.5"}, "delay", {"-0.5"}},
    Taken{"ANegativeNumberWithoutAZero", {"lid", "set", "later", "open", "-.5"}, "delay", {"-.5"}},
    Taken{"SeveralWords", {"note", "add", "a", "b", "c"}, "line", {"a", "b", "c"}},
    Taken{"AnEmptyWord", {"note", "add", ""}, "line", {""}},
    Taken{"WordsLikeVerbsAndObjects",
          {"note", "add", "add", "note", "lid", "set"},
          "line",
          {"add", "note", "lid", "set"}},
    Taken{"WordsLikeOptionsBehindTheMark", {"note", "add", "--", "--json", "-t", "--"}, "line", {"--json", "-t", "--"}},
    Taken{"ListsInBrackets", {"note", "add", "[a,b]", "++", "{}"}, "line", {"[a,b]", "++", "{}"}},
    Taken{"AListOfAnOption", {"note", "add", "x", "--tag", "[a,b]"}, "tag", {"[a,b]"}},
    Taken{"WordsThatTheShieldBeginsWith", {"note", "add", "\x1a", "\x1a-5"}, "line", {"\x1a", "\x1a-5"}},
    Taken{"ADash", {"note", "show", "-"}, "about", {"-"}},
    Taken{"AProgramWithItsOwnOptions", {"start", "radio", "-v", "--help"}, "program", {"radio", "-v", "--help"}},
    Taken{"AProgramBehindTheMark", {"start", "-v", "3", "--", "radio", "--json"}, "program", {"radio", "--json"}},
    Taken{"AnOptionInFrontOfTheCommand", {"--timeout", "2", "lid", "get"}, "timeout", {"2"}},
    Taken{"AnOptionOfOneWordInFrontOfTheCommand", {"--timeout=2", "lid", "get"}, "timeout", {"2"}},
    Taken{"SeveralInFrontOfTheCommand", {"--timeout", "2", "--user", "bob", "lid", "get"}, "user", {"bob"}},
    Taken{"SeveralInFrontInAnotherOrder", {"--user", "bob", "--timeout=2", "lid", "get"}, "timeout", {"2"}},
    Taken{"OneInFrontThatLooksLikeTheCommand", {"--user", "lid", "lid", "get"}, "user", {"lid"}});

TEST(Arguments, FindTheVerbWithTheMostWords)
{
    const Arguments later(kettle::program(), {"lid", "set", "later", "open", "1"});
    const Arguments now(kettle::program(), {"lid", "set", "open"});

    EXPECT_EQ(later.verb().name, "set later");
    EXPECT_EQ(now.verb().name, "set");
}

TEST(Arguments, TakeNamesAndNumbersOfAChoice)
{
    for (const char* const word : {"ajar", "4", "0x4"})
        EXPECT_EQ(Arguments(kettle::program(), {"lid", "set", word}).integer("position"), 4) << word;
}

TEST(Arguments, TakeNumbersOfBaseSixteen)
{
    EXPECT_EQ(Arguments(kettle::program(), {"boil", "0x3C"}).integer("heat"), 60);
}

TEST(Arguments, TakeBothEndsOfARange)
{
    EXPECT_EQ(Arguments(kettle::program(), {"boil", "20"}).integer("heat"), 20);
    EXPECT_EQ(Arguments(kettle::program(), {"boil", "100"}).integer("heat"), 100);
    EXPECT_EQ(Arguments(kettle::program(), {"lid", "set", "later", "open", "-1"}).real("delay"), -1);
    EXPECT_EQ(Arguments(kettle::program(), {"lid", "set", "later", "open", "6e1"}).real("delay"), 60);
}

TEST(Arguments, TakeAFlagOfEachVerbAnywhere)
{
    for (const Words& words : {Words{"--json", "lid", "get"}, Words{"lid", "--json", "get"},
                               Words{"lid", "get", "--json"}, Words{"--json", "lid", "get", "--json"}})
        EXPECT_TRUE(Arguments(kettle::program(), words).has("json")) << testing::PrintToString(words);
    EXPECT_FALSE(Arguments(kettle::program(), {"lid", "get"}).has("json"));
}

TEST(Arguments, LeaveAFlagBehindTheMarkToTheValues)
{
    const Arguments arguments(kettle::program(), {"note", "show", "--", "--json"});

    EXPECT_FALSE(arguments.has("json"));
    EXPECT_EQ(arguments.text("about"), "--json");
}

TEST(Arguments, HaveNoTextOfAValueThatIsLeftOut)
{
    const Arguments arguments(kettle::program(), {"boil"});

    EXPECT_FALSE(arguments.has("heat"));
    EXPECT_THAT(arguments.texts("heat"), IsEmpty());
    EXPECT_THROW((void)arguments.text("heat"), std::out_of_range);
}

TEST(Arguments, DoNotHideAMistakeInTheProgram)
{
    const Arguments arguments(kettle::program(), {"boil"});

    EXPECT_THROW((void)arguments.texts("haet"), std::logic_error);
}

TEST(ImpliedCommand, TakesUnknownFirstWords)
{
    const cli::Program program = kettle::impliedProgram();

    EXPECT_THAT(Arguments(program, {"good", "morning"}).texts("words"), ElementsAre("good", "morning"));
    EXPECT_EQ(Arguments(program, {"good", "morning"}).object().name, "say");
    EXPECT_EQ(Arguments(program, {"lid", "get"}).object().name, "lid");
}

TEST(ImpliedCommand, DoesNotTakeOptions)
{
    EXPECT_STREQ(mistakeIn({"--jsn"}, kettle::impliedProgram()).what(),
                 "there is no option '--jsn'; did you mean '--json'?");
}

TEST(CallWords, AreTheVerbAndItsValuesWithoutOptions)
{
    const Arguments arguments(kettle::program(), {"lid", "set", "later", "--json", "open", "-1"});
    const cli::Call call(kettle::program(), arguments);

    EXPECT_THAT(call.words(), ElementsAre("lid set later", "open", "-1"));
}

struct Spoken : Named {
    Words words;
    const char* verb; // null when there is none
    std::size_t used;
};

class FoundVerb : public hxtest::TestWithRow<Spoken> {};

ROW_TEST(FoundVerb, HasTheLongestNameThatTheWordsBeginWith)
{
    const auto [verb, used] = cli::findVerb(*kettle::program().find("lid"), row().words);

    ASSERT_EQ(verb != nullptr, row().verb != nullptr);
    EXPECT_EQ(used, row().used);
    if (verb != nullptr) {
        EXPECT_EQ(verb->name, row().verb);
    }
}

TEST_ROWS(Of, FoundVerb, kNameOfRow, Spoken{"OneWord", {"set"}, "set", 1},
          Spoken{"TwoWords", {"set", "later"}, "set later", 2}, Spoken{"AValueBehind", {"set", "open"}, "set", 1},
          Spoken{"TheBeginningOfAWord", {"se"}, nullptr, 0}, Spoken{"AWordThatIsLonger", {"sets"}, nullptr, 0},
          Spoken{"NoWord", {}, nullptr, 0});

TEST(OptionNamed, IsFoundByItsNameAndItsLetterUnlessItIsAFlag)
{
    const std::vector<cli::Argument> options =
        cli::optionsOf(kettle::program(), kettle::program().find("note")->verbs[0]);

    for (const char* const word : {"--tag", "-t"}) {
        const cli::Argument* const found = cli::optionNamed(options, word);
        ASSERT_NE(found, nullptr) << word;
        EXPECT_EQ(found->name, "tag");
    }
    for (const char* const word : {"--json", "-h", "--ta", "-tag", "tag", "-", "--", "--tag=x"})
        EXPECT_EQ(cli::optionNamed(options, word), nullptr) << word;
}

TEST(OptionsOfAVerb, AreItsOwnThoseOfRepetitionThoseOfAllAndHelp)
{
    const auto names = [](const char* object, std::size_t verb) {
        Words all;
        for (const cli::Argument& each : cli::optionsOf(kettle::program(), kettle::program().find(object)->verbs[verb]))
            all.emplace_back(each.name);
        return all;
    };

    EXPECT_THAT(names("boil", 0),
                ElementsAre("for", "keep", "lid", "cup", "watch", "count", "json", "timeout", "user", "help"));
    EXPECT_THAT(names("lid", 0), ElementsAre("json", "timeout", "user", "help"));
}

TEST(OptionsOfAVerb, HideThoseOfAllWithTheSameName)
{
    const cli::Verb verb{.name = "x", .help = "", .example = "", .options = {cli::text("timeout", "its own")}};

    const std::vector<cli::Argument> options = cli::optionsOf(kettle::program(), verb);

    EXPECT_EQ(std::ranges::count(options, std::string_view("timeout"), &cli::Argument::name), 1);
    EXPECT_EQ(options[0].help, "its own");
}

} // namespace arguments_test
