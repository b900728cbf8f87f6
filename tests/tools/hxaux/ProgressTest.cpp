// SPDX-License-Identifier: LicenseRef-HXAux
// Progress bars, and what upgrades print around them.
#include "tools/hxaux/Progress.h"

#include "testing/FirmwareTexts.h"
#include "testing/TemporaryFolder.h"
#include "tests/tools/hxaux/OnUnit.h"
#include "tools/hxaux/UpgradeRun.h"

using namespace hxaux;
using namespace hxtest;
using std::chrono::milliseconds;
using testing::AllOf;

namespace {

std::string upgradeOf(const TemporaryFolder& folder)
{
    auto bytes = firmware::pattern(2000);
    bytes[3] = 0x20; // the stack lies in RAM,
    bytes[7] = 0x08; // the entry in flash
    return "hxaux upgrade front " + folder.file("front.hex", firmware::intelHexOfSize(50000, bytes));
}

} // namespace

TEST(Progress, EstimatesNothingBeforeItKnowsAnything)
{
    EXPECT_EQ(timeLeft(4, milliseconds(10000)), "");
    EXPECT_EQ(timeLeft(50, milliseconds(1000)), "");
    EXPECT_EQ(timeLeft(100, milliseconds(10000)), "");
    EXPECT_EQ(timeLeft(50, milliseconds(65000)), "1:05 left");
    EXPECT_EQ(transferRate(100000, 50, milliseconds(100)), "");
}

TEST(Progress, LeavesFullBarsAloneOnTheScreenAfterSuccess)
{
    const TemporaryFolder folder;

    const Outcome outcome = runOnTerminal("hx-sim run --scale 20 -- " + upgradeOf(folder));

    EXPECT_EQ(outcome.status, 0) << outcome;
    std::istringstream lines(outcome.output);
    int bars = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string left = line.substr(line.rfind('\r', line.size() - 2) + 1); // what stays on the line
        if (left.find('[') == std::string::npos || left.find('#') == std::string::npos)
            continue;
        EXPECT_THAT(left, testing::HasSubstr("] 100 %")) << line;
        ++bars;
    }
    EXPECT_GE(bars, 3);
}

TEST(Upgrade, PrintsTheInstalledVersionBeforeAndTheNewOneAfterwards)
{
    const TemporaryFolder folder;

    const Outcome outcome = run("hx-sim run --scale 20 -- " + upgradeOf(folder));

    EXPECT_THAT(outcome,
                AllOf(outputMatches("^installed version: 1\\.6\\.0\\.2\nphase: "),
                      outputMatches("\nversion now: 1\\.6\\.0\\.2\nwritten and verified: 2000 bytes\n$"), statusIs(0)));
}

TEST(Upgrade, PrintsNoVersionOfATargetThatDoesNotAnswer)
{
    const TemporaryFolder folder;

    EXPECT_THAT(run("hx-sim run --scale 20 --set 'fail=/dev/fpga-version 0x80040038 EIO' -- " + upgradeOf(folder)),
                outputMatches("^phase: "));
}

TEST(Progress, DrawsABarOfItsWidth)
{
    EXPECT_EQ(progressBar(0, 10), "[----------]   0 %");
    EXPECT_EQ(progressBar(9, 10), "[----------]   9 %");
    EXPECT_EQ(progressBar(10, 10), "[#---------]  10 %");
    EXPECT_EQ(progressBar(99, 10), "[#########-]  99 %");
    EXPECT_EQ(progressBar(100, 10), "[##########] 100 %");
    EXPECT_EQ(progressBar(255, 10), progressBar(100, 10));
    EXPECT_EQ(progressBar(-1, 10), progressBar(0, 10));
}

TEST(Progress, EstimatesTheTimeFromWhatIsDone)
{
    EXPECT_EQ(timeLeft(5, milliseconds(2000)), "0:38 left");
    EXPECT_EQ(timeLeft(5, milliseconds(1999)), "");
    EXPECT_EQ(timeLeft(99, milliseconds(2000)), "0:00 left");
    EXPECT_EQ(timeLeft(10, milliseconds(3600000)), "540:00 left");
    EXPECT_EQ(timeLeft(255, milliseconds(10000)), "");
}

TEST(Progress, ShowsARateFromTheFirstSecondOn)
{
    EXPECT_EQ(transferRate(100000, 1, milliseconds(1000)), "1.0 KB/s");
    EXPECT_EQ(transferRate(100000, 1, milliseconds(999)), "");
    EXPECT_EQ(transferRate(999, 100, milliseconds(100000)), "0.0 KB/s");
}
