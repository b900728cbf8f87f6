// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"
#include "upgrade/ByteSource.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace Halvix {

/// Called at each full data record with the number of characters read before it, without line ends.
using McsProgress = std::function<void(std::uint32_t)>;

/// Appends the data of an MCS file's full records (16 bytes each) to the image, in the order of the file.
///
/// Shorter lines are skipped: address records, the end record, and data records of fewer bytes. Addresses are not used:
/// the file has to hold full records in address order from flash position 0 on, as FPGA tools write it. A wrong
/// checksum empties the image and returns 12; `progress` is then not called for that line, and `wrongAt` is the number
/// of characters read before it.
[[nodiscard]] eErr convertMcs(ByteSource& file, std::vector<unsigned char>& image, const McsProgress& progress,
                              std::uint32_t* wrongAt);

} // namespace Halvix
