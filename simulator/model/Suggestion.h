// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

namespace hxsim {

/// "; did you mean 'NAME'?" with the closest name, or nothing when none is close.
std::string suggestion(const std::string& name, const std::vector<std::string>& names);

/// The same for the keys of a map.
template <typename Map>
std::string suggestionFrom(const std::string& name, const Map& rows)
{
    std::vector<std::string> names;
    names.reserve(rows.size());
    for (const auto& [known, row] : rows)
        names.push_back(known);
    return suggestion(name, names);
}

} // namespace hxsim
