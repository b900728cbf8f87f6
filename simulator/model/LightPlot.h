// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

class LightTrace;

/// A picture (SVG) of what happened between light and backlight: above, the light as it was set and as the sensor
/// reported it, on a logarithmic scale; below, the level as it was written.
std::string lightPlot(const LightTrace& trace, const std::string& title);

} // namespace hxsim
