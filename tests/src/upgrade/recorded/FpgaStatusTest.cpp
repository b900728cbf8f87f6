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
const std::string kReady = "0 0..100, ";
const std::string kRead = kReady + "3 0..100, ";

struct Outcome {
    eErr result;
    std::string story;
};

Outcome runOn(SimulatedUnit& unit, const std::string& text, Task task = Task::Program)
{
    Recorder recorder;
    Flasher_FPGA flasher;
    recorder.attach(flasher);
    flasher.setFileName(firmware::file(unit, text).c_str());
    const eErr result = flasher.Run(task);
    EXPECT_EQ(recorder.runsReleased(), 1);
    return {result, recorder.story()};
}

Outcome runGoodFileOn(SimulatedUnit& unit, Task task = Task::Program)
{
    return runOn(unit, firmware::mcs(kImage), task);
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

TEST(FpgaStatus, OfAnUpgradeOfTwoPagesHasAPercentForEach)
{
    SimulatedUnit unit;

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_EQ(run.story, kRead + "4 0..100, 5 0..100, 6 0");
}

TEST(FpgaStatus, OfAVerificationHasNoWriting)
{
    SimulatedUnit unit;
    putIntoFlash(unit, kImage);

    const Outcome run = runGoodFileOn(unit, Task::Verify);

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_EQ(run.story, kRead + "5 0..100, 6 0");
}

TEST(FpgaStatus, OfAMissingDeviceFailsAtOnce)
{
    SimulatedUnit unit{"absent = /dev/fpgaflash"};

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_OPEN_FAILED);
    EXPECT_EQ(run.story, "0 0, 0 0 !1, 7 0 !1");
}

TEST(FpgaStatus, OfARefusedStatusRequestFailsInPreparing)
{
    SimulatedUnit unit;
    unit.fail("/dev/fpgaflash", 0x4001004d);

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.story, "0 0..50, 0 100 !7, 7 0 !7");
}

TEST(FpgaStatus, OfAFlashThatIsNotReadyFailsBeforeTheFileIsRead)
{
    SimulatedUnit unit{"fpga.status = 1"};

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_INIT_FAILED);
    EXPECT_EQ(run.story, "0 0..50, 0 100 !13, 7 0 !13");
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

TEST(FpgaStatus, OfAFileOfShortRecordsFailsInWriting)
{
    SimulatedUnit unit;

    const Outcome run = runOn(unit, firmware::data(0, Bytes(8)) + firmware::data(8, Bytes(8)));

    EXPECT_EQ(run.result, ERR_INVALID_DATA);
    EXPECT_EQ(run.story, kRead + "4 0, 4 0 !8, 7 0 !8");
}

TEST(FpgaStatus, OfAVerificationWithAFileOfShortRecordsFailsInVerifying)
{
    SimulatedUnit unit;

    const Outcome run = runOn(unit, firmware::data(0, Bytes(8)), Task::Verify);

    EXPECT_EQ(run.result, ERR_INVALID_DATA);
    EXPECT_EQ(run.story, kRead + "5 0, 5 0 !8, 7 0 !8");
}

TEST(FpgaStatus, OfARefusedBlockFailsInWriting)
{
    SimulatedUnit unit;
    unit.fail("/dev/fpgaflash", 0xc218004e, EIO, 1, 1);

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0..52, 4 100 !7, 7 0 !7");
}

TEST(FpgaStatus, OfADriverWithoutProgressFailsInWriting)
{
    SimulatedUnit unit{"fpga.accepts = 0"};

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0, 4 100 !7, 7 0 !7");
}

TEST(FpgaStatus, OfARefusedReadFailsInVerifying)
{
    SimulatedUnit unit;
    unit.fail("/dev/fpgaflash", 0xc218004f);

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_IOCTRL_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0..100, 5 0, 5 100 !7, 7 0 !7");
}

TEST(FpgaStatus, OfADriverThatReadsNothingFailsInVerifying)
{
    SimulatedUnit unit{"fpga.reads-nothing = on"};

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_DEVICE_READ_DATA_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0..100, 5 0, 5 100 !15, 7 0 !15");
}

TEST(FpgaStatus, OfADifferenceCarriesThePercentOfItsPlace)
{
    SimulatedUnit unit{"fpga.flip-read-at = 757"};

    const Outcome run = runGoodFileOn(unit);

    EXPECT_EQ(run.result, ERR_VERIFY_FAILED);
    EXPECT_EQ(run.story, kRead + "4 0..100, 5 0..52, 5 75 !14, 7 0 !14");
}
