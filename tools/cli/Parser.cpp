// SPDX-License-Identifier: LicenseRef-HXAux
// Compiles a verb's row into the parser's subcommands and options. The only file that includes the parser.
#include "tools/cli/Arguments.h"
#include "tools/cli/Help.h"
#include "tools/cli/NearNames.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace cli {

namespace {

// The parser would read these as options, a list or the end of a subcommand: they pass it behind this character.
constexpr char kShield = '\x1a';

std::string shielded(const std::string& word)
{
    const bool isNumber =
        word.size() > 1 && word[0] == '-' && (std::isdigit(static_cast<unsigned char>(word[1])) != 0 || word[1] == '.');
    if (word.starts_with("--") && word.find('=') == word.size() - 1)
        return word + kShield; // an option with an empty value
    return isNumber || word == "++" || word.starts_with('[') || word.starts_with(kShield) ? kShield + word : word;
}

std::string unshielded(const std::string& word)
{
    if (word.starts_with("--") && word.find('=') == word.size() - 2 && word.back() == kShield)
        return word.substr(0, word.size() - 1);
    return word.starts_with(kShield) ? word.substr(1) : word;
}

bool isNumber(const Argument& argument)
{
    return argument.kind == Kind::Integer || argument.kind == Kind::Real;
}

// Why a value is refused; empty when it is not.
std::string problemOf(const Argument& argument, const std::string& text)
{
    if (argument.kind == Kind::Choice && !argument.names->valueOf(text))
        return "'" + text + "' is not one of " + allowedValues(argument) + suggestion(text, argument.names->all());
    if (argument.problem != nullptr)
        return argument.problem(text);
    if (!isNumber(argument))
        return {};
    const auto number = numberOf(argument, text);
    if (!number)
        return "'" + text + (argument.kind == Kind::Real ? "' is not a number" : "' is not an integer");
    if (*number < argument.least || *number > argument.most)
        return text + " is outside " + allowedValues(argument);
    return {};
}

std::string join(const Words& words)
{
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

// "there is no verb 'sett'; did you mean 'set'?", or a list of all when none is near.
std::string unknown(const std::string& kind, const std::string& word, const Words& known)
{
    const std::string near = suggestion(word, known);
    return "there is no " + kind + " '" + word + "'" + (near.empty() ? "; the " + kind + "s are " + join(known) : near);
}

// How many words the option of every verb has that stands in front, with its value; 0 when none does.
std::size_t optionInFront(const Program& program, const Words& words)
{
    for (const Argument& each : program.always) {
        const std::string name = "--" + std::string(each.name);
        if (each.kind != Kind::Flag && (words[0] == name || words[0].starts_with(name + "=")))
            return words[0] == name ? 2 : 1;
    }
    return 0;
}

// The options in front of the object are meant as well as those behind it.
void moveBehindTheObject(const Program& program, Words& words)
{
    const auto end = std::ranges::find(words, "--");
    for (auto last = end; last != words.begin();) {
        const auto size = static_cast<std::ptrdiff_t>(optionInFront(program, words));
        if (size == 0 || last - words.begin() <= size)
            return;
        std::rotate(words.begin(), words.begin() + size, end);
        last -= size;
    }
}

const Object& objectOf(const Program& program, Words& words)
{
    const std::string kind(program.kind);
    const std::string help = "'" + std::string(program.name) + " --help'";
    if (!program.usual.empty() && (words.empty() || words[0].starts_with("-")))
        words.insert(words.begin(), std::string(program.usual));
    if (words.empty() || optionInFront(program, words) != 0)
        throw UsageError("missing argument: " + std::string(kind == "object" ? "an " : "a ") + kind + "; " + help +
                         " lists them");
    if (const Object* const object = program.find(words[0]))
        return *object;
    if (words[0].starts_with("-")) {
        Words known{"--help", "--version"};
        for (const Argument& each : program.always)
            known.push_back("--" + std::string(each.name));
        throw UsageError("there is no option '" + words[0] + "'" + suggestion(words[0], known));
    }
    if (!program.implied.empty()) {
        words.insert(words.begin(), std::string(program.implied));
        return *program.find(program.implied);
    }
    Words names;
    for (const Object* each : program.objects)
        names.emplace_back(each->name);
    throw UsageError(unknown(kind, words[0], names));
}

const Verb& verbOf(const Object& object, const Words& words)
{
    if (const Verb* const verb = findVerb(object, words).first)
        return *verb;
    Words names;
    for (const Verb& verb : object.verbs)
        names.emplace_back(verb.name);
    if (words.empty() || words[0].starts_with("--"))
        throw UsageError("missing argument: a verb, one of " + join(names));
    throw UsageError(unknown("verb", words[0], names));
}

} // namespace

/// The parser of one verb.
class Parser {
public:
    Parser(const Program& program, Arguments& arguments);

