// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// Takes commands from standard input, a line each, until its end or "exit". In a terminal there is a prompt, and a
/// history where libedit is installed. Returns the status of the first line that failed.
int runShell(const std::string& unit);

} // namespace hxsim
