// SPDX-License-Identifier: LicenseRef-HXAux
// A program of a few commands that have every kind of argument, for tests of what is made from such a table.
#pragma once

#include "tools/cli/Arguments.h"

namespace kettle {

/// Commands: boil, lid (get, set, set later), note (add, show), pour, start.
const cli::Program& program();

/// The same, whose unknown first words are the values of its further command `say`.
cli::Program impliedProgram();

} // namespace kettle
