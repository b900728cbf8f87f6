// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace cli {

/// Makes a text of EEPROMs, files, other programs or the command line safe for a terminal: one line of UTF-8. Control
/// characters (C0 and C1) and invalid UTF-8 are escaped byte by byte, as "\x1b".
std::string printable(std::string_view text);
/// The same of a text with several lines: its line ends stay.
std::string printableLines(std::string_view text);

/// Prints lines of the unit or of other programs: unchanged, except on a terminal.
void show(std::FILE* stream, std::string_view text);

} // namespace cli
