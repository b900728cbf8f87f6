// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxaux {

/// Makes a text of EEPROMs, files, other programs or the command line safe for a terminal: one line of UTF-8. Control
/// characters (C0 and C1) and invalid UTF-8 are escaped byte by byte, as "\x1b".
std::string printable(const std::string& text);

} // namespace hxaux
