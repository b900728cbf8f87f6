// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace Halvix {

/// One text in both widths. The A and W functions of a table read the same pair, so they cannot disagree.
struct TextPair {
    const char* narrow;
    const wchar_t* wide;
};

} // namespace Halvix

#define HX_TEXT(text)                                                                                                  \
    {                                                                                                                  \
        text, L##text                                                                                                  \
    }
