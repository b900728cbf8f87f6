// SPDX-License-Identifier: LicenseRef-HXAux
// Each exit status that hxaux documents, provoked.
#include "testing/FirmwareTexts.h"
#include "tests/tools/hxaux/CommandRows.h"
#include "tools/hxaux/Objects.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace hxtest;
using testing::AllOf;

namespace {

// One record of 16 bytes makes a file for the FPGA.
constexpr char kMakeImage[] = "image=$(mktemp); echo :1000000000112233445566778899AABBCCDDEEFFF8 >$image; ";
constexpr char kRemoveImage[] = "; status=$?; rm $image; exit $status";

} // namespace

TEST(ExitStatus, IsTestedForEachThatThereIs)
{
    std::vector<int> statuses;
    for (const auto& [status, meaning] : hxaux::program().exits)
        statuses.push_back(status);
    EXPECT_THAT(statuses, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 129, 130, 143))
        << "give a new one a test here; those of signals are in EndedBySignalTest.cpp";
}

const CommandRow kExitStatusRows[] = {
    {"IsZeroWhenDone", "hxaux backlight set 3", statusIs(0)},
    {"IsOneWhenTheUnitRefuses",
     "hxaux backlight set 3",
     AllOf(errorIs("backlight set: Open failed (1)\n"), statusIs(1)),
     {"fail=/dev/backlight open EIO"}},
    {"IsThreeForAFileThatCannotBeRead", "hxaux upgrade fpga /nonexistent.mcs",
     AllOf(errorMatches("No such file"), statusIs(3))},
    {"IsFourWhenVerificationFindsADifference", std::string(kMakeImage) + "hxaux verify fpga $image" + kRemoveImage,
     AllOf(errorMatches("Verify failed \\(14\\)"), statusIs(4))},
    {"IsFiveWhenTheFunctionIsAlreadyRunning",
     "hxaux buzzer beep 60000 & beep=$!; "
     "while [ $(hx-sim get buzzer.sounding) != on ]; do sleep 0.01; done; "
     "hxaux buzzer beep 10; status=$?; kill $beep; wait $beep; exit $status",
     AllOf(errorMatches("Function in progress \\(11\\)"), statusIs(5))},
};
const TestTable kExitStatus{"ExitStatus", checkOnUnit, kExitStatusRows};

TEST(ExitStatus, IsTwoForAUsageError)
{
    EXPECT_THAT(run("hxaux backlight set bright"), statusIs(2));
}

TEST(ExitStatus, IsSixWithoutAConnectionToTheTarget)
{
    const std::string image = testing::TempDir() + "hx-status-" + std::to_string(getpid()) + ".hex";
    std::ofstream{image} << firmware::intelHexOfSize(50000, {1, 2});

    EXPECT_THAT(run("hx-sim run --scale 50 --set front.silent=on -- hxaux verify front " + image),
                AllOf(errorMatches("verify: connecting: Open failed \\(1\\)"), statusIs(6)));
    std::filesystem::remove(image);
}
