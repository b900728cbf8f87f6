// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/Duration.h"

#include "simulator/model/Text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

namespace hxsim {

namespace {

/// A year: longer ones are mistakes, and all of them fit the clock.
constexpr double kLongest = 366.0 * 86400;

/// Seconds, or nothing for an unknown unit.
std::optional<double> secondsPer(std::string_view unit)
{
    if (unit == "ms")
        return 0.001;
    if (unit == "s")
        return 1;
    if (unit == "m")
        return 60;
    return std::nullopt;
}

std::optional<Time> durationOf(std::string_view text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    const std::optional<double> unit = secondsPer(text.substr(static_cast<std::size_t>(end - text.data())));
    if (error != std::errc{} || !unit || text.starts_with('-') || !(number * *unit <= kLongest))
        return std::nullopt;
    return Time{std::llround(number * *unit * 1e9)};
}

} // namespace

Time parseDuration(std::string_view text)
{
    const std::optional<Time> time = durationOf(text);
    if (!time)
        throw BadText{"expected a duration (20ms, 2s, 1m), not " + inQuotes(text)};
    return *time;
}

bool isDuration(std::string_view text)
{
    return durationOf(text).has_value();
}

std::string inSeconds(Time time)
{
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.3f s", std::chrono::duration<double>(time).count());
    return text.data();
}

} // namespace hxsim
