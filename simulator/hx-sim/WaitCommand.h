// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/client/Connection.h"

#include <string>
#include <vector>

namespace hxsim {

/// Options of `hx-sim wait`; empty ones are not given.
struct WaitOptions {
    std::string stays{};
    std::string timeout{};
};

/// Waits on a running unit. Throws BadText with what was seen instead when the time is over, BadUsage for mistakes in
/// the condition, and UnitGone.
void waitOn(const std::string& unit, const std::vector<std::string>& words, const WaitOptions& options);

/// Checks an expectation on a running unit, as waitOn does.
void expectOn(const std::string& unit, const std::vector<std::string>& words);

} // namespace hxsim
