// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Arguments.h"

#include "tools/cli/NearNames.h"
#include "tools/hxaux/Objects.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

namespace hxaux {

namespace {

// A negative value must not look like an option to the parser: it is passed with a minus sign (U+2212).
constexpr std::string_view kMinus = "\xE2\x88\x92";

bool isNegativeNumber(const std::string& word)
{
    return word.size() > 1 && word[0] == '-' &&
           (std::isdigit(static_cast<unsigned char>(word[1])) != 0 || word[1] == '.');
}

std::string unprotected(const std::string& word)
{
    return word.starts_with(kMinus) ? "-" + word.substr(kMinus.size()) : word;
}

std::string numberText(double value)
{
    std::ostringstream text;
    text << std::setprecision(15) << value;
    return text.str();
}

bool isNumber(const Argument& argument)
{
    return argument.kind == Kind::Integer || argument.kind == Kind::Real;
}

bool hasRange(const Argument& argument)
{
    return argument.least != std::numeric_limits<double>::lowest() ||
           argument.most != std::numeric_limits<double>::max();
}

std::optional<double> numberOf(const Argument& argument, const std::string& text)
{
    if (argument.names != nullptr) {
        if (const auto named = argument.names->valueOf(text))
            return static_cast<double>(*named);
    }
    if (argument.kind == Kind::Real)
        return toReal(text);
    const auto whole = toInteger(text);
    return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
}

void checkValue(const Argument& argument, const std::string& text)
{
    const std::string name(argument.name);
    if (argument.kind == Kind::Choice && !argument.names->valueOf(text))
        throw UsageError(name + ": '" + text + "' is not one of " + allowedValues(argument) +
                         cli::suggestion(text, argument.names->all()));
    if (!isNumber(argument))
        return;
    const auto number = numberOf(argument, text);
    if (!number)
        throw UsageError(name + ": '" + text +
                         (argument.kind == Kind::Real ? "' is not a number" : "' is not an integer"));
    if (*number < argument.least || *number > argument.most)
        throw UsageError(name + ": " + text + " is outside " + allowedValues(argument));
}

void refuseUnknownOptions(const Verb& verb, std::vector<std::string> unknown)
{
    std::erase(unknown, "--"); // after it everything is a value
    if (unknown.empty())
        return;
    std::vector<std::string> known;
    for (const Argument& option : optionsOf(verb))
        known.push_back("--" + std::string(option.name));
    throw UsageError("there is no option '" + unknown[0] + "'" + cli::suggestion(unknown[0], known));
}

// Rewords "--every: 1 required TEXT missing" for users.
std::string optionMistake(const CLI::ParseError& mistake)
{
    std::string text = mistake.what();
    const std::size_t colon = text.find(':');
    const std::string option = text.substr(0, colon);
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&mistake) != nullptr && colon != std::string::npos)
        return option + (text.find("At Most") != std::string::npos ? " is given twice" : " needs a value");
    return text;
}

} // namespace

std::vector<Argument> commonOptions(const Verb& verb)
{
    std::vector<Argument> options;
    if (verb.repeat == Repeat::Watch) {
        options.push_back(flag("watch", "repeats until Ctrl-C"));
        options.push_back(
            real("every", 0.01, 86400, "s", "how long --watch waits in between; 1 s if not given").optional());
        options.push_back(integer("count", 1, 1e9, "", "ends --watch after so many times").optional());
    }
    options.push_back(flag("json", "prints one line of JSON per result"));
    options.push_back(flag("help", "prints this help"));
    return options;
}

std::vector<Argument> optionsOf(const Verb& verb)
{
    std::vector<Argument> options = verb.options;
    for (const Argument& option : commonOptions(verb))
        options.push_back(option);
    return options;
}

std::string metavariable(const Argument& argument)
{
    std::string name;
    for (const char character : argument.name)
        name += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    if (argument.presence == Presence::Optional)
        return "[" + name + "]";
    return argument.presence == Presence::Repeated ? name + "..." : name;
}

