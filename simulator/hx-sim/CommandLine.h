// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/hx-sim/Commands.h"

namespace hxsim {

/// Executes the words of one command line; errors are on standard error. Returns the exit status.
int execute(const cli::Words& words);
/// A line of a shell: without a name it is for this unit; error messages begin with `place`.
int executeInShell(const cli::Words& words, const std::string& unit, const std::string& place);

} // namespace hxsim
