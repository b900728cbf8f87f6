// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/plot/LightPlot.h"

#include "simulator/model/LightTrace.h"
#include "simulator/plot/Xml.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace hxsim {

namespace {

using xml::formatted;

// Positions of the two panels in the picture.
constexpr double kWidth = 920;
constexpr double kHeight = 560;
constexpr double kLeft = 80;
constexpr double kRight = kWidth - 20;
constexpr double kLightTop = 50;
constexpr double kLightBottom = 270;
constexpr double kLevelTop = 310;
constexpr double kLevelBottom = 510;
constexpr double kDimmest = 0.1; // lux; everything below is drawn as zero, one row under the lowest decade
constexpr double kEdge = 20;     // labels nearer to the right end than this end there

constexpr const char* kStyle = "<style>text{font:13px sans-serif;fill:#333}.t{font-size:16px}.g{stroke:#ddd}"
                               ".m{text-anchor:middle}.e{text-anchor:end}"
                               ".s{stroke:#e69f00;stroke-width:2;fill:none}.r{fill:#0072b2}"
                               ".l{stroke:#009e73;stroke-width:2;fill:none}</style>\n";

/// Step between grid lines, so that there are about eight of them.
double niceStep(double range)
{
    constexpr double kSteps[] = {0.5, 1,   2,    5,    10,   20,   30,    60,    120,
                                 300, 600, 1200, 1800, 3600, 7200, 10800, 21600, 43200};
    for (const double step : kSteps)
        if (range / step <= 9)
            return step;
    return std::ceil(range / 9 / 86400) * 86400;
}

std::string timeLabel(double seconds, double step)
{
    if (step >= 3600)
        return formatted("%.0f h", seconds / 3600);
    if (step >= 60)
        return formatted("%.0f min", seconds / 60);
    return formatted("%g s", seconds);
}

class Picture {
public:
    Picture(const LightTrace& trace, const std::string& title, std::function<double(double)> luxAt)
        : trace_{trace}, luxAt_{std::move(luxAt)}
    {
        if (!trace.readings.empty())
            end_ = std::max(end_, std::ceil(trace.readings.back().seconds));
        if (!trace.levels.empty())
            end_ = std::max(end_, std::ceil(trace.levels.back().seconds));
        double dimmest = 10;
        double brightest = 10;
        for (const LightTrace::Reading& reading : trace.readings) {
            for (const double lux : {reading.luxSet, reading.luxReported}) {
                hasZero_ = hasZero_ || lux < kDimmest;
                dimmest = lux < kDimmest ? dimmest : std::min(dimmest, lux);
                brightest = std::max(brightest, lux);
            }
        }
        lowestDecade_ = std::floor(std::log10(dimmest));
        lowestRow_ = lowestDecade_ - (hasZero_ ? 1 : 0);
        decades_ = std::max(std::ceil(std::log10(brightest)), lowestDecade_ + 1);
        frame(title);
    }

    std::string drawn()
    {
        timeGrid();
        lightGrid();
        levelGrid();
        light();
        level();
        return text_ + "</svg>\n";
    }

private:
    [[nodiscard]] double x(double seconds) const { return kLeft + seconds / end_ * (kRight - kLeft); }
    [[nodiscard]] double yOfLux(double lux) const
    {
        const double row = lux < kDimmest ? lowestRow_ : std::max(lowestDecade_, std::log10(lux));
        return kLightBottom - (row - lowestRow_) / (decades_ - lowestRow_) * (kLightBottom - kLightTop);
    }
    [[nodiscard]] static double yOfLevel(double value)
    {
        return kLevelBottom - value / 255 * (kLevelBottom - kLevelTop);
    }

    void frame(const std::string& title)
    {
        text_ =
            formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%g\" height=\"%g\" viewBox=\"0 0 %g %g\">\n",
                      kWidth, kHeight, kWidth, kHeight);
        text_ += kStyle;
        text_ += formatted("<rect width=\"%g\" height=\"%g\" fill=\"#fff\"/>\n", kWidth, kHeight);
        label(kLeft, 24, "t", xml::text(title));
        label(kRight, 40, "e", "line: light as set, dots: as the sensor reports it");
        label(kRight, kLevelTop - 8, "e", "line: level of the backlight as written");
    }
    void label(double atX, double atY, const char* kind, const std::string& text)
    {
        text_ += formatted("<text x=\"%.1f\" y=\"%.1f\" class=\"%s\">", atX, atY, kind) + text + "</text>\n";
    }
    void line(double x1, double y1, double x2, double y2)
    {
        text_ += formatted("<line class=\"g\" x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>\n", x1, y1, x2, y2);
    }

