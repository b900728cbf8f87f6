// SPDX-License-Identifier: LicenseRef-HXAux
// The picture of a run: one panel for each property, and a line through all of them for each expectation.
#include "simulator/plot/Xml.h"
#include "simulator/scenario/ScenarioReport.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace hxsim {

namespace {

using xml::formatted;

constexpr double kWidth = 920;
constexpr double kLeft = 160;
constexpr double kRight = kWidth - 20;
constexpr double kTop = 50;
constexpr double kPanel = 70; ///< height of a panel
constexpr double kGap = 20;

constexpr const char* kStyle = "<style>text{font:12px sans-serif;fill:#333}.f{fill:none;stroke:#ddd}"
                               ".v{stroke:#0072b2;stroke-width:2;fill:none}.ok{stroke:#009e73}"
                               ".bad{stroke:#d55e00;stroke-width:2}</style>\n";

/// Switches are 0 and 1; other texts have no height.
std::optional<double> heightOf(const std::string& value)
{
    if (value == "on" || value == "off")
        return value == "on" ? 1 : 0;
    double number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    return error == std::errc{} && end == value.data() + value.size() ? std::optional{number} : std::nullopt;
}

struct Step {
    double seconds;
    double value;
};

std::vector<Step> stepsOf(const std::vector<std::pair<Time, std::string>>& values)
{
    std::vector<Step> steps;
    for (const auto& [time, text] : values)
        if (const std::optional<double> value = heightOf(text))
            steps.push_back({std::chrono::duration<double>(time).count(), *value});
    return steps;
}

class Plot {
public:
    explicit Plot(const ScenarioResult& result)
        : length_{std::max(std::chrono::duration<double>(result.length).count(), 0.001)}
    {
        for (const auto& [name, values] : result.values)
            if (const std::vector<Step> steps = stepsOf(values); !steps.empty())
                drawPanel(name, steps);
        for (const StatementResult& each : result.statements)
            if (each.statement.kind == Statement::Kind::Expect || each.statement.kind == Statement::Kind::Wait)
                drawMark(each);
        drawAxis();
    }

    [[nodiscard]] std::string text() const
    {
        return formatted("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.0f %.0f\">\n", kWidth,
                         bottom_ + 40) +
               kStyle + formatted("<rect width=\"%.0f\" height=\"%.0f\" fill=\"#fff\"/>\n", kWidth, bottom_ + 40) +
               body_ + "</svg>\n";
    }

private:
    [[nodiscard]] double x(double seconds) const
    {
        return kLeft + (kRight - kLeft) * std::clamp(seconds / length_, 0.0, 1.0);
    }
    void drawPanel(const std::string& name, const std::vector<Step>& steps)
    {
        const auto extremes = std::ranges::minmax(steps, {}, &Step::value);
        const double low = extremes.min.value;
        const double high = extremes.max.value;
        const double range = high > low ? high - low : 1;
        const double base = bottom_ + kPanel;
        const auto y = [&](double value) { return base - 5 - (kPanel - 10) * (value - low) / range; };
        body_ += formatted("<rect class=\"f\" x=\"%.0f\" y=\"%.0f\" width=\"%.0f\" height=\"%.0f\"/>\n", kLeft, bottom_,
                           kRight - kLeft, kPanel);
        body_ += formatted("<text x=\"10\" y=\"%.0f\">%s</text>\n", bottom_ + kPanel / 2, name.c_str());
        body_ +=
            formatted("<text x=\"%.0f\" y=\"%.0f\" text-anchor=\"end\">%g</text>\n", kLeft - 5, bottom_ + 14, high);
        body_ += formatted("<text x=\"%.0f\" y=\"%.0f\" text-anchor=\"end\">%g</text>\n", kLeft - 5, base - 4, low);
        body_ += formatted("<path class=\"v\" d=\"M%.1f %.1f", x(steps[0].seconds), y(steps[0].value));
        for (const Step& step : steps)
            body_ += formatted("H%.1fV%.1f", x(step.seconds), y(step.value));
        body_ += formatted("H%.1f\"/>\n", kRight);
        bottom_ = base + kGap;
    }
    void drawMark(const StatementResult& each)
    {
        if (each.state == StatementResult::State::Skipped)
            return;
        const double at = x(std::chrono::duration<double>(each.time).count());
        const bool good = each.state == StatementResult::State::Done;
        body_ += formatted("<path class=\"%s\" d=\"M%.1f %.0fV%.0f\"/>\n", good ? "ok" : "bad", at, kTop - 12,
                           bottom_ - kGap);
        body_ += formatted("<text x=\"%.1f\" y=\"%.0f\" text-anchor=\"middle\">%s%d</text>\n", at, kTop - 16,
                           good ? "" : "!", each.statement.line);
    }
    void drawAxis()
    {
        body_ += formatted("<text x=\"%.0f\" y=\"%.0f\">0 s</text>\n", kLeft, bottom_ + 10);
        body_ +=
            formatted("<text x=\"%.0f\" y=\"%.0f\" text-anchor=\"end\">%.3f s</text>\n", kRight, bottom_ + 10, length_);
        body_ += formatted("<text x=\"10\" y=\"18\">line of each expectation, where it was decided; ! failed</text>\n");
    }

    double length_;
    double bottom_ = kTop;
    std::string body_{};
};

} // namespace

std::string plotOf(const ScenarioResult& result)
{
    return Plot{result}.text();
}

} // namespace hxsim
