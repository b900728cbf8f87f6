// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/scenario/ScenarioRun.h"

#include <string>
#include <vector>

namespace hxsim {

/// "ok       0.512 s  expect led.lit = on within 2s", with a line break; a failed one has its place and what was seen.
std::string lineOf(const StatementResult& result);
/// "1 scenario passed, 2 failed"
std::string summaryOf(const std::vector<ScenarioResult>& results);

/// The results of the rows of one scenario file, for CI systems.
std::string junitOf(const std::string& file, const std::vector<ScenarioResult>& results);
std::string jsonOf(const std::string& file, const std::vector<ScenarioResult>& results);

/// A picture of a run: each property over time, and each expectation where it was decided.
std::string plotOf(const ScenarioResult& result);

} // namespace hxsim
