// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/hx-sim/Launch.h"

#include <string>
#include <vector>

namespace hxsim {

/// Options of `hx-sim play light`.
struct LightPlay {
    std::string file;   ///< the profile
    std::string plot;   ///< where the picture goes; empty for none
    double seconds = 0; ///< how long the program runs, in the unit's time; 0 for as long as the profile lasts
    UnitOptions unit{};
};

/// The folder of the profiles that come with hx-sim; empty when it is not there.
std::string profileFolder();
/// The file of this name, or the profile that comes with hx-sim under it: "tunnel". Throws BadText.
std::string profileNamed(const std::string& name);

/// Plays the profile on a running unit, from now on.
void playLightOn(const std::string& unit, const LightPlay& play);

/// Runs a program on a unit of its own while the profile is played, stops the program with it, and plots the result.
/// Returns the program's exit status.
int playLightWith(const LightPlay& play, const std::vector<std::string>& command);

} // namespace hxsim
