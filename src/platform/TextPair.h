// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace Halvix {

/// One text in both widths. The A and W functions of a table read the same pair, so they cannot disagree.
struct TextPair {
    const char* narrow;
    const wchar_t* wide;
};

// The tables are writable data that the compiler must not treat as constant, so they are visible inside the library: a
// program that replaces a text gets its own text back.
extern TextPair errorTexts[33];
extern TextPair hwErrorStatusTexts[132];
extern TextPair unknownHwErrorStatusText;
extern TextPair startupReasonTexts[5];

} // namespace Halvix

#define HX_TEXT(text)                                                                                                  \
    {                                                                                                                  \
        text, L##text                                                                                                  \
    }
