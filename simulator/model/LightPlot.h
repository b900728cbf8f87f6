// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>

namespace hxsim {

class LightTrace;

/// A picture (SVG) of what happened between light and backlight: above, the light as it was set and as the sensor
/// reported it, on a logarithmic scale; below, the level as it was written. `luxAt` gives the light at a second of the
/// unit's time; without it the light is shown as it was at each reading.
std::string lightPlot(const LightTrace& trace, const std::string& title,
                      const std::function<double(double seconds)>& luxAt = {});

} // namespace hxsim
