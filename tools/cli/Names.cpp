// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/cli/Names.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace cli {

const Names kOnOff = namesOf<int>({{0, "off"}, {1, "on"}});

namespace {

// Base 16 after "0x", else 10; a sign is allowed.
std::optional<long long> integerIn(std::string_view digits)
{
    const bool hexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (hexadecimal)
        digits.remove_prefix(2);
    if (hexadecimal && digits.starts_with("-"))
        return std::nullopt;
    long long value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    return value;
}

} // namespace

std::optional<long long> toInteger(std::string_view text)
{
    return integerIn(text);
}

std::optional<double> toReal(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<long long> Names::valueOf(std::string_view name) const
{
    const auto row = std::ranges::find(rows_, name, [](const auto& each) { return each.second; });
    if (row != rows_.end())
        return row->first;
    const auto number = toInteger(name);
    const bool known = number && std::ranges::any_of(rows_, [&](const auto& each) { return each.first == *number; });
    return known ? number : std::nullopt;
}

std::vector<std::string> Names::all() const
{
    std::vector<std::string> names;
    for (const auto& row : rows_)
        names.emplace_back(row.second);
    return names;
}

std::string Names::nameOfNumber(long long value) const
{
    const auto row = std::ranges::find(rows_, value, [](const auto& each) { return each.first; });
    return row != rows_.end() ? std::string(row->second) : std::to_string(value);
}

} // namespace cli
