// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string_view>
#include <vector>

#include "simulator/model/Clock.h"

namespace hxsim {

/// Light over time, as drawn or recorded: points between which it goes in a straight line. Two points of one time make
/// a step.
class LightProfile {
public:
    /// One point a line, "SECONDS LUX"; times do not go back. "repeat" as the last line begins again at the end.
    /// "#" begins a comment; ";" stands for a line end. Throws BadText naming the line.
    static LightProfile parse(std::string_view text);

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
