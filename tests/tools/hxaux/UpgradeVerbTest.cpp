// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Command.h"
#include "testing/FirmwareTexts.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"
#include "tools/hxaux/UpgradeRun.h"

#include <filesystem>
#include <sys/stat.h>

using namespace hxaux;
using namespace hxtest;
using testing::AllOf;

namespace {

std::string supervisorText(std::size_t image = 1000)
{
    return firmware::intelHexOfSize(95000, firmware::pattern(image));
}

} // namespace

TEST(UpgradeVerb, ChecksAGoodFileWithoutTheUnit)
{
    const TemporaryFolder folder;

    EXPECT_THAT(
        run("hxaux upgrade ss " + folder.file("a.hex", supervisorText()) + " --dry-run"),
        AllOf(outputIs("image: 1000 bytes\n"), errorIs("the file is valid; the unit was not touched\n"), statusIs(0)));
    EXPECT_THAT(
        run("hxaux upgrade front " + folder.file("a.hex", firmware::intelHexOfSize(50000, {1, 2})) + " --dry-run"),
        AllOf(outputMatches("image: 2 bytes"), statusIs(0)));
    EXPECT_THAT(run("hxaux upgrade fpga " + folder.file("a.mcs", firmware::mcs(firmware::pattern(32))) + " --dry-run"),
                AllOf(outputMatches("image: 32 bytes"), statusIs(0)));
}

TEST(UpgradeVerb, RefusesABadFileWithoutTheUnit)
{
    const TemporaryFolder folder;
    std::string wrong = supervisorText();
    wrong[30] = wrong[30] == '0' ? '1' : '0';
    const auto check = [&](const std::string& target, const std::string& text) {
        return run("hxaux upgrade " + target + " " + folder.file("bad", text) + " --dry-run");
    };

    EXPECT_THAT(check("ss", wrong), AllOf(errorMatches("checksum is wrong"), outputIs(""), statusIs(3)));
    EXPECT_THAT(check("ss", std::string(95000, '\n')), AllOf(errorMatches("missing end record"), statusIs(3)));
    EXPECT_THAT(check("ss", std::string(95000, 'x')),
                AllOf(errorMatches("line 1: .*not an Intel HEX file"), statusIs(3)));
    EXPECT_THAT(check("ss", ""), AllOf(errorMatches("not supervisor firmware: expected an Intel HEX file of 95,000 to "
                                                    "1,000,000 bytes that does not contain 'Front_uc'\n"),
                                       statusIs(3)));
    EXPECT_THAT(check("front", firmware::filledUpTo(60000, '\n', "SystemSupervisor")),
                AllOf(errorMatches("not front-panel firmware: expected an Intel HEX file of 50,000 to 110,000 bytes "
                                   "that does not contain 'SystemSupervisor'\n"),
                      statusIs(3)));
    EXPECT_THAT(check("fpga", ":00000001FF\n"),
                AllOf(errorMatches("not an FPGA configuration: expected an MCS file with data records of 16 bytes\n"),
                      statusIs(3)));
    EXPECT_THAT(check("fpga", std::string(43, '1')),
                AllOf(errorMatches("not an FPGA configuration: the checksum of a record is wrong\n"), statusIs(3)));
}

TEST(UpgradeVerb, CannotReadAMissingFileOrAFolder)
{
    const TemporaryFolder folder;

    for (const char* const verb : {"upgrade", "verify"}) {
        EXPECT_THAT(run(std::string("hxaux ") + verb + " ss " + folder.path() + "/missing"),
                    AllOf(errorMatches("missing: No such file"), statusIs(3)));
        EXPECT_THAT(run(std::string("hxaux ") + verb + " fpga " + folder.path()),
                    AllOf(errorMatches("Is a directory"), statusIs(3)));
    }
}

TEST(UpgradeVerb, RefusesAnUnknownTarget)
{
    EXPECT_THAT(run("hxaux upgrade gpu file"), statusIs(2));
    EXPECT_THAT(run("hxaux upgrade ss"), statusIs(2));
}

TEST(UpgradeVerb, PrintsTheResultOfADryRunAsJson)
{
    const TemporaryFolder folder;

    const auto document =
        jsonOf(run("hxaux upgrade ss " + folder.file("a.hex", supervisorText()) + " --dry-run --json"));

    EXPECT_EQ(document["status"], 0);
    EXPECT_EQ(document["result"]["image"], 1000);
}

TEST(UpgradeVerb, RefusesAFileThatTheUnitWouldMisplaceWithItsLine)
{
    const TemporaryFolder folder;
    const std::string text = firmware::linear(0) + firmware::data(0, {1, 2}) + firmware::linear(1) +
                             firmware::data(0, {3, 4}) + std::string(firmware::kEnd) + std::string(95000, '\n');
    const std::string file = folder.file("misplaced.hex", text);

    for (const char* const command : {"upgrade ss ", "verify ss "})
        EXPECT_THAT(run(std::string("hx-sim run -- hxaux ") + command + file),
                    AllOf(errorMatches("misplaced.hex: line 4: its data belongs to address 0x00010000"), outputIs(""),
                          statusIs(3)));
}

TEST(UpgradeVerb, RefusesWhatIsNotARegularFileAndDoesNotWaitForIt)
{
    const TemporaryFolder folder;
    const std::string fifo = folder.path() + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);

    for (const std::string& name : {fifo, std::string("/dev/zero"), std::string("/dev/full")})
        for (const char* const command : {"upgrade ss ", "upgrade fpga ", "verify front ", "verify fpga "})
            EXPECT_THAT(run(std::string("hxaux ") + command + name),
                        AllOf(errorMatches(name + ": not a regular file"), statusIs(3)));
}

