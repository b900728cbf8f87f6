// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/FirmwareTexts.h"
#include "testing/SimulatedUnit.h"

#include <string>

namespace firmware {

/// Writes a file into the unit's private directory and returns its name.
std::string file(const SimulatedUnit& unit, const std::string& text, const std::string& name = "firmware");

/// A microcontroller's firmware of that many bytes in a file of the size that the unit expects.
std::string supervisorFile(const SimulatedUnit& unit, const Bytes& image);
std::string frontFile(const SimulatedUnit& unit, const Bytes& image);
/// An FPGA's configuration; the image's size is a multiple of 16.
std::string fpgaFile(const SimulatedUnit& unit, const Bytes& image);

} // namespace firmware
