// SPDX-License-Identifier: LicenseRef-HXAux
// What completion offers for the values of commands. Without a unit there are fewer candidates, and no errors.
#pragma once

#include "tools/cli/Command.h"

namespace hxsim {

cli::Candidates actionsOfUnit();
cli::Candidates runningUnits(const cli::Words& before);
cli::Candidates propertyNames(const cli::Words& before);
cli::Candidates setWords(const cli::Words& before); ///< of "KEY VALUE" and "KEY=VALUE"
cli::Candidates settings(const cli::Words& before); ///< "KEY="
cli::Candidates actionWords(const cli::Words& before);
cli::Candidates devices(const cli::Words& before);
cli::Candidates calls(const cli::Words& before);
cli::Candidates profiles(const cli::Words& before);
cli::Candidates errorNames(const cli::Words& before);
cli::Candidates programWords(const cli::Words& program);

std::string asJson(const std::vector<std::string>& texts);

} // namespace hxsim
