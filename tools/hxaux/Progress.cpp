// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Progress.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace hxaux {

std::string progressBar(int percent, int width)
{
    const int shown = std::clamp(percent, 0, 100);
    const auto full = static_cast<std::size_t>(shown * width / 100);
    std::array<char, 8> number{};
    std::snprintf(number.data(), number.size(), "%3d %%", shown);
    return "[" + std::string(full, '#') + std::string(static_cast<std::size_t>(width) - full, '-') + "] " +
           number.data();
}

std::string timeLeft(int percent, std::chrono::milliseconds elapsed)
{
    constexpr std::chrono::seconds kLeastKnown(2);
    if (percent < 5 || percent >= 100 || elapsed < kLeastKnown)
        return "";
    const long long seconds = elapsed.count() * (100 - percent) / percent / 1000;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%lld:%02lld left", seconds / 60, seconds % 60);
    return text.data();
}

void Progress::update(const std::string& phase, int percent, const std::string& extra)
{
    const auto now = std::chrono::steady_clock::now();
    if (phase != phase_) {
        complete();
        began_ = now;
    } else if (percent == percent_) {
        return;
    }
    phase_ = phase;
    percent_ = percent;
    if (!call_.onTerminal()) {
        call_.print("phase", phase);
        call_.print("done", percent, "%");
        call_.show();
        return;
    }
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - began_);
    draw(percent, extra + " " + timeLeft(percent, elapsed));
}

void Progress::draw(int percent, const std::string& extra) const
{
    call_.screen().passingLine(phase_ + " " + progressBar(percent, 40) + " " + extra);
}

void Progress::complete()
{
    if (call_.onTerminal() && !phase_.empty())
        draw(100, "");
    end();
}

} // namespace hxaux
