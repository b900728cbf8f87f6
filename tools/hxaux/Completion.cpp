// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Completion.h"

#include "tools/hxaux/Arguments.h"
#include "tools/hxaux/Help.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>

namespace hxaux {

namespace {

using Words = std::vector<std::string>;
using Candidates = std::vector<Candidate>;

void addOptions(Candidates& all, const Verb& verb)
{
    for (const Argument& option : optionsOf(verb))
        all.push_back({"--" + std::string(option.name), explanation(option)});
}

void addValues(Candidates& all, const Argument& argument)
{
    if (argument.names != nullptr) {
        for (const std::string& name : argument.names->all())
            all.push_back({name, std::string(argument.help)});
    }
    if (argument.live != nullptr) {
        for (const std::string& value : argument.live())
            all.push_back({value, explanation(argument)});
    }
}

// The next word of every verb whose name begins with the complete words.
void addVerbs(Candidates& all, const Object& object, const Words& finished)
{
    std::string begun;
    for (const std::string& word : finished)
        begun += word + " ";
    for (const Verb& verb : object.verbs) {
        if (!verb.name.starts_with(begun) || verb.name.size() <= begun.size())
            continue;
        const std::string_view rest = verb.name.substr(begun.size());
        all.push_back({std::string(rest.substr(0, rest.find(' '))), std::string(verb.help)});
    }
}

const Argument* optionBefore(const std::vector<Argument>& options, const Words& finished)
{
    if (finished.empty() || !finished.back().starts_with("--"))
        return nullptr;
    const auto option = std::ranges::find(options, std::string_view(finished.back()).substr(2), &Argument::name);
    return option == options.end() || option->kind == Kind::Flag ? nullptr : &*option;
}

// How many of a verb's values are among the complete words: all words but the options and their values.
std::size_t countValues(const std::vector<Argument>& options, const Words& finished)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < finished.size(); ++i) {
        if (optionBefore(options, {finished.begin(), finished.begin() + static_cast<std::ptrdiff_t>(i)}) == nullptr &&
            !finished[i].starts_with("--"))
            ++count;
    }
    return count;
}

void addForVerb(Candidates& all, const Verb& verb, const Words& finished, bool optionBegun)
{
    const std::vector<Argument> options = optionsOf(verb);
    if (const Argument* option = optionBefore(options, finished))
        return addValues(all, *option);
    if (optionBegun)
        return addOptions(all, verb);
    const std::size_t next = countValues(options, finished);
    if (next < verb.values.size())
        addValues(all, verb.values[next]);
    else if (!verb.values.empty() && verb.values.back().presence == Presence::Repeated)
        addValues(all, verb.values.back());
}

Candidates allCandidates(const Words& finished, bool optionBegun)
{
    Candidates all;
    if (finished.empty()) {
        for (const Object* object : allObjects())
            all.push_back({std::string(object->name), std::string(object->help)});
        for (const char* option : {"--help", "--version", "--json"}) {
            if (optionBegun)
                all.push_back({option, ""});
        }
        return all;
    }
    const Object* object = findObject(finished[0]);
    if (object == nullptr)
        return all;
    const Words behind(finished.begin() + 1, finished.end());
    addVerbs(all, *object, behind);
    if (const auto [verb, used] = findVerb(*object, behind); verb != nullptr)
        addForVerb(all, *verb, {behind.begin() + static_cast<std::ptrdiff_t>(used), behind.end()}, optionBegun);
    return all;
}

} // namespace

std::vector<Candidate> candidates(const std::vector<std::string>& words)
{
    const std::string last = words.empty() ? "" : words.back();
    const Words finished(words.begin(), words.empty() ? words.end() : words.end() - 1);
    Candidates all = allCandidates(finished, last.starts_with("-"));
    std::erase_if(all, [&](const Candidate& each) { return !each.word.starts_with(last); });
    std::ranges::stable_sort(all, {}, &Candidate::word);
    const auto sameWord = [](const Candidate& one, const Candidate& other) { return one.word == other.word; };
    all.erase(std::unique(all.begin(), all.end(), sameWord), all.end());
    return all;
}

} // namespace hxaux
