// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/ControlLaw.h"

#include <algorithm>
#include <cmath>

namespace Halvix::law {

namespace {

std::uint32_t sleepAfterMove(const Run& run)
{
    const bool reached = run.currentLevel == run.targetLevel;
    return static_cast<std::uint32_t>(reached ? kPeriodMs - run.elapsedMs : kSoftStepMs);
}

} // namespace

double curveArgument(std::uint16_t lux)
{
    return std::max<double>(lux, 2.0);
}

double curveLevel(double k, double x, std::uint8_t maxIntensity)
{
    const double brightest = maxIntensity - 1;
    const double y = k * std::log(x) + kCurveOffset;
    if (!(y < brightest)) // also when y is not a number
        return brightest;
    return y < 0 ? 0 : y;
}

double learntSlope(double level, double x)
{
    return (level - kCurveOffset) / std::log(x);
}

void aim(Run& run)
{
    run.targetLevel = static_cast<std::uint8_t>(run.y);
    run.elapsedMs = 0;
    run.sleepMs = kPeriodMs;
}

void move(Run& run, Transition transition)
{
    if (transition == Transition::AtOnce)
        run.currentLevel = run.targetLevel;
    else if (run.currentLevel < run.targetLevel)
        ++run.currentLevel;
    else
        --run.currentLevel;
    run.sleepMs = sleepAfterMove(run);
}

} // namespace Halvix::law
