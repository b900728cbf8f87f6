// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/Objects.h"

#include <algorithm>

namespace hxaux {

const std::vector<const Object*>& allObjects()
{
    static const std::vector<const Object*> sorted = [] {
        std::vector<const Object*> objects{
#define HXAUX_OBJECT(name) &objects::name,
#include "tools/Objects.def"
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

std::string spoken(const Object& object, const Verb& verb)
{
    std::string words(object.name);
    if (!verb.name.empty())
        words += " " + std::string(verb.name);
    return words;
}

} // namespace hxaux
