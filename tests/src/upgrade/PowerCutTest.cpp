// SPDX-License-Identifier: LicenseRef-HXAux
// Power fails at every acknowledgement and every block: an upgrade never reports success with a wrong image, and the
// next one succeeds.
#include "hx-aux/FirmwareUpgrade.h"
#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareFile.h"
#include "testing/Named.h"
#include "testing/RowTest.h"

#include <algorithm>

using namespace Halvix;
using firmware::Bytes;

namespace {

const Bytes kImage = firmware::pattern(1000, 5);

struct Target : Named {
    eErr (FirmwareUpgrade::*start)(const char* file, bool blocking);
    std::string (*file)(const SimulatedUnit&, const Bytes&);
    hxsim::Microcontroller hxsim::Microcontrollers::*chip;
};

const Target kTargets[] = {
    {"ss", &FirmwareUpgrade::startSSUpgrade, firmware::supervisorFile, &hxsim::Microcontrollers::supervisor},
    {"front", &FirmwareUpgrade::startFrontUpgrade, firmware::frontFile, &hxsim::Microcontrollers::front},
};

eErr upgrade(const Target& target, const std::string& file)
{
    FirmwareUpgrade* object = GetFirmwareUpgrade();
    const eErr result = (object->*target.start)(file.c_str(), true);
    object->Release();
    return result;
}

bool holdsTheImage(SimulatedUnit& unit, const Target& target)
{
    const auto both = unit.model<hxsim::Microcontrollers>();
    return std::equal(kImage.begin(), kImage.end(), ((*both).*target.chip).flash.begin());
}

class PowerCut : public hxtest::TestWithRow<Target> {
protected:
    /// Number of acknowledgements, or bytes on the line, of a whole upgrade.
    static std::int64_t countOf(std::int64_t hxsim::Microcontroller::*counter, std::int64_t start)
    {
        SimulatedUnit unit;
        {
            const auto both = unit.model<hxsim::Microcontrollers>();
            ((*both).*row().chip).*counter = start;
        }
        EXPECT_EQ(upgrade(row(), row().file(unit, kImage)), ERR_SUCCESS);
        const auto both = unit.model<hxsim::Microcontrollers>();
        return std::abs(((*both).*row().chip).*counter - start);
    }

    static void cutAndTryAgain(const std::string& fault, std::int64_t at)
    {
        SCOPED_TRACE(fault + " " + std::to_string(at));
        SimulatedUnit unit;
        const std::string file = row().file(unit, kImage);
        unit.set(std::string{row().name} + "." + fault, at);

        EXPECT_NE(upgrade(row(), file), ERR_SUCCESS);
        EXPECT_EQ(unit.get("uart.direction"), "0");

        unit.act(std::string{"restore "} + row().name);
        EXPECT_EQ(upgrade(row(), file), ERR_SUCCESS);
        EXPECT_TRUE(holdsTheImage(unit, row()));
    }
};
TEST_ROWS_IN(Microcontroller, PowerCut, kNameOfRow, kTargets);

} // namespace

ROW_TEST(PowerCut, AtEachAcknowledgementIsAFailureThatTheNextUpgradeMends)
{
    const std::int64_t acknowledgements = countOf(&hxsim::Microcontroller::acknowledgements, 0);
    ASSERT_EQ(acknowledgements, 1 + 3 * 2 + 2 + 4 * 3 + 4 * 3);

    for (std::int64_t at = 1; at <= acknowledgements; ++at)
        cutAndTryAgain("cut-at-ack", at);
}

ROW_TEST(PowerCut, AtBytesAllOverTheUpgradeIsAFailureThatTheNextUpgradeMends)
{
    constexpr std::int64_t kMoreThanEnough = 1000000;
    const std::int64_t bytes = countOf(&hxsim::Microcontroller::cutAtByte, kMoreThanEnough);
    ASSERT_GT(bytes, 2 * 1000);

    for (std::int64_t at = 1; at <= bytes; at += 61)
        cutAndTryAgain("cut-at-byte", at);
}

TEST(PowerCutOfTheFpga, AtEachBlockIsAFailureThatTheNextUpgradeMends)
{
    const Bytes image = firmware::pattern(528 * 4 + 160, 6);
    for (int block = 1; block <= 5; ++block) {
        SimulatedUnit unit;
        const std::string file = firmware::fpgaFile(unit, image);
        unit.set("fpga.cut-at-block", block);
        const Target fpga{"fpga", &FirmwareUpgrade::startFpgaUpgrade, firmware::fpgaFile, nullptr};

        EXPECT_EQ(upgrade(fpga, file), ERR_IOCTRL_FAILED) << block;
        EXPECT_EQ(unit.get("uart.mode"), "0xc3");

        unit.set("fpga.power", "on");
        EXPECT_EQ(upgrade(fpga, file), ERR_SUCCESS);
        const auto flash = unit.model<hxsim::FpgaFlash>();
        EXPECT_TRUE(std::ranges::mismatch(image, flash->content).in1 == image.end());
    }
}
