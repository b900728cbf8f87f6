// SPDX-License-Identifier: LicenseRef-HXAux
// What can be said of a firmware file without touching the unit.
#ifndef HXAUX_FIRMWAREFILE_H
#define HXAUX_FIRMWAREFILE_H

#include "hx-aux/errors.h"

#include <string>

namespace hxaux {

// What firmware is for. The first two are the microcontrollers' numbers as the library counts them.
enum class FirmwareTarget { Supervisor = 0, Front = 1, Fpga = 2 };

struct FirmwareCheck {
    std::string text;            // the file's contents
    std::string problem;         // what is wrong with it; empty when it is good
    unsigned long imageSize = 0; // bytes that would be written
    std::size_t lastByteAt =
        0; // of Intel HEX: where the text has the image's last byte, its record's checksum behind it
};

// The checks that an upgrade makes before it touches the target (size, foreign name, every record), and those that it
// does not make: a HEX file has data, and the unit writes each byte to the address that the file gives it.
FirmwareCheck checkFirmwareFile(FirmwareTarget target, const std::string& name);

} // namespace hxaux

#endif
