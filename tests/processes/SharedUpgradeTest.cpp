// SPDX-License-Identifier: LicenseRef-HXAux
// Upgrades through the shared library and the command line tool, on a unit that several processes share.
#include "testing/Command.h"
#include "testing/FirmwareTexts.h"
#include "testing/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdlib>
#include <sstream>

namespace shared_upgrade_test {

using hxtest::Unit;
using testing::HasSubstr;
using testing::Not;
using namespace std::string_literals;

namespace {

const std::string kFree = "uart.paced = no";
constexpr int kQuick = 200;

/// Firmware files of this test.
class Files {
public:
    [[nodiscard]] std::string supervisor(std::size_t size) const
    {
        return folder_.file("ss.hex",
                            firmware::intelHexOfSize(std::max<std::size_t>(150000, 3 * size), firmware::pattern(size)));
    }
    [[nodiscard]] std::string front(std::size_t size) const
    {
        return folder_.file("front.hex", firmware::intelHexOfSize(90000, firmware::pattern(size)));
    }
    [[nodiscard]] std::string fpga(std::size_t size) const
    {
        return folder_.file("fpga.mcs", firmware::mcs(firmware::pattern(size)));
    }

private:
    TemporaryFolder folder_;
};

/// Starts an upgrade that takes seconds, and waits until it writes.
Process startedUpgrade(const Unit& unit, const std::string& file)
{
    Process run = unit.start({"upgrade", "front", file});
    for (std::string line = run.line(); line != "phase: writing"; line = run.line())
        if (line == "(ended)" || line == "(silent)")
            break;
    return run;
}

} // namespace

TEST(UpgradeTool, WritesAndVerifiesEveryTarget)
{
    const Unit unit({kFree});
    const Files files;

    for (const auto& [target, file] : {std::pair{"ss", files.supervisor(30001)}, std::pair{"front", files.front(20000)},
                                       std::pair{"fpga", files.fpga(8000)}}) {
        EXPECT_EQ(unit.run("hxaux verify "s + target + " " + file).status, 4) << target;
        const auto written = unit.run("hxaux upgrade "s + target + " " + file);
        EXPECT_EQ(written.status, 0) << written.output;
        EXPECT_THAT(written.output, HasSubstr("written and verified: ")) << target;
        EXPECT_EQ(unit.run("hxaux verify "s + target + " " + file).status, 0) << target;
    }
}

TEST(UpgradeTool, PrintsThePhasesAsJson)
{
    const Unit unit({kFree});
    const Files files;

    std::istringstream lines{unit.run("hxaux upgrade ss " + files.supervisor(30000) + " --json").output};

    std::vector<std::string> phases;
    nlohmann::json document;
    for (std::string line; std::getline(lines, line);) {
        document = nlohmann::json::parse(line);
        if (document["result"].contains("phase") && (phases.empty() || phases.back() != document["result"]["phase"]))
            phases.push_back(document["result"]["phase"]);
    }
    EXPECT_THAT(phases, testing::IsSupersetOf({"reading file", "writing", "verifying"}));
    EXPECT_EQ(document["result"]["written_and_verified"], 30000);
    EXPECT_EQ(document["status"], 0);
}

TEST(UpgradeTool, HasNoConnectionWithoutThePort)
{
    const Unit unit({kFree, "absent = /dev/ttyS0"});
    const Files files;

    const auto result = unit.run("hxaux upgrade ss " + files.supervisor(100));

    EXPECT_EQ(result.status, 6);
    EXPECT_THAT(result.error, HasSubstr("connecting: Open failed (1)"));
}

TEST(UpgradeTool, IsRefusedByAFlashThatIsNotReady)
{
    const Unit unit({"fpga.status = 1"});
    const Files files;

    const auto result = unit.run("hxaux upgrade fpga " + files.fpga(160));

    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("preparing: Initialisation failed (13)"));
}

TEST(UpgradeTool, EndsWithADifferenceWhenABitReadsBackWrongly)
{
    const Unit unit({kFree, "front.flip-read-at = 300"});
    const Files files;

    const auto result = unit.run("hxaux upgrade front " + files.front(1000));

    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("verifying: Verify failed (14)"));
}

// Phases that end before the first status query: the result must not depend on them.
TEST(UpgradeTool, EndsWithADifferenceHoweverShortThePhasesAre)
{
    const Unit unit({kFree}, kQuick);
    const Files files;
    const std::string front = files.front(40);
    const std::string fpga = files.fpga(16);

    for (int i = 0; i < 12; ++i) {
        for (const auto& [target, file] : {std::pair{"front", front}, std::pair{"fpga", fpga}}) {
            const auto result = unit.run("hxaux verify "s + target + " " + file);
            EXPECT_EQ(result.status, 4) << result.error;
            EXPECT_THAT(result.error, HasSubstr("verify: verifying: Verify failed (14)"));
        }
    }
}

