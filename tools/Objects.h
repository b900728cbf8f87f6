// SPDX-License-Identifier: LicenseRef-HXAux
// The whole verb table.
#ifndef HXAUX_OBJECTS_H
#define HXAUX_OBJECTS_H

#include "tools/Verb.h"

#include <string>
#include <vector>

namespace hxaux {

namespace objects {
#define HXAUX_OBJECT(name) extern const Object name;
#include "tools/Objects.def"
#undef HXAUX_OBJECT
} // namespace objects

const std::vector<const Object*>& allObjects(); // sorted by name
const Object* findObject(std::string_view name);

// "backlight set", "version": how a verb is called, without its values.
std::string spoken(const Object& object, const Verb& verb);

} // namespace hxaux

#endif
