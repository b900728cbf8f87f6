// SPDX-License-Identifier: LicenseRef-HXAux
// From the words of a command line to an exit status.
#pragma once

#include <string>
#include <vector>

namespace hxaux {

int runCommandLine(const std::vector<std::string>& words);

} // namespace hxaux
