// SPDX-License-Identifier: LicenseRef-HXAux
// The texts of --help, made from the verb table.
#pragma once

#include "tools/hxaux/Verb.h"

#include <string>
#include <utility>
#include <vector>

namespace hxaux {

std::string toolHelp();
std::string objectHelp(const Object& object);
std::string verbHelp(const Object& object, const Verb& verb);

/// "level   0 to 255: how bright": an argument's explanation in one line, without its name.
std::string explanation(const Argument& argument);
/// Every exit status and what it means.
const std::vector<std::pair<int, const char*>>& exitMeanings();

} // namespace hxaux
