// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/NearNames.h"

#include <algorithm>
#include <numeric>

namespace cli {

std::size_t editDistance(std::string_view from, std::string_view to)
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

std::vector<std::string> nearNames(std::string_view word, const std::vector<std::string>& candidates)
{
    const std::size_t allowed = std::max<std::size_t>(1, word.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> near;
    for (const std::string& candidate : candidates) {
        const bool begins = word.size() > 1 && candidate.starts_with(word);
        const std::size_t distance = begins ? 0 : editDistance(word, candidate);
        if (distance <= allowed)
            near.emplace_back(distance, candidate);
    }
    std::ranges::stable_sort(near, {}, &std::pair<std::size_t, std::string>::first);
    near.resize(std::min<std::size_t>(near.size(), 3));
    std::vector<std::string> names;
    names.reserve(near.size());
    for (auto& [distance, name] : near)
        names.push_back(std::move(name));
    return names;
}

std::string suggestion(std::string_view word, const std::vector<std::string>& candidates)
{
    const std::vector<std::string> names = nearNames(word, candidates);
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "; did you mean '" : " or '") + name + "'";
    return text.empty() ? text : text + "?";
}

} // namespace cli
