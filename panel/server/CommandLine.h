// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "tools/cli/Command.h"

namespace hxpanel {

/// Executes the words of a command line; errors are on standard error. Returns the exit status.
int execute(const cli::Words& words);

} // namespace hxpanel
