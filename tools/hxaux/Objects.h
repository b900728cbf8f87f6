// SPDX-License-Identifier: LicenseRef-HXAux
// The whole table of commands.
#pragma once

#include "tools/hxaux/Verb.h"

namespace hxaux {

namespace objects {
#define HXAUX_OBJECT(name) extern const Object name;
#include "tools/hxaux/Objects.def"
#undef HXAUX_OBJECT
} // namespace objects

const cli::Program& program();

} // namespace hxaux
