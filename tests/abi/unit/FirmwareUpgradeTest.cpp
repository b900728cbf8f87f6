// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/FirmwareFile.h"
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

namespace {

constexpr unsigned kRelease = 8;

/// On an object of its own.
int start(unsigned slot, const std::string& file)
{
    const Object upgrade{"GetFirmwareUpgrade", kRelease};
    return upgrade.call<const char*, bool>(slot, file.c_str(), true);
}

firmware::Bytes image(std::size_t size, unsigned char fill)
{
    return firmware::Bytes(size, fill);
}

} // namespace

TEST(FirmwareUpgradeSlots, ProgramAndVerifyTheFpgaInTheirOrder)
{
    SimulatedUnit unit;
    const std::string file = firmware::fpgaFile(unit, image(1056, 0xA5));

    EXPECT_EQ(start(1, file), 14) << "the flash holds something else";
    EXPECT_THAT(unit.requestsTo("/dev/fpgaflash"), testing::Not(HasRequest("0xc218004e")));
    EXPECT_EQ(start(0, file), 0);
    EXPECT_THAT(unit.requestsTo("/dev/fpgaflash"), HasRequest("0xc218004e"));
    EXPECT_EQ(start(1, file), 0);
}

TEST(FirmwareUpgradeSlots, ProgramAndVerifyTheSupervisorInTheirOrder)
{
    SimulatedUnit unit;
    const std::string file = firmware::supervisorFile(unit, image(512, 0xA5));

    EXPECT_EQ(start(3, file), 14) << "the supervisor holds something else";
    EXPECT_EQ(start(2, file), 0);
    EXPECT_EQ(start(3, file), 0);
    EXPECT_THAT(unit.requestsTo("/dev/uart-redir"), HasRequest("0x4001004c: 96"));
}

TEST(FirmwareUpgradeSlots, ProgramAndVerifyTheFrontInTheirOrder)
{
    SimulatedUnit unit;
    const std::string file = firmware::frontFile(unit, image(512, 0xA5));

    EXPECT_EQ(start(5, file), 14) << "the front microcontroller holds something else";
    EXPECT_EQ(start(4, file), 0);
    EXPECT_EQ(start(5, file), 0);
    EXPECT_THAT(unit.requestsTo("/dev/uart-redir"), HasRequest("0x40010050"));
}

TEST(FirmwareUpgradeSlots, ReportTheStatusInSlot6)
{
    struct Status {
        int action;
        int rest[8];
    } status = {-1, {}};
    SimulatedUnit unit;
    const Object upgrade{"GetFirmwareUpgrade", kRelease};

    const std::string file = firmware::fpgaFile(unit, image(1056, 0xA5));

    EXPECT_EQ((upgrade.call<const char*, bool>(0, file.c_str(), true)), 0);
    EXPECT_EQ((upgrade.call<Status*, bool>(6, &status, false)), 0);

    EXPECT_EQ(status.action, 6) << "finished";
}

TEST(FirmwareUpgradeSlots, ShutTheUnitDownInSlot7)
{
    SimulatedUnit unit;
    const Object upgrade{"GetFirmwareUpgrade", kRelease};

    EXPECT_EQ(upgrade.call(7), 0);

    EXPECT_THAT(unit.callsTo("/tmp/hxauxd.fifo"), HasRequest("81 00 00 00"));
}
