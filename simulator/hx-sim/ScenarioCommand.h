// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/hx-sim/Launch.h"

#include <string>
#include <vector>

namespace hxsim {

/// Options of `hx-sim play scenario`; empty files are not written.
struct ScenarioPlay {
    std::string file{};
    std::string junit{};
    std::string plot{};
    bool json = false; ///< in place of the lines
    UnitOptions unit{};
};

/// Plays a scenario, with a program or without. Returns 0, or 1 when it failed. Throws BadScenario for a mistake in the
/// file, before anything has started.
int playScenario(const ScenarioPlay& play, const std::vector<std::string>& program);

} // namespace hxsim
