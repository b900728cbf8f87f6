// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace hxsim {

/// Makes a text safe for a terminal: control characters (also U+0080 to U+009F) and invalid UTF-8 become \xNN; line
/// breaks stay.
std::string forTerminal(std::string_view text);

/// Writes a text of foreign origin: unchanged to a file or pipe, escaped on a terminal.
void show(std::FILE* stream, std::string_view text);

} // namespace hxsim
