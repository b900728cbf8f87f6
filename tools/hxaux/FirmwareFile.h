// SPDX-License-Identifier: LicenseRef-HXAux
// Checks of a firmware file that do not touch the unit.
#pragma once

#include "hx-aux/errors.h"

#include <string>

namespace hxaux {

/// The target of a firmware file. The first two are the library's numbers of the microcontrollers.
enum class FirmwareTarget { Supervisor = 0, Front = 1, Fpga = 2 };

struct FirmwareCheck {
    std::string text;            // the file's contents
    std::string problem;         // what is wrong with it; empty when it is valid
    unsigned long imageSize = 0; ///< bytes that would be written
    std::size_t lastByteAt =
        0; ///< Intel HEX: offset of the image's last byte in the text; the record's checksum follows it
};

/// Makes the checks that an upgrade makes before it touches the target (size, name of the other target, every record),
/// and two more: a HEX file has data, and the unit writes each byte to the address that the file gives it.
FirmwareCheck checkFirmwareFile(FirmwareTarget target, const std::string& name);

} // namespace hxaux
