// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/LightProfile.h"

#include "simulator/model/Text.h"

#include <algorithm>

namespace hxsim {

namespace {

constexpr double kMostLux = 200000; // lux; the sun does not give more
constexpr double kLongest = 1e7;    // seconds

double within(const std::string& text, double largest)
{
    const double value = parseReal(text);
    if (!(value >= 0 && value <= largest))
        throw BadText{"'" + text + "' is out of range"};
    return value;
}

Time secondsToTime(double seconds)
{
    return std::chrono::duration_cast<Time>(std::chrono::duration<double>(seconds));
}

} // namespace

LightProfile LightProfile::parse(std::string_view text)
{
    LightProfile profile;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find_first_of("\n;"), text.size());
        try {
            profile.addLine(text.substr(0, end));
        } catch (const BadText& bad) {
            throw BadText{"line " + std::to_string(number) + ": " + bad.what()};
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (profile.points_.empty())
        throw BadText{"a light profile needs at least one line SECONDS LUX"};
    if (profile.repeats_ && profile.length() == Time{0})
        throw BadText{"a profile that repeats must last some time"};
    return profile;
}

void LightProfile::addLine(std::string_view line)
{
    const std::vector<std::string> parts = words(line.substr(0, line.find('#')));
    if (parts.empty())
        return;
    if (repeats_)
        throw BadText{"nothing may follow 'repeat'"};
    if (parts.size() == 1 && parts[0] == "repeat") {
        repeats_ = true;
        return;
    }
    if (parts.size() != 2)
        throw BadText{"a line is SECONDS LUX, or 'repeat'"};
    const Point point{secondsToTime(within(parts[0], kLongest)), within(parts[1], kMostLux)};
    if (points_.empty() && point.time != Time{0})
        throw BadText{"the first point's time must be 0"};
    if (!points_.empty() && point.time < points_.back().time)
        throw BadText{"time goes back"};
    points_.push_back(point);
}

double LightProfile::luxAt(Time sinceStart) const
{
    if (repeats_)
        sinceStart %= length();
    const auto after = std::upper_bound(points_.begin(), points_.end(), sinceStart,
                                        [](Time time, const Point& point) { return time < point.time; });
    if (after == points_.end())
        return points_.back().lux;
    if (after == points_.begin())
        return points_.front().lux;
    const Point& before = *(after - 1);
    const double part = static_cast<double>((sinceStart - before.time).count()) /
                        static_cast<double>((after->time - before.time).count());
    return before.lux + part * (after->lux - before.lux);
}

std::string LightProfile::asLine(const std::string& text)
{
    std::string line = "light.profile =";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string one = trimmed(text.substr(at, std::min(text.find('#', at), end) - at));
        if (!one.empty())
            line += ' ' + one + ';';
        at = end + 1;
    }
    return line;
}

} // namespace hxsim
