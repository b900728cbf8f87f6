// SPDX-License-Identifier: LicenseRef-HXAux
// From the words of a command line to an exit status.
#ifndef HXAUX_COMMAND_LINE_H
#define HXAUX_COMMAND_LINE_H

#include <string>
#include <vector>

namespace hxaux {

int runCommandLine(const std::vector<std::string>& words);

} // namespace hxaux

#endif
