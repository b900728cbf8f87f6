// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Suggestion.h"

#include <algorithm>
#include <numeric>

namespace hxsim {

namespace {

/// Edit distance: letters to insert, delete, change or swap with their neighbour.
std::size_t editDistance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> before(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t change = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({change, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[to.size()];
}

} // namespace

std::string suggestion(const std::string& name, const std::vector<std::string>& names)
{
    std::size_t least = name.size() / 3 + 1;
    std::string nearest;
    for (const std::string& known : names) {
        const std::size_t distance = !name.empty() && known.starts_with(name) ? 0 : editDistance(name, known);
        if (distance < least) {
            least = distance;
            nearest = known;
        }
    }
    return nearest.empty() ? "" : "; did you mean '" + nearest + "'?";
}

} // namespace hxsim