    void parse(Words words);

private:
    CLI::Option* add(const Argument& row, bool isOption);
    void addRules();
    void refuseExtraWords() const;
    void refuse(const CLI::ParseError& mistake) const;
    [[nodiscard]] std::string inWords(const CLI::ParseError& mistake) const;
    [[nodiscard]] std::string usage() const { return "; usage: " + usageLine(program_, *call_.object_, *call_.verb_); }
    [[nodiscard]] std::string nameOf(const Argument& row) const;

    const Program& program_;
    Arguments& call_;
    CLI::App app_;
    CLI::App* command_ = &app_;
    std::vector<std::pair<Argument, CLI::Option*>> options_;
};

Parser::Parser(const Program& program, Arguments& arguments) : program_(program), call_(arguments)
{
    std::istringstream path(spoken(*call_.object_, *call_.verb_));
    for (std::string word; path >> word;) {
        command_->require_subcommand(1);
        command_ = command_->add_subcommand(word);
        command_->set_help_flag();
    }
    app_.allow_extras();
    command_->allow_extras();
    for (const Argument& value : call_.verb_->values)
        options_.emplace_back(value, add(value, false));
    for (const Argument& option : optionsOf(program, *call_.verb_))
        options_.emplace_back(option, add(option, true));
    addRules();
    const auto& values = call_.verb_->values;
    command_->positionals_at_end(values.size() == 1 && values[0].kind == Kind::Program);
}

CLI::Option* Parser::add(const Argument& row, bool isOption)
{
    const std::string name(row.name);
    const std::string names =
        isOption ? "--" + name + (row.letter != '\0' ? std::string(",-") + row.letter : "") : name;
    call_.rows_.emplace(name, row);
    if (row.kind == Kind::Flag)
        return command_->add_flag(names)->disable_flag_override();
    CLI::Option* const option =
        command_->add_option(names)->check([row](const std::string& text) { return problemOf(row, unshielded(text)); });
    const bool repeated = row.presence == Presence::Repeated || row.kind == Kind::Program;
    if (!isOption && repeated)
        option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args();
    else
        option->expected(1)->multi_option_policy(repeated ? CLI::MultiOptionPolicy::TakeAll
                                                          : CLI::MultiOptionPolicy::Throw);
    return option->required(!isOption && row.presence != Presence::Optional);
}

void Parser::addRules()
{
    const auto optionOf = [this](std::string_view name) {
        return std::ranges::find(options_, name, [](const auto& each) { return each.first.name; })->second;
    };
    for (const auto& [row, option] : options_) {
        for (const std::string_view other : row.excludes)
            option->excludes(optionOf(other));
        if (!row.needs.empty())
            option->needs(optionOf(row.needs));
    }
}

std::string Parser::nameOf(const Argument& row) const
{
    const auto& values = call_.verb_->values;
    const bool isValue = std::ranges::find(values, row.name, &Argument::name) != values.end();
    return isValue ? valueName(row) : "--" + std::string(row.name);
}

// An unknown option is the more helpful message than what is missing because of it.
void Parser::refuseExtraWords() const
{
    Words extra = app_.remaining(true);
    std::erase(extra, "--"); // after it everything is a value
    if (extra.empty())
        return;
    const auto isOption = [](const std::string& word) { return word.size() > 1 && word[0] == '-'; };
    const auto option = std::ranges::find_if(extra, isOption);
    if (option == extra.end())
        throw UsageError("too many arguments: '" + unshielded(extra[0]) + "'" + usage());
    Words known;
    for (const Argument& each : optionsOf(program_, *call_.verb_))
        known.push_back("--" + std::string(each.name));
    throw UsageError("there is no option '" + unshielded(*option) + "'" + suggestion(*option, known));
}

// The parser's exceptions in our words.
std::string Parser::inWords(const CLI::ParseError& mistake) const
{
    std::string text = mistake.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&mistake) != nullptr) {
        if (text.find("flag override") != std::string::npos)
            return "--" + text.substr(0, text.find(' ')) + " takes no value";
        return text.substr(0, text.find(':')) +
               (text.find("At Most") != std::string::npos ? " is given twice" : " needs a value");
    }
    for (const auto& [row, option] : options_) {
        if (option->get_required() && option->count() == 0)
            return "missing argument: " + std::string(row.name) + usage();
        for (const std::string_view other : row.excludes)
            for (const auto& [otherRow, otherOption] : options_)
                if (otherRow.name == other && option->count() != 0 && otherOption->count() != 0)
                    return nameOf(row) + " and " + nameOf(otherRow) + " exclude each other";
        for (const auto& [otherRow, otherOption] : options_)
            if (otherRow.name == row.needs && option->count() != 0 && otherOption->count() == 0)
                return nameOf(row) + " needs " + nameOf(otherRow);
    }
    return text;
}