std::string usageLine(const Object& object, const Verb& verb)
{
    std::string line = "hxaux " + spoken(object, verb);
    for (const Argument& value : verb.values)
        line += " " + metavariable(value);
    return line;
}

std::string allowedValues(const Argument& argument)
{
    std::string allowed;
    if (argument.names != nullptr) {
        for (const std::string& name : argument.names->all())
            allowed += (allowed.empty() ? "" : ", ") + name;
    }
    if (!isNumber(argument) || !hasRange(argument))
        return allowed;
    const std::string range = numberText(argument.least) + " to " + numberText(argument.most);
    return allowed.empty() ? range : allowed + ", or " + range;
}

Arguments::Arguments(const Object& object, const Verb& verb, const std::vector<std::string>& words)
    : how_(usageLine(object, verb))
{
    for (const Argument& argument : verb.values)
        rows_.emplace(argument.name, argument);
    for (const Argument& argument : optionsOf(verb))
        rows_.emplace(argument.name, argument);
    split(verb, words);
    if (help_)
        return;
    for (const Argument& argument : verb.values) {
        if (argument.presence != Presence::Optional && !has(argument.name))
            throw UsageError("missing argument: " + std::string(argument.name) + "; usage: " + how_);
    }
    for (const auto& [name, argument] : rows_)
        check(argument);
}

void Arguments::split(const Verb& verb, std::vector<std::string> words)
{
    CLI::App parser;
    parser.set_help_flag();
    parser.allow_extras();
    std::vector<std::string> positional;
    parser.add_option("values", positional)->expected(0, CLI::detail::expected_max_vector_size);
    std::map<std::string, bool> flags;
    for (const Argument& option : optionsOf(verb)) {
        const std::string name(option.name);
        if (option.kind == Kind::Flag)
            parser.add_flag((name == "help" ? "-h,--" : "--") + name, flags[name]);
        else
            parser.add_option("--" + name, values_[name])
                ->expected(1)
                ->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    }
    for (std::string& word : words) {
        if (isNegativeNumber(word))
            word = std::string(kMinus) + word.substr(1);
    }
    std::ranges::reverse(words); // the parser takes them in reverse
    try {
        parser.parse(std::move(words));
    } catch (const CLI::ParseError& mistake) {
        throw UsageError(optionMistake(mistake));
    }
    for (const auto& [name, given] : flags) {
        if (given)
            values_[name] = {"yes"};
    }
    help_ = has("help");
    json_ = has("json");
    if (!help_)
        refuseUnknownOptions(verb, parser.remaining());
    distribute(verb, positional);
    for (auto& [name, texts] : values_)
        std::ranges::transform(texts, texts.begin(), unprotected);
}

// Assigns the positional words to the verb's values in order.
void Arguments::distribute(const Verb& verb, const std::vector<std::string>& words)
{
    auto word = words.begin();
    for (const Argument& value : verb.values) {
        auto& texts = values_[std::string(value.name)];
        const auto end = value.presence == Presence::Repeated || word == words.end() ? words.end() : word + 1;
        texts.assign(word, end);
        word = end;
    }
    if (word != words.end() && !help_)
        throw UsageError("too many arguments: '" + unprotected(*word) + "'; usage: " + how_);
}

void Arguments::check(const Argument& argument) const
{
    if (!has(argument.name))
        return;
    for (const std::string& text : texts(argument.name))
        checkValue(argument, text);
}

bool Arguments::has(std::string_view name) const
{
    const auto found = values_.find(name);
    return found != values_.end() && !found->second.empty();
}

const std::vector<std::string>& Arguments::texts(std::string_view name) const
{
    const auto found = values_.find(name);
    if (found == values_.end())
        throw std::logic_error("the verb's row has no value '" + std::string(name) + "'");
    return found->second;
}

const std::string& Arguments::text(std::string_view name) const
{
    return texts(name).at(0);
}

long long Arguments::integer(std::string_view name) const
{
    return static_cast<long long>(real(name));
}

double Arguments::real(std::string_view name) const
{
    return numberOf(rows_.find(name)->second, text(name)).value();
}

} // namespace hxaux
