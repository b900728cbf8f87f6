// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim::xml {

/// Up to 511 bytes, in the manner of `printf`.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char* format, ...);

/// As text between two tags. XML is UTF-8 without control characters: other bytes are escaped as on a terminal.
std::string text(const std::string& words);

/// As the value of an attribute, without the quotes around it.
std::string attribute(const std::string& words);

} // namespace hxsim::xml
