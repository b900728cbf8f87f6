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
    Halvix::eErr code = Halvix::ERR_SUCCESS; // what the library would answer
    std::string problem;                     // in words, when something is wrong
    unsigned long imageSize = 0;             // bytes that would be written
};

// The checks that an upgrade makes before it touches the target: size, foreign name, every record.
FirmwareCheck checkFirmwareFile(FirmwareTarget target, const std::string& name);

} // namespace hxaux

#endif
