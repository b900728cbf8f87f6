// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Command.h"

#include <algorithm>
#include <optional>

namespace cli {

namespace {

// How many of the words are the verb's name; no match differs from an empty name.
std::optional<std::size_t> wordsOfVerb(const Verb& verb, const Words& words)
{
    std::size_t used = 0;
    std::string_view name = verb.name;
    while (!name.empty()) {
        const std::string_view word = name.substr(0, name.find(' '));
        if (used >= words.size() || words[used] != word)
            return std::nullopt;
        ++used;
        name.remove_prefix(std::min(name.size(), word.size() + 1));
    }
    return used;
}

} // namespace

Argument Argument::optional() const
{
    Argument copy = *this;
    copy.presence = Presence::Optional;
    return copy;
}

Argument Argument::repeated() const
{
    Argument copy = *this;
    copy.presence = Presence::Repeated;
    return copy;
}

Argument flag(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::Flag, .help = help, .presence = Presence::Optional};
}

Argument integer(std::string_view name, double least, double most, std::string_view unit, std::string_view help)
{
    return {.name = name, .kind = Kind::Integer, .help = help, .unit = unit, .least = least, .most = most};
}

Argument real(std::string_view name, double least, double most, std::string_view unit, std::string_view help)
{
    return {.name = name, .kind = Kind::Real, .help = help, .unit = unit, .least = least, .most = most};
}

Argument choice(std::string_view name, const Names& names, std::string_view help)
{
    return {.name = name, .kind = Kind::Choice, .help = help, .names = &names};
}

Argument text(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::Text, .help = help};
}

Argument file(std::string_view name, std::string_view help)
{
    return {.name = name, .kind = Kind::File, .help = help};
}

Object command(Verb verb)
{
    Object object{verb.name, verb.help, {}};
    verb.name = "";
    object.verbs.push_back(std::move(verb));
    return object;
}

const Object* Program::find(std::string_view word) const
{
    const auto found = std::ranges::find(objects, word, &Object::name);
    return found == objects.end() ? nullptr : *found;
}

std::pair<const Verb*, std::size_t> findVerb(const Object& object, const Words& words)
{
    std::pair<const Verb*, std::size_t> best{nullptr, 0};
    for (const Verb& verb : object.verbs) {
        const auto used = wordsOfVerb(verb, words);
        if (used && (best.first == nullptr || *used > best.second))
            best = {&verb, *used};
    }
    return best;
}

std::string spoken(const Object& object, const Verb& verb)
{
    std::string words(object.name);
    if (!verb.name.empty())
        words += " " + std::string(verb.name);
    return words;
}

std::vector<Argument> optionsOf(const Program& program, const Verb& verb)
{
    std::vector<Argument> options = verb.options;
    if (verb.repeat == Repeat::Watch)
        options.insert(options.end(), program.whenRepeated.begin(), program.whenRepeated.end());
    for (const Argument& each : program.always)
        if (std::ranges::find(options, each.name, &Argument::name) == options.end()) // the verb's own one counts
            options.push_back(each);
    Argument help = flag("help", "prints this help");
    help.letter = 'h';
    options.push_back(help);
    return options;
}

const Argument* optionNamed(const std::vector<Argument>& options, std::string_view word)
{
    const auto isIt = [&](const Argument& each) {
        const bool isShort = word.size() == 2 && word[0] == '-' && word[1] == each.letter;
        return isShort || (word.starts_with("--") && word.substr(2) == each.name);
    };
    const auto option = std::ranges::find_if(options, isIt);
    return option == options.end() || option->kind == Kind::Flag ? nullptr : &*option;
}

} // namespace cli
