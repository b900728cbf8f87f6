// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Properties.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <numeric>
#include <utility>
#include <vector>

#include "simulator/model/Text.h"

namespace hxsim {

namespace {

/// How many letters to put in, take out or change.
std::size_t editDistance(const std::string& from, const std::string& to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t change = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({change, row[j] + 1, row[j - 1] + 1}));
        }
    }
    return row[to.size()];
}

/// The nearest name there is, if one is near.
template <typename Rows>
std::string suggestion(const std::string& name, const Rows& rows)
{
    std::size_t least = name.size() / 3 + 1;
    std::string nearest;
    for (const auto& [known, row] : rows) {
        const std::size_t distance = known.starts_with(name) ? 0 : editDistance(name, known);
        if (distance < least) {
            least = distance;
            nearest = known;
        }
    }
    return nearest.empty() ? "" : "; did you mean '" + nearest + "'?";
}

std::string shortest(double value)
{
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end.ptr};
}

} // namespace

void Properties::add(const std::string& name, Getter get, Setter set, const std::string& help)
{
    [[maybe_unused]] const bool isNew =
        properties_.emplace(name, Property{std::move(get), std::move(set), help}).second;
    assert(isNew && "two pieces of hardware use one property name");
}

void Properties::real(const std::string& name, double& value, const std::string& help)
{
    add(
        name, [&value] { return shortest(value); }, [&value](const std::string& text) { value = parseReal(text); },
        help);
}

void Properties::flag(const std::string& name, bool& value, const std::string& help)
{
    add(
        name, [&value] { return value ? "on" : "off"; }, [&value](const std::string& text) { value = parseFlag(text); },
        help);
}

void Properties::text(const std::string& name, std::string& value, const std::string& help)
{
    add(
        name, [&value] { return value; }, [&value](const std::string& text) { value = text; }, help);
}

std::string Properties::get(const std::string& name) const
{
    return find(name).get();
}

void Properties::set(const std::string& name, const std::string& value) const
{
    const Property& property = find(name);
    if (!property.set)
        throw BadText{name + " can only be read"};
    try {
        property.set(value);
    } catch (const BadText& bad) {
        throw BadText{name + ": " + bad.what()};
    }
}

std::int64_t Properties::parse(const std::string& text, std::int64_t low, std::int64_t high)
{
    return parseNumber(text, low, high);
}

const Properties::Property& Properties::find(const std::string& name) const
{
    const auto found = properties_.find(name);
    if (found == properties_.end())
        throw BadText{"the unit has no property '" + name + "'" + suggestion(name, properties_)};
    return found->second;
}

} // namespace hxsim
