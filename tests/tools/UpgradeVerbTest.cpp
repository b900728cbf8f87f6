// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/tools/Command.h"
#include "tests/upgrade/FirmwareTexts.h"
#include "tools/UpgradeRun.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

using namespace hxaux;
using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;

namespace {

/// A folder of its own for a test's files.
class Folder {
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "hxaux-upgrade-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] std::string file(const std::string& name, const std::string& text) const
    {
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path_ / name;
    }
    [[nodiscard]] std::string path() const { return path_; }

private:
    std::filesystem::path path_;
};

std::string supervisorText(std::size_t image = 1000)
{
    return firmware::intelHexOfSize(95000, firmware::pattern(image));
}

} // namespace

TEST(UpgradeVerb, ChecksAGoodFileWithoutTheUnit)
{
    const Folder folder;

    EXPECT_THAT(run("hxaux upgrade ss " + folder.file("a.hex", supervisorText()) + " --dry-run"),
                AllOf(outputIs("image: 1000 bytes\nthe file is good; the unit was not touched\n"), statusIs(0)));
    EXPECT_THAT(
        run("hxaux upgrade front " + folder.file("a.hex", firmware::intelHexOfSize(50000, {1, 2})) + " --dry-run"),
        AllOf(outputMatches("image: 2 bytes"), statusIs(0)));
    EXPECT_THAT(run("hxaux upgrade fpga " + folder.file("a.mcs", firmware::mcs(firmware::pattern(32))) + " --dry-run"),
                AllOf(outputMatches("image: 32 bytes"), statusIs(0)));
}

TEST(UpgradeVerb, RefusesABadFileWithoutTheUnit)
{
    const Folder folder;
    std::string wrong = supervisorText();
    wrong[30] = wrong[30] == '0' ? '1' : '0';
    const auto check = [&](const std::string& target, const std::string& text) {
        return run("hxaux upgrade " + target + " " + folder.file("bad", text) + " --dry-run");
    };

    EXPECT_THAT(check("ss", wrong), AllOf(errorMatches("checksum is wrong"), outputIs(""), statusIs(3)));
    EXPECT_THAT(check("ss", std::string(95000, '\n')), AllOf(errorMatches("end record is missing"), statusIs(3)));
    EXPECT_THAT(check("ss", std::string(95000, 'x')), AllOf(errorMatches("no Intel HEX file"), statusIs(3)));
    EXPECT_THAT(check("ss", ""), AllOf(errorMatches("no supervisor firmware"), statusIs(3)));
    EXPECT_THAT(check("front", firmware::filledUpTo(60000, '\n', "SystemSupervisor")),
                AllOf(errorMatches("no front-panel firmware"), statusIs(3)));
    EXPECT_THAT(check("fpga", ":00000001FF\n"), AllOf(errorMatches("no data record of 16 bytes"), statusIs(3)));
    EXPECT_THAT(check("fpga", std::string(43, '1')), AllOf(errorMatches("checksum is wrong"), statusIs(3)));
}

TEST(UpgradeVerb, CannotReadAMissingFileOrAFolder)
{
    const Folder folder;

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

TEST(UpgradeVerb, TellsAsJsonWhatADryRunFound)
{
    const Folder folder;

    const auto document =
        jsonOf(run("hxaux upgrade ss " + folder.file("a.hex", supervisorText()) + " --dry-run --json"));

    EXPECT_EQ(document["status"], 0);
    EXPECT_EQ(document["result"]["image"], 1000);
}

TEST(UpgradeRun, EndsWithTheStatusOfTheStepThatFailed)
{
    using namespace Halvix;

    EXPECT_EQ(statusOfRun(UpgradeActionConnect, ERR_OPEN_FAILED), Exit::NoConnection);
    EXPECT_EQ(statusOfRun(UpgradeActionReadFile, ERR_OPEN_FAILED), Exit::File);
    EXPECT_EQ(statusOfRun(UpgradeActionReadFile, ERR_CHECKSUM), Exit::File);
    EXPECT_EQ(statusOfRun(UpgradeActionReadFile, ERR_INIT_FAILED), Exit::Refused);
    EXPECT_EQ(statusOfRun(UpgradeActionPrepareHardware, ERR_OPEN_FAILED), Exit::Refused);
    EXPECT_EQ(statusOfRun(UpgradeActionPrepareHardware, ERR_INIT_FAILED), Exit::Refused);
    EXPECT_EQ(statusOfRun(UpgradeActionWrite, ERR_INVALID_DATA), Exit::File);
    EXPECT_EQ(statusOfRun(UpgradeActionWrite, ERR_DEVICE_WRITE_DATA_FAILED), Exit::Refused);
    EXPECT_EQ(statusOfRun(UpgradeActionVerify, ERR_VERIFY_FAILED), Exit::Difference);
    EXPECT_EQ(statusOfRun(UpgradeActionReserved, ERR_IN_PROGRESS), Exit::Busy);
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
