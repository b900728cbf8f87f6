// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <string_view>

/// What the manual pages of both programs are written with.
namespace troff {

/// A text as it is shown literally: no line may begin with a control character, no minus may become a hyphen.
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
