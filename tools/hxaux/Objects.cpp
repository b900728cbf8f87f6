// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Objects.h"

#include <algorithm>
#include <optional>

namespace hxaux {

namespace {

// How many of the words are the verb's name; no match differs from an empty name.
std::optional<std::size_t> wordsOfVerb(const Verb& verb, const std::vector<std::string>& words)
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

const std::vector<const Object*>& allObjects()
{
    static const std::vector<const Object*> sorted = [] {
        std::vector<const Object*> objects{
#define HXAUX_OBJECT(name) &objects::name,
#include "tools/hxaux/Objects.def"
#undef HXAUX_OBJECT
        };
        std::ranges::sort(objects, {}, &Object::name);
        return objects;
    }();
    return sorted;
}

const Object* findObject(std::string_view name)
{
    const auto& all = allObjects();
    const auto found = std::ranges::find(all, name, &Object::name);
    return found == all.end() ? nullptr : *found;
}

std::pair<const Verb*, std::size_t> findVerb(const Object& object, const std::vector<std::string>& words)
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

} // namespace hxaux