TEST(UpgradeTool, VerifiesASmallImageHoweverShortThePhasesAre)
{
    const Unit unit({kFree}, kQuick);
    const Files files;
    const std::string file = files.front(40);
    ASSERT_EQ(unit.run("hxaux upgrade front " + file).status, 0);

    for (int i = 0; i < 12; ++i) {
        const auto result = unit.run("hxaux verify front " + file);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_THAT(result.output, HasSubstr("verified: 40 bytes"));
    }
}

TEST(UpgradeTool, DoesNotCallVerifiedWhatTheFlashIsTooSmallFor)
{
    constexpr std::size_t kFlash = 128U << 10;
    const Unit unit({kFree, "ss.product-id = 0x410"}, kQuick);
    const Files files;
    ASSERT_EQ(unit.run("hxaux upgrade ss " + files.supervisor(kFlash)).status, 0);

    const auto result = unit.run("hxaux verify ss " + files.supervisor(2 * kFlash));

    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("% of the file could be compared"));
    EXPECT_THAT(result.output, Not(HasSubstr("verified")));
}

TEST(UpgradeTool, DoesNotCallVerifiedWhatAnUnknownTargetHas)
{
    const Unit unit({kFree, "front.product-id = 0x999"}, kQuick);
    const Files files;

    const auto result = unit.run("hxaux verify front " + files.front(100));

    EXPECT_EQ(result.status, 4);
    EXPECT_THAT(result.error, HasSubstr("only 0 % of the file could be compared"));
}

TEST(UpgradeTool, RefusesAnImageThatIsLargerThanTheFlashAsAFile)
{
    const Unit unit({kFree, "ss.product-id = 0x412"}, kQuick);
    const Files files;

    const auto result = unit.run("hxaux upgrade ss " + files.supervisor(40000));

    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.error, HasSubstr("writing: "));
}

TEST(UpgradeTool, RefusesFirmwareForTheOtherMicrocontroller)
{
    const Unit unit({kFree});
    const Files files;

    EXPECT_EQ(unit.run("hxaux upgrade front " + files.supervisor(100)).status, 3) << "it is too long";
    EXPECT_EQ(unit.property("front.state"), "running");
}

TEST(UpgradeTool, IsBusyWhileAnotherProcessUpgrades)
{
    const Unit unit;
    const Files files;
    Process first = startedUpgrade(unit, files.front(12000));

    const auto second = unit.run("hxaux upgrade fpga " + files.fpga(160));

    EXPECT_EQ(second.status, 5);
    EXPECT_THAT(second.error, HasSubstr("Function in progress (11)"));
    EXPECT_EQ(first.status(), 0) << "the running job is left alone";
    EXPECT_EQ(unit.run("hxaux upgrade fpga " + files.fpga(160)).status, 0);
}

TEST(UpgradeTool, ContinuesAfterOneSignalAndExplainsWhy)
{
    const Unit unit;
    const Files files;
    Process run = startedUpgrade(unit, files.front(12000));

    ::kill(run.pid(), SIGINT);

    EXPECT_THAT(run.rest(),
                HasSubstr("Interrupting now would leave the target without firmware, so the upgrade continues. "
                          "Press Ctrl-C again to interrupt anyway."));
    EXPECT_EQ(run.status(), 0);
}

TEST(UpgradeTool, EndsAfterASecondSignalAndNamesTheNextSteps)
{
    const Unit unit;
    const Files files;
    const std::string file = files.front(12000);
    Process run = startedUpgrade(unit, file);

    ::kill(run.pid(), SIGINT);
    for (std::string line = run.line(); line.find("Press Ctrl-C again") == std::string::npos; line = run.line())
        ASSERT_NE(line, "(ended)");
    ::kill(run.pid(), SIGINT);

    EXPECT_THAT(run.rest(),
                HasSubstr("Interrupted. The upgrade lock is still held and the service UART is still routed to "
                          "the target. Release the lock with 'hxaux locks reset "
                          "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS', then run the upgrade again; it resets the "
                          "routing."));
    EXPECT_EQ(run.status(), 128 + SIGINT);
    EXPECT_EQ(unit.run("hxaux upgrade front " + file).status, 5);
    EXPECT_EQ(unit.run("hxaux locks reset HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS").status, 0);
    EXPECT_EQ(unit.run("hxaux upgrade front " + file).status, 0);
}

TEST(ShutdownTool, CommandsTheDaemon)
{
    const Unit unit;

    EXPECT_EQ(unit.run("hxaux shutdown").status, 0);

    EXPECT_THAT(unit.property("daemon.commands"), HasSubstr("129"));
}

TEST(ShutdownTool, IsRefusedWithoutTheDaemon)
{
    const Unit unit({"daemon.running = no"});

    const auto result = unit.run("hxaux shutdown");

    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.error, HasSubstr("Failed to execute command (17)"));
}

} // namespace shared_upgrade_test
