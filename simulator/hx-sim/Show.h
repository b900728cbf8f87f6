// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace hxsim {

/// A text for a terminal: control characters, those of U+0080 to U+009F too, and bytes that are not UTF-8 stand as
/// \xNN; lines stay lines.
std::string forTerminal(std::string_view text);

/// Writes a text that may come from elsewhere: as it is into a file or pipe, harmless on a terminal.
void show(std::FILE* stream, std::string_view text);

} // namespace hxsim
