// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/record/Recording.h"

#include <string>
#include <vector>

namespace hxsim {

/// A scenario in which a program makes the calls of a recording again, on a unit that answers as the recorded one did:
/// the unit's devices, properties and failures, the program, and its calls in their order. What no property of a
/// simulated unit can cause is named in a comment. Throws BadText for a program that a scenario cannot name.
std::string scenarioOf(const Recording& recording, const std::string& name, const std::vector<std::string>& program);

} // namespace hxsim
