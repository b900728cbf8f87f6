// SPDX-License-Identifier: LicenseRef-HXAux
// How well an upgrade uses the line: the wire is the bottleneck.
#include "hx-aux/FirmwareUpgrade.h"
#include "simulator/model/ServiceUart.h"
#include "testing/FirmwareFile.h"

using namespace Halvix;

namespace {

constexpr double kMillisecondsPerByte = 11 * 1000.0 / 115200; // start, eight data bits, parity, stop
constexpr std::size_t kBlocks = 512;
constexpr int kBytesPerBlock = 268; // either way: command, address, count, 256 bytes and what is acknowledged
constexpr double kEraseAndPreparation = 40 + 2 * 100;

std::int64_t upgradeOf128KiB(SimulatedUnit& unit)
{
    const std::string file = firmware::file(unit, firmware::intelHex(firmware::pattern(kBlocks * 256)));
    FirmwareUpgrade* upgrade = GetFirmwareUpgrade();
    const std::int64_t before = unit.now();
    EXPECT_EQ(upgrade->startSSUpgrade(file.c_str(), true), ERR_SUCCESS);
    const std::int64_t took = unit.now() - before;
    upgrade->Release();
    return took;
}

} // namespace

TEST(PacedLine, CarriesAnUpgradeInHardlyMoreThanTheWiresTime)
{
    SimulatedUnit unit;

    const double took = static_cast<double>(upgradeOf128KiB(unit)) - kEraseAndPreparation;

    const double wire = 2.0 * kBlocks * kBytesPerBlock * kMillisecondsPerByte;
    EXPECT_GE(took, wire);
    EXPECT_LE(took, 1.02 * wire);
    RecordProperty("milliseconds", static_cast<int>(took));
}

TEST(PacedLine, CostsNoTimeWhenItRunsFree)
{
    SimulatedUnit unit{"uart.paced = no"};

    EXPECT_EQ(upgradeOf128KiB(unit), 240);
}