TEST(UpgradeVerb, RefusesAFileWithoutAnEnd)
{
    const TemporaryFolder folder;
    const std::string file = folder.file("sparse.mcs", "");
    std::filesystem::resize_file(file, std::uintmax_t{1} << 40);

    EXPECT_THAT(run("hxaux upgrade fpga " + file), AllOf(errorMatches("larger than 64 MiB"), statusIs(3)));
}

struct Ending {
    UpgradeTask task;
    FirmwareTarget target;
    Halvix::eErr code;
    std::optional<Halvix::UpgradeAction> phase;
    Exit status;
};

class FailedRun : public hxtest::TestWithRow<Ending> {};

ROW_TEST(FailedRun, HasThePhaseAndTheStatusOfItsCode)
{
    const Cause cause = causeOf(row().task, row().target, row().code);

    EXPECT_EQ(cause.phase, row().phase);
    EXPECT_EQ(cause.status, row().status);
}

namespace {

using namespace Halvix;
constexpr auto kUpgrade = UpgradeTask::Upgrade;
constexpr auto kVerify = UpgradeTask::Verify;
constexpr auto kFront = FirmwareTarget::Front;
constexpr auto kSupervisor = FirmwareTarget::Supervisor;
constexpr auto kFpga = FirmwareTarget::Fpga;

} // namespace

TEST_ROWS(Of, FailedRun, hxtest::kNumbered,
          Ending{kUpgrade, kSupervisor, ERR_OPEN_FAILED, UpgradeActionConnect, Exit::NoConnection},
          Ending{kVerify, kFront, ERR_OPEN_FAILED, UpgradeActionConnect, Exit::NoConnection},
          Ending{kUpgrade, kFpga, ERR_OPEN_FAILED, UpgradeActionPrepareHardware, Exit::Refused},
          Ending{kVerify, kFpga, ERR_BUFFER_SIZE, UpgradeActionPrepareHardware, Exit::Refused},
          Ending{kUpgrade, kFpga, ERR_INIT_FAILED, UpgradeActionPrepareHardware, Exit::Refused},
          Ending{kUpgrade, kFront, ERR_INIT_FAILED, UpgradeActionReadFile, Exit::Refused},
          Ending{kUpgrade, kFpga, ERR_CHECKSUM, UpgradeActionReadFile, Exit::File},
          Ending{kVerify, kSupervisor, ERR_CHECKSUM, UpgradeActionReadFile, Exit::File},
          Ending{kUpgrade, kSupervisor, ERR_INVALID_DATA, UpgradeActionWrite, Exit::File},
          Ending{kUpgrade, kFront, ERR_DEVICE_WRITE_DATA_FAILED, UpgradeActionWrite, Exit::Refused},
          Ending{kUpgrade, kFront, ERR_DEVICE_READ_DATA_FAILED, UpgradeActionVerify, Exit::Refused},
          Ending{kVerify, kFpga, ERR_DEVICE_READ_DATA_FAILED, UpgradeActionVerify, Exit::Refused},
          Ending{kUpgrade, kSupervisor, ERR_VERIFY_FAILED, UpgradeActionVerify, Exit::Difference},
          Ending{kVerify, kFpga, ERR_VERIFY_FAILED, UpgradeActionVerify, Exit::Difference},
          Ending{kVerify, kFpga, ERR_IOCTRL_FAILED, std::nullopt, Exit::Refused},
          Ending{kUpgrade, kFpga, ERR_MEM_ALLOC_FAIL, std::nullopt, Exit::Refused});

TEST(UpgradeRun, ThatIsNotStartedHasTheStatusOfItsCode)
{
    EXPECT_EQ(statusOfStart(Halvix::ERR_IN_PROGRESS), Exit::Busy);
    EXPECT_EQ(statusOfStart(Halvix::ERR_OPEN_FAILED), Exit::File);
    EXPECT_EQ(statusOfStart(Halvix::ERR_DATATYPE_MISMATCH), Exit::File);
    EXPECT_EQ(statusOfStart(Halvix::ERR_CREATE_THREAD), Exit::Refused);
}

TEST(UpgradeRun, MakesAFileThatDiffersInTheLastByteOfItsImageAlone)
{
    const TemporaryFolder folder;
    FirmwareCheck check = checkFirmwareFile(kSupervisor, folder.file("a.hex", supervisorText(1000)));

    check.text = withOtherLastByte(check);

    const FirmwareCheck other = checkFirmwareFile(kSupervisor, folder.file("b.hex", check.text));
    EXPECT_EQ(other.problem, "");
    EXPECT_EQ(other.imageSize, 1000U);
    auto image = firmware::pattern(1000);
    image.back() ^= 1;
    EXPECT_TRUE(other.text == firmware::intelHexOfSize(95000, image));
}

TEST(UpgradeRun, NamesEachPhase)
{
    EXPECT_EQ(phaseName(Halvix::UpgradeActionPrepareHardware), "preparing");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionConnect), "connecting");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionReadFile), "reading file");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionWrite), "writing");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionVerify), "verifying");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionFinished), "finished");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionFailed), "failed");
    EXPECT_EQ(phaseName(Halvix::UpgradeActionReserved), "action 2");
}

TEST(UpgradeRun, ShowsTheRateOnceItIsKnown)
{
    using std::chrono::milliseconds;

    EXPECT_EQ(transferRate(100000, 50, milliseconds(5000)), "10.0 KB/s");
    EXPECT_EQ(transferRate(100000, 0, milliseconds(5000)), "");
    EXPECT_EQ(transferRate(0, 50, milliseconds(5000)), "");
}
