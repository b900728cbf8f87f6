// SPDX-License-Identifier: LicenseRef-HXAux
// Whether the unit would write a HEX file's bytes to the addresses that the file gives them.
#ifndef HXAUX_HEXFILE_H
#define HXAUX_HEXFILE_H

#include <string>

namespace hxaux {

struct HexCheck {
    std::string problem;         // "line 7: its checksum is wrong"; empty when the file is good
    unsigned long imageSize = 0; // bytes that would be written
    std::size_t lastByteAt = 0;  // where the text has the image's last byte; its record's checksum stands behind it
};

// Reads the file as the library does, which lays the data out by rules of its own, and beside it as Intel HEX is
// defined. A file of which the two readings differ is refused: a verification would not notice, because it reads the
// file like the upgrade.
HexCheck checkHex(const std::string& text);

} // namespace hxaux

#endif
