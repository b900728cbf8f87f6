// SPDX-License-Identifier: LicenseRef-HXAux
// What programs see of a unit after an upgrade was killed half-way, until the next one repairs it.
#include "testing/Command.h"
#include "testing/FirmwareTexts.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace hxtest;
using testing::AllOf;

TEST(KilledUpgradeOfTheFrontPanel, ShowsInReadsUntilTheNextUpgrade)
{
    const Unit unit;
    const std::string file =
        std::filesystem::temp_directory_path() / ("hx-killed-" + std::to_string(getpid()) + ".hex");
    auto bytes = firmware::pattern(2000);
    bytes[3] = 0x20; // the stack lies in RAM,
    bytes[7] = 0x08; // the entry in flash
    std::ofstream{file} << firmware::intelHexOfSize(50000, bytes);
    unit.control("set front.erase-ms 60000");
    const std::string log = unit.line("").substr(sizeof "hx-sim run --unit " - 1);
    const std::string name = log.substr(0, log.find(' '));

    // Killed while the flash is erased: 43 requests an erase, ff 00 of the whole flash.
    run(unit.line("hxaux upgrade front " + file) + " >/dev/null 2>&1 & upgrade=$!; until hx-sim log --unit " + name +
        " | grep -q 'ttyS0 write: ff 00'; do sleep 0.01; done; kill -9 $upgrade; wait");

    EXPECT_THAT(unit.run("hxaux version front"), AllOf(statusIs(1), errorMatches("IoCtrl operation failed")));
    EXPECT_EQ(unit.property("front.state"), "bootloader");

    unit.control("do supply off");
    unit.control("do supply on");
    EXPECT_EQ(unit.property("front.state"), "no firmware");
    EXPECT_THAT(unit.run("hxaux version front"), AllOf(statusIs(1), errorMatches("IoCtrl operation failed")));

    unit.control("set front.erase-ms 40");
    EXPECT_THAT(unit.run("hxaux locks reset HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS"), statusIs(0));
    EXPECT_THAT(unit.run("hxaux upgrade front " + file), statusIs(0));
    EXPECT_THAT(unit.run("hxaux version front"), outputIs("front: 1.6.0.2\n"));
    std::filesystem::remove(file);
}
