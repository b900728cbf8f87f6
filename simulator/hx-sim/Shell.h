// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// Reads commands from standard input, one per line, until its end or "exit". In a terminal it has a prompt, and a
/// history where libedit is installed. Returns the status of the first line that failed.
int runShell(const std::string& unit);

} // namespace hxsim
