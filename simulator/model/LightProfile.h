// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <string_view>
#include <vector>

namespace hxsim {

/// Light over time: points with linear interpolation between them. Two points of equal time make a step.
class LightProfile {
public:
    /// One point per line, "SECONDS LUX"; times do not decrease. "repeat" as the last line restarts the profile at its
    /// end.
    /// "#" begins a comment; ";" is equivalent to a line end. Throws BadText naming the line.
    static LightProfile parse(std::string_view text);

    /// The same text as one line of a description.
    static std::string asLine(const std::string& text);

    [[nodiscard]] double luxAt(Time sinceStart) const;
    /// From the first to the last point.
    [[nodiscard]] Time length() const { return points_.back().time; }
    [[nodiscard]] bool repeats() const { return repeats_; }

private:
    struct Point {
        Time time;
        double lux;
    };

    void addLine(std::string_view line);

    std::vector<Point> points_;
    bool repeats_ = false;
};

} // namespace hxsim
