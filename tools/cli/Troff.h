// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <string_view>

/// Helpers for the manual pages of both programs.
namespace troff {

/// Escapes a text so that it is shown literally: no control character at a line start, no minus as a hyphen.
inline std::string literal(std::string_view text)
{
    std::string shown = text.starts_with(".") || text.starts_with("'") ? "\\&" : "";
    for (const char character : text) {
        if (character == '\\')
            shown += "\\e";
        else if (character == '-')
            shown += "\\-";
        else
            shown += character;
    }
    return shown;
}

/// A term in bold with its explanation.
inline std::string item(std::string_view term, std::string_view text)
{
    return ".TP\n.B " + literal(term) + '\n' + literal(text) + '\n';
}

} // namespace troff