void Parser::refuse(const CLI::ParseError& mistake) const
{
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&mistake) == nullptr)
        refuseExtraWords();
    if (dynamic_cast<const CLI::ValidationError*>(&mistake) != nullptr)
        throw UsageError(mistake.what());
    throw UsageError(inWords(mistake));
}

void Parser::parse(Words words)
{
    const auto mark = std::ranges::find(words, "--");
    std::transform(words.begin(), mark, words.begin(), shielded);
    std::for_each(mark == words.end() ? mark : mark + 1, words.end(), [](std::string& word) { word = kShield + word; });
    std::ranges::reverse(words); // the parser takes them in reverse
    try {
        app_.parse(std::move(words));
    } catch (const CLI::ParseError& mistake) {
        refuse(mistake);
    }
    refuseExtraWords();
    for (const auto& [row, option] : options_) {
        Words texts = option->results();
        std::ranges::transform(texts, texts.begin(), unshielded);
        if (option->count() != 0)
            call_.values_[std::string(row.name)] = std::move(texts);
    }
}

Arguments::Arguments(const Program& program, const Words& words)
{
    Words rest = words;
    const auto endOfOptions = [&] { return std::ranges::find(rest, "--"); };
    for (const Argument& each : program.always) {
        const auto isIt = [&](const std::string& word) { return word == "--" + std::string(each.name); };
        const auto found = std::find_if(rest.begin(), endOfOptions(), isIt);
        if (each.kind != Kind::Flag || found == endOfOptions())
            continue;
        values_[std::string(each.name)] = {"yes"};
        rest.erase(std::remove_if(found, endOfOptions(), isIt), endOfOptions());
    }
    moveBehindTheObject(program, rest);
    std::string object;
    std::string verb;
    try {
        object_ = &objectOf(program, rest);
        object = object_->name;
        verb_ = &verbOf(*object_, {rest.begin() + 1, rest.end()});
        verb = verb_->name;
        Parser(program, *this).parse(std::move(rest));
    } catch (UsageError& mistake) {
        mistake.object = object;
        mistake.verb = verb;
        throw;
    }
}

} // namespace cli
