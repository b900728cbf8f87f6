// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/FirmwareFile.h"

#include "tools/hxaux/HexFile.h"
#include "tools/hxaux/RegularFile.h"
#include "upgrade/ByteSource.h"
#include "upgrade/FirmwareText.h"
#include "upgrade/Mcs.h"

#include <vector>

namespace hxaux {

namespace {

void checkMicrocontroller(FirmwareTarget target, FirmwareCheck& check)
{
    if (Halvix::checkFirmwareText(check.text.c_str(), check.text.size(), static_cast<int>(target)) !=
        Halvix::ERR_SUCCESS) {
        check.problem = target == FirmwareTarget::Supervisor
                            ? "not supervisor firmware: expected an Intel HEX file of 95,000 to 1,000,000 bytes that "
                              "does not contain 'Front_uc'"
                            : "not front-panel firmware: expected an Intel HEX file of 50,000 to 110,000 bytes that "
                              "does not contain 'SystemSupervisor'";
        return;
    }
    const HexCheck hex = checkHex(check.text);
    check.problem = hex.problem;
    check.imageSize = hex.imageSize;
    check.lastByteAt = hex.lastByteAt;
}

void checkFpga(FirmwareCheck& check)
{
    Halvix::MemorySource source(check.text);
    std::vector<unsigned char> image;
    std::uint32_t wrongAt = 0;
    const Halvix::eErr code = Halvix::convertMcs(
        source, image, [](std::uint32_t) {}, &wrongAt);
    check.imageSize = image.size();
    if (code != Halvix::ERR_SUCCESS)
        check.problem = "not an FPGA configuration: the checksum of a record is wrong";
    else if (image.empty())
        check.problem = "not an FPGA configuration: expected an MCS file with data records of 16 bytes";
}

} // namespace

FirmwareCheck checkFirmwareFile(FirmwareTarget target, const std::string& name)
{
    FirmwareCheck check;
    check.problem = readRegularFile(name, check.text);
    if (!check.problem.empty())
        return check;
    if (target == FirmwareTarget::Fpga)
        checkFpga(check);
    else
        checkMicrocontroller(target, check);
    return check;
}

} // namespace hxaux
