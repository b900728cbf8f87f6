// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Suggestion.h"

#include "tools/cli/NearNames.h"

namespace hxsim {

std::string suggestion(const std::string& name, const std::vector<std::string>& names)
{
    std::size_t least = name.size() / 3 + 1;
    std::string nearest;
    for (const std::string& known : names) {
        const std::size_t distance = !name.empty() && known.starts_with(name) ? 0 : cli::editDistance(name, known);
        if (distance < least) {
            least = distance;
            nearest = known;
        }
    }
    return nearest.empty() ? "" : "; did you mean '" + nearest + "'?";
}

} // namespace hxsim
