// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/FpgaFlash.h"
#include "testing/FirmwareFile.h"
#include "tests/src/upgrade/recorded/Recorder.h"
#include "upgrade/Flasher_FPGA.h"

using namespace Halvix;
using firmware::Bytes;
using testing::ElementsAre;

using Task = IFlasher::Task;

namespace {

const Bytes kImage = firmware::pattern(1008); // one page and most of a second one
const std::string kFile = firmware::mcs(kImage);
const std::string kReady = "0 0..100, ";
const std::string kRead = kReady + "3 0..100, ";

Outcome runOn(SimulatedUnit& unit, const std::string& content, Task task = Task::Program)
{
    Flasher_FPGA flasher;
    return record(flasher, firmware::file(unit, content), task);
}

void checkFpgaRun(const StatusRow& row)
{
    Flasher_FPGA flasher;
    checkRun(flasher, row);
}

void putIntoFlash(SimulatedUnit& unit, const Bytes& image)
{
    const auto flash = unit.model<hxsim::FpgaFlash>();
    std::copy(image.begin(), image.end(), flash->content.begin());
}

} // namespace

TEST(FpgaStatus, OfAnUpgradeIsReportedStepByStep)
{
    SimulatedUnit unit;
    Recorder recorder;
    Flasher_FPGA flasher;
    recorder.attach(flasher);
    flasher.setFileName(firmware::file(unit, firmware::mcs(firmware::pattern(32))).c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_SUCCESS);

    EXPECT_THAT(recorder.published(), ElementsAre("0 0", "0 50", "0 100", "3 0", "3 48", "3 84", "3 100", "4 0",
                                                  "4 100", "5 0", "5 100", "6 0"));
}

const StatusRow kFpgaRows[] = {
    {"OfAnUpgradeOfTwoPagesHasAPercentForEach", "", kFile, ERR_SUCCESS, kRead + "4 0..100, 5 0..100, 6 0"},
    {"OfAMissingDeviceFailsAtOnce", "absent = /dev/fpgaflash", kFile, ERR_OPEN_FAILED, "0 0, 0 0 !1, 7 0 !1"},
    {"OfARefusedStatusRequestFailsInPreparing", "fail = /dev/fpgaflash 0x4001004d EIO", kFile, ERR_IOCTRL_FAILED,
     "0 0..50, 0 100 !7, 7 0 !7"},
    {"OfAFlashThatIsNotReadyFailsBeforeTheFileIsRead", "fpga.status = 1", kFile, ERR_INIT_FAILED,
     "0 0..50, 0 100 !13, 7 0 !13"},
    {"OfAFileOfShortRecordsFailsInWriting", "", firmware::data(0, Bytes(8)) + firmware::data(8, Bytes(8)),
     ERR_INVALID_DATA, kRead + "4 0, 4 0 !8, 7 0 !8"},
    {"OfAVerificationWithAFileOfShortRecordsFailsInVerifying", "", firmware::data(0, Bytes(8)), ERR_INVALID_DATA,
     kRead + "5 0, 5 0 !8, 7 0 !8", Task::Verify},
    {"OfADriverWithoutProgressFailsInWriting", "fpga.accepts = 0", kFile, ERR_IOCTRL_FAILED,
     kRead + "4 0, 4 100 !7, 7 0 !7"},
    {"OfARefusedReadFailsInVerifying", "fail = /dev/fpgaflash 0xc218004f EIO", kFile, ERR_IOCTRL_FAILED,
     kRead + "4 0..100, 5 0, 5 100 !7, 7 0 !7"},
    {"OfADriverThatReadsNothingFailsInVerifying", "fpga.reads-nothing = on", kFile, ERR_DEVICE_READ_DATA_FAILED,
     kRead + "4 0..100, 5 0, 5 100 !15, 7 0 !15"},
    {"OfADifferenceCarriesThePercentOfItsPlace", "fpga.flip-read-at = 757", kFile, ERR_VERIFY_FAILED,
     kRead + "4 0..100, 5 0..52, 5 75 !14, 7 0 !14"},
};
const TestTable kFpgaStatus{"FpgaStatus", checkFpgaRun, kFpgaRows};

TEST(FpgaStatus, OfAVerificationHasNoWriting)
{
    SimulatedUnit unit;
    putIntoFlash(unit, kImage);

    const Outcome run = runOn(unit, kFile, Task::Verify);

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_EQ(run.story, kRead + "5 0..100, 6 0");
}

TEST(FpgaStatus, OfAMissingFileFailsInReading)
{
    SimulatedUnit unit;
    Recorder recorder;
    Flasher_FPGA flasher;
    recorder.attach(flasher);
    flasher.setFileName((unit.folder() + "/missing").c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_OPEN_FAILED);

    EXPECT_EQ(recorder.story(), kReady + "3 0, 3 0 !1, 7 0 !1");
    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), testing::IsEmpty());
}

TEST(FpgaStatus, OfAWrongChecksumTakesThePlaceOfTheProgress)
{
    SimulatedUnit unit;
    const std::string full = firmware::data(0, firmware::pattern(16));
    std::string wrong = full;
    wrong[10] = wrong[10] == '0' ? '1' : '0';

    const Outcome run = runOn(unit, full + wrong);

    EXPECT_EQ(run.result, ERR_CHECKSUM);
    EXPECT_EQ(run.story, kReady + "3 0..47, 3 95 !12, 7 0 !12");
}

TEST(FpgaStatus, OfARefusedBlockFailsInWriting)
{
    SimulatedUnit unit;
    unit.fail("/dev/fpgaflash", 0xc218004e, EIO, 1, 1);

    const Outcome run = runOn(unit, kFile);

    EXPECT_EQ(run.result, ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0..52, 4 100 !7, 7 0 !7");
}
