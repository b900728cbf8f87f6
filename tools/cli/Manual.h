// SPDX-License-Identifier: LicenseRef-HXAux
// The manual page and the reference in docs/, made from the table.
#pragma once

#include "tools/cli/Command.h"

namespace cli {

std::string manualPage(const Program& program);        // in troff's man macros
std::string markdownReference(const Program& program); ///< a section per object

} // namespace cli
