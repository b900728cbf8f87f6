// SPDX-License-Identifier: LicenseRef-HXAux
#ifndef HXAUX_PRINTABLE_H
#define HXAUX_PRINTABLE_H

#include <string>

namespace hxaux {

// A text of EEPROMs, files, other programs or the command line that may be shown on a terminal: one line of UTF-8.
// Control characters, those of the upper half (C1) too, and bytes that are not UTF-8 become "\x1b", byte by byte.
std::string printable(const std::string& text);

} // namespace hxaux

#endif
