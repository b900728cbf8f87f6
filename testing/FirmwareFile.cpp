// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/FirmwareFile.h"

#include <fstream>

namespace firmware {

std::string file(const SimulatedUnit& unit, const std::string& text, const std::string& name)
{
    std::string path = unit.folder() + "/" + name;
    std::ofstream{path, std::ios::binary} << text;
    return path;
}

std::string supervisorFile(const SimulatedUnit& unit, const Bytes& image)
{
    return file(unit, intelHexOfSize(95000, image), "supervisor.hex");
}

std::string frontFile(const SimulatedUnit& unit, const Bytes& image)
{
    return file(unit, intelHexOfSize(50000, image), "front.hex");
}

std::string fpgaFile(const SimulatedUnit& unit, const Bytes& image)
{
    return file(unit, mcs(image), "fpga.mcs");
}

} // namespace firmware