    void timeGrid()
    {
        const double step = niceStep(end_);
        for (int count = 0; count * step <= end_; ++count) {
            const double seconds = count * step;
            line(x(seconds), kLightTop, x(seconds), kLightBottom);
            line(x(seconds), kLevelTop, x(seconds), kLevelBottom);
            const bool atTheEnd = x(seconds) > kRight - kEdge;
            label(atTheEnd ? kRight : x(seconds), kLevelBottom + 20, atTheEnd ? "e" : "m", timeLabel(seconds, step));
        }
        label(kRight, kHeight - 8, "e", "time since the unit started");
    }
    void lightGrid()
    {
        for (int decade = static_cast<int>(lowestDecade_); decade <= static_cast<int>(decades_); ++decade)
            rowOfLight(std::pow(10, decade));
        if (hasZero_)
            rowOfLight(0);
    }
    void rowOfLight(double lux)
    {
        const double y = yOfLux(lux);
        line(kLeft, y, kRight, y);
        label(kLeft - 7, y + 4, "e", formatted("%.10g lux", lux));
    }
    void levelGrid()
    {
        for (const int value : {0, 50, 100, 150, 200, 254}) {
            line(kLeft, yOfLevel(value), kRight, yOfLevel(value));
            label(kLeft - 7, yOfLevel(value) + 4, "e", std::to_string(value));
        }
    }
    void light()
    {
        text_ += "<polyline class=\"s\" points=\"" + thinned(luxAt_ ? lightByTime() : lightByReading()) + "\"/>\n";
        readings();
    }
    std::string lightByTime()
    {
        constexpr int kPoints = 1600; // two for each column of the picture
        std::string line;
        for (int i = 0; i <= kPoints; ++i) {
            const double seconds = end_ * i / kPoints;
            line += formatted("%.1f,%.1f ", x(seconds), yOfLux(luxAt_(seconds)));
        }
        return line;
    }
    std::string lightByReading()
    {
        std::string line;
        for (const LightTrace::Reading& reading : trace_.readings)
            line += formatted("%.1f,%.1f ", x(reading.seconds), yOfLux(reading.luxSet));
        return line;
    }
    /// Points closer than half a dot are left out; a day has a hundred thousand readings.
    void readings()
    {
        double lastX = -1;
        double lastY = -1;
        for (const LightTrace::Reading& reading : trace_.readings) {
            const double atX = x(reading.seconds);
            const double atY = yOfLux(reading.luxReported);
            if (std::hypot(atX - lastX, atY - lastY) < 0.8)
                continue;
            lastX = atX;
            lastY = atY;
            text_ += formatted("<circle class=\"r\" cx=\"%.1f\" cy=\"%.1f\" r=\"1.6\"/>\n", atX, atY);
        }
    }
    void level()
    {
        if (trace_.levels.empty())
            return;
        std::string line;
        double before = trace_.levels.front().level;
        for (const LightTrace::Level& one : trace_.levels) {
            line += formatted("%.1f,%.1f ", x(one.seconds), yOfLevel(before));
            line += formatted("%.1f,%.1f ", x(one.seconds), yOfLevel(one.level));
            before = one.level;
        }
        line += formatted("%.1f,%.1f ", kRight, yOfLevel(before));
        text_ += "<polyline class=\"l\" points=\"" + thinned(line) + "\"/>\n";
    }
    /// Without points that repeat the one before.
    static std::string thinned(const std::string& points)
    {
        std::string result;
        std::string last;
        for (std::size_t at = 0; at < points.size();) {
            const std::size_t end = points.find(' ', at) + 1;
            const std::string point = points.substr(at, end - at);
            if (point != last)
                result += point;
            last = point;
            at = end;
        }
        return result;
    }

    const LightTrace& trace_;
    std::function<double(double)> luxAt_;
    double end_ = 1; ///< seconds; the axis begins at 0
    bool hasZero_ = false;
    double lowestDecade_ = 0;
    double lowestRow_ = 0;
    double decades_ = 1; ///< the highest one
    std::string text_;
};

} // namespace

std::string lightPlot(const LightTrace& trace, const std::string& title,
                      const std::function<double(double seconds)>& luxAt)
{
    return Picture{trace, title, luxAt}.drawn();
}

} // namespace hxsim
