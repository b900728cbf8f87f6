// SPDX-License-Identifier: LicenseRef-HXAux
// The whole verb table.
#pragma once

#include "tools/hxaux/Verb.h"

#include <string>
#include <utility>
#include <vector>

namespace hxaux {

namespace objects {
#define HXAUX_OBJECT(name) extern const Object name;
#include "tools/hxaux/Objects.def"
#undef HXAUX_OBJECT
} // namespace objects

const std::vector<const Object*>& allObjects(); ///< sorted by name
const Object* findObject(std::string_view name);

/// The verb with the longest name that the words begin with, and the number of its words; null when none matches.
std::pair<const Verb*, std::size_t> findVerb(const Object& object, const std::vector<std::string>& words);

/// "backlight set", "version": how a verb is called, without its values.
std::string spoken(const Object& object, const Verb& verb);

} // namespace hxaux
