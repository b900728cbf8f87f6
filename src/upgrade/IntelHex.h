// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"
#include "upgrade/ByteSource.h"
#include "upgrade/HexImage.h"

#include <functional>

namespace Halvix {

enum class HexResult { Complete, WrongSyntax, WrongChecksum, OutOfMemory, EndRecordMissing };

/// The error code for the user: 0, 8, 12, 13, 8.
[[nodiscard]] eErr errorOf(HexResult result);

/// Called after each record with the number of characters read from the file.
using CharactersRead = std::function<void(std::uint32_t)>;

/// Reads an Intel HEX file up to its end record and adds its data to the image.
///
/// The image starts at the first data record's segment, so the file has to start where the flash does. Data records
/// must ascend within a segment, and segments within the file; gaps are filled with zero bytes. Segment records (type
/// 2) are interpreted as the unit's tools always did, which places their data at other addresses than other readers do:
/// firmware files for the unit use linear addresses (type 4).
[[nodiscard]] HexResult parseIntelHex(ByteSource& file, HexImage& image, const CharactersRead& progress);

} // namespace Halvix
