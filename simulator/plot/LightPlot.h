// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>

namespace hxsim {

class LightTrace;

/// Plots light and backlight as SVG: above, the light as set and as reported by the sensor, on a logarithmic scale;
/// below, the level as written. `luxAt` returns the light at a second of the unit's time; without it the plot shows the
/// light at each reading.
std::string lightPlot(const LightTrace& trace, const std::string& title,
                      const std::function<double(double seconds)>& luxAt = {});

} // namespace hxsim
