// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

/// The arithmetic of the automatic backlight: no clock, no device, no settings.
///
/// The level for an illuminance is `k * ln(lux) - 10`, within 0 to one below the largest level. All calculations use
/// double.
namespace Halvix::law {

inline constexpr double kCurveOffset = -10.0;
inline constexpr int kPeriodMs = 800;  ///< Between two measurements.
inline constexpr int kSoftStepMs = 50; ///< Between two levels of a soft transition.

/// How a new level is reached.
enum class Transition { AtOnce, Soft };

/// Lux as input of the curve: never below 2, so that its logarithm is never zero.
[[nodiscard]] double curveArgument(std::uint16_t lux);

/// The level before it is truncated. A value that is not a number counts as bright.
[[nodiscard]] double curveLevel(double k, double x, std::uint8_t maxIntensity);

/// The slope of the curve that gives this level for this light.
[[nodiscard]] double learntSlope(double level, double x);

/// State of one run of the control loop.
struct Run {
    std::uint8_t currentLevel = 0; ///< The level last sent.
    std::uint8_t targetLevel = 15;
    std::uint16_t averageLux = 0;
    double y = 15.0;
    double x = 100.0;
    bool firstTime = true;
    std::int32_t elapsedMs = kPeriodMs;
    std::uint32_t sleepMs = kPeriodMs;
};

[[nodiscard]] inline bool measurementIsDue(const Run& run)
{
    return run.elapsedMs > kPeriodMs - 1;
}

/// Uses `run.y` as the target and begins a new period.
void aim(Run& run);

/// Moves the current level towards the target and chooses how long to sleep: the rest of the period once it is
/// reached.
void move(Run& run, Transition transition);

} // namespace Halvix::law
