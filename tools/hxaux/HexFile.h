// SPDX-License-Identifier: LicenseRef-HXAux
// Whether the unit would write a HEX file's bytes to the addresses that the file gives them.
#pragma once

#include <string>

namespace hxaux {

struct HexCheck {
    std::string problem;         // "line 7: its checksum is wrong"; empty when the file is valid
    unsigned long imageSize = 0; ///< bytes that would be written
    std::size_t lastByteAt = 0;  // offset of the image's last byte in the text; the record's checksum follows it
};

/// Parses the file as the library does, which has placement rules of its own, and as Intel HEX is defined. A file for
/// which the two results differ is refused: a verification would not notice, because it parses the file like the
/// upgrade.
HexCheck checkHex(const std::string& text);

} // namespace hxaux
