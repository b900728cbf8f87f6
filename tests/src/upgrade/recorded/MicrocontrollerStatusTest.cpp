// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareFile.h"
#include "tests/src/upgrade/recorded/Recorder.h"
#include "upgrade/Flasher_STM32.h"

#include <algorithm>
#include <span>

namespace microcontroller_status_test {

using namespace Halvix;
using firmware::Bytes;
using testing::ElementsAre;

using Task = IFlasher::Task;

namespace {

constexpr auto kSupervisor = Flasher_STM32::Supervisor;
constexpr auto kFront = Flasher_STM32::FrontController;
const Bytes kImage = firmware::pattern(1024);

const std::string kFile = firmware::intelHex(kImage);
const std::string kPrepared = "0 0..100, ";
const std::string kRead = kPrepared + "3 0..99, 3 0, ";
const std::string kConnected = kRead + "1 0..100, ";

Outcome runOn(SimulatedUnit& unit, const std::string& content, Task task = Task::Program,
              Flasher_STM32::eDeviceType type = kSupervisor)
{
    Flasher_STM32 flasher{type};
    return record(flasher, firmware::file(unit, content), task);
}

void checkSupervisorRun(const StatusRow& row)
{
    Flasher_STM32 flasher{kSupervisor};
    checkRun(flasher, row);
}

void putIntoFlash(SimulatedUnit& unit, const Bytes& image)
{
    const auto both = unit.model<hxsim::Microcontrollers>();
    std::copy(image.begin(), image.end(), both->supervisor.flash.begin());
}

} // namespace

TEST(MicrocontrollerStatus, OfAnUpgradeOfTheSupervisorIsReportedStepByStep)
{
    SimulatedUnit unit;
    Recorder recorder;
    Flasher_STM32 flasher{kSupervisor};
    recorder.attach(flasher);
    flasher.setFileName(firmware::file(unit, firmware::linear(0x0800) + firmware::data(0, Bytes(200, 7)) +
                                                 firmware::data(200, Bytes(200, 8)) + std::string{firmware::kEnd})
                            .c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_SUCCESS);

    EXPECT_THAT(recorder.published(),
                ElementsAre("0 0", "0 25", "0 75", "0 100", "3 0", "3 1", "3 50", "3 98", "3 0", "1 0", "1 50", "1 75",
                            "1 100", "4 0", "4 64", "4 100", "5 0", "5 64", "5 100", "6 0"));
}

TEST(MicrocontrollerStatus, OfAnUpgradeOfTheFrontControllerHasOneStepMore)
{
    SimulatedUnit unit;
    Recorder recorder;
    Flasher_STM32 flasher{kFront};
    recorder.attach(flasher);
    flasher.setFileName(firmware::file(unit, firmware::intelHex(Bytes(16, 7))).c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_SUCCESS);

    EXPECT_THAT(recorder.published(),
                ElementsAre("0 0", "0 25", "0 50", "0 75", "0 100", "3 0", "3 20", "3 81", "3 0", "1 0", "1 50", "1 75",
                            "1 100", "4 0", "4 100", "5 0", "5 100", "6 0"));
}

TEST(MicrocontrollerStatus, OfAVerificationHasNoWriting)
{
    SimulatedUnit unit;
    putIntoFlash(unit, kImage);

    const Outcome run = runOn(unit, kFile, Task::Verify);

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_EQ(run.story, kConnected + "5 0..100, 6 0");
}

TEST(MicrocontrollerStatus, OfAnUnknownDeviceTypeFailsWithoutAStepOfItsOwn)
{
    SimulatedUnit unit;

    const Outcome run = runOn(unit, kFile, Task::Program, static_cast<Flasher_STM32::eDeviceType>(2));

    EXPECT_EQ(run.result, ERR_INVALID_PARAMETER);
    EXPECT_EQ(run.story, "0 0, 7 0 !9");
}

TEST(MicrocontrollerStatus, OfAMissingFileFailsInReading)
{
    SimulatedUnit unit;
    Recorder recorder;
    Flasher_STM32 flasher{kSupervisor};
    recorder.attach(flasher);
    flasher.setFileName((unit.folder() + "/missing").c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_OPEN_FAILED);

    EXPECT_EQ(recorder.story(), kPrepared + "3 0, 3 0 !1, 7 0 !1");
}

const StatusRow kMicrocontrollerRows[] = {
    {"OfAFileThatIsNotHexFailsInReading", "", "not HEX", ERR_INVALID_DATA, kPrepared + "3 0, 3 0 !8, 7 0 !8"},
    {"OfAWrongChecksumFailsInReading", "", ":0100000001FF\n", ERR_CHECKSUM, kPrepared + "3 0, 3 0 !12, 7 0 !12"},
    {"OfAMissingEndRecordFailsAtAHundredPercent", "", firmware::data(0, {1}), ERR_INVALID_DATA,
     kPrepared + "3 0..92, 3 100 !8, 7 0 !8"},
    {"OfAMissingPortFailsInConnecting", "absent = /dev/ttyS0", kFile, ERR_OPEN_FAILED, kRead + "1 0, 1 0 !1, 7 0 !1"},
    {"OfAPortThatCannotBeSetUpFailsAt55Percent", "fail = /dev/ttyS0 tcsetattr EIO", kFile, ERR_OPEN_FAILED,
     kRead + "1 0..50, 1 55 !1, 7 0 !1"},
    // GET, GET VERSION, GET ID, erase, and two blocks succeed.
    {"OfABlockThatIsRefusedCarriesTheLastPercent", "ss.nack-at = 7", kFile, ERR_DEVICE_WRITE_DATA_FAILED,
     kConnected + "4 0..50, 4 50 !16, 7 0 !16"},
    {"OfAReadThatIsRefusedCarriesTheLastPercentOfVerifying", "ss.nack-at = 10", kFile, ERR_DEVICE_READ_DATA_FAILED,
     kConnected + "4 0..100, 5 0..25, 5 25 !15, 7 0 !15"},
    {"OfABitThatReadsBackWronglyFailsInVerifying", "ss.flip-read-at = 513", kFile, ERR_VERIFY_FAILED,
     kConnected + "4 0..100, 5 0..50, 5 50 !14, 7 0 !14"},
    // The erase command; its answer is ignored.
    {"OfAFlashThatWasNotErasedFailsInVerifying", "ss.nack-at = 4", kFile, ERR_VERIFY_FAILED,
     kConnected + "4 0..100, 5 0, 5 0 !14, 7 0 !14"},
    {"OfAVerificationOfAnUnknownProductReadsNothing", "ss.product-id = 0x9abc", kFile, ERR_SUCCESS,
     kConnected + "5 0, 6 0", Task::Verify},
};
const TestTable kMicrocontrollerStatus{"MicrocontrollerStatus", checkSupervisorRun, kMicrocontrollerRows};

TEST(MicrocontrollerStatus, OfAFileThatEndsInARecordsHeadFailsInReading)
{
    for (const char* const head : {":", ":0", ":01", ":0100", ":01000", ":010000", ":0100000"}) {
        SimulatedUnit unit;

        const Outcome run = runOn(unit, std::string{":01000000AB54\n"} + head);

        EXPECT_EQ(run.result, ERR_INVALID_DATA) << head;
        EXPECT_THAT(run.story, testing::EndsWith(", 3 0 !8, 7 0 !8")) << head;
    }
}

TEST(MicrocontrollerStatus, OfASilentTargetFailsAfterElevenAttempts)
{
    SimulatedUnit unit{"ss.silent = on"};
    const auto before = unit.now();

    const Outcome run = runOn(unit, kFile);

    EXPECT_EQ(run.result, ERR_OPEN_FAILED);
    EXPECT_EQ(run.story, kRead + "1 0..75, 1 100 !1, 7 0 !1");
    // Six attempts of five bytes and five of one command, with three seconds each; the waits in between, before and
    // after.
    EXPECT_EQ(unit.now() - before, (6 * 5 + 5) * 3000 + 5 * (500 + 100) + 2 * 100 + 100);
}

TEST(MicrocontrollerStatus, OfAnImageLargerThanTheFlashFailsBeforeErasing)
{
    SimulatedUnit unit{"ss.product-id = 0x412"};
    const std::string before = unit.get("ss.flash-crc");

    const Outcome run = runOn(unit, firmware::intelHex(firmware::pattern(32 * 1024 + 1)));

    EXPECT_EQ(run.result, ERR_INVALID_DATA);
    EXPECT_THAT(run.story, testing::EndsWith(", 1 0..100, 4 0, 4 0 !8, 7 0 !8"));
    EXPECT_EQ(unit.get("ss.flash-crc"), before);
}

TEST(MicrocontrollerStatus, OfAnImageThatFillsTheFlashSucceeds)
{
    SimulatedUnit unit{"ss.product-id = 0x412"};
    const Bytes image = firmware::pattern(std::size_t{32} * 1024);

    const Outcome run = runOn(unit, firmware::intelHex(image));

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_THAT(run.story, testing::EndsWith(", 1 0..100, 4 0..100, 5 0..100, 6 0"));
    const auto both = unit.model<hxsim::Microcontrollers>();
    EXPECT_TRUE(std::ranges::equal(image, std::span{both->supervisor.flash}.first(image.size())));
}

TEST(MicrocontrollerStatus, OfAnUnknownProductFailsBeforeErasing)
{
    SimulatedUnit unit{"ss.product-id = 0x9abc"};

    EXPECT_EQ(runOn(unit, kFile).story, kConnected + "4 0, 4 0 !8, 7 0 !8");
}

TEST(MicrocontrollerStatus, OfAFirstBlockThatIsRefusedCarriesNoPercent)
{
    SimulatedUnit unit;
    unit.set("ss.nack-at", 5);

    EXPECT_EQ(runOn(unit, kFile).story, kConnected + "4 0, 4 0 !16, 7 0 !16");
}

TEST(MicrocontrollerStatus, OfAVerificationThatDiffersFails)
{
    SimulatedUnit unit;
    Bytes other = kImage;
    other.back() ^= 1;
    putIntoFlash(unit, other);

    const Outcome run = runOn(unit, kFile, Task::Verify);

    EXPECT_EQ(run.result, ERR_VERIFY_FAILED);
    EXPECT_EQ(run.story, kConnected + "5 0..75, 5 75 !14, 7 0 !14");
}

TEST(MicrocontrollerStatus, OfAnEmptyImageIsErasedAndSucceeds)
{
    SimulatedUnit unit;

    const Outcome run = runOn(unit, std::string{firmware::kEnd});

    EXPECT_EQ(run.result, ERR_SUCCESS);
    EXPECT_EQ(run.story, kPrepared + "3 0, 1 0..100, 4 0, 5 0, 6 0");
    EXPECT_EQ(unit.model<hxsim::Microcontrollers>()->supervisor.flash[0], 0xFF);
}

TEST(MicrocontrollerStatus, OfAVerificationStopsAtTheEndOfTheFlash)
{
    SimulatedUnit unit{"ss.product-id = 0x412"};
    const Bytes image = firmware::pattern(32 * 1024 + 4096);
    putIntoFlash(unit, image);

    EXPECT_EQ(runOn(unit, firmware::intelHex(image), Task::Verify).result, ERR_SUCCESS);
}

TEST(Publishing, OfTheVeryFirstStateIsAChange)
{
    Recorder recorder;
    Flasher_STM32 flasher;
    recorder.attach(flasher);

    flasher.updateSharedStatus(UpgradeActionPrepareHardware, 0, ERR_SUCCESS);

    EXPECT_THAT(recorder.published(), ElementsAre("0 0"));
}

TEST(Publishing, SwallowsRepeats)
{
    Recorder recorder;
    Flasher_STM32 flasher;
    recorder.attach(flasher);

    for (int i = 0; i < 2; ++i)
        flasher.updateSharedStatus(UpgradeActionWrite, 5, ERR_SUCCESS);
    flasher.updateSharedStatus(UpgradeActionWrite, 5, ERR_IOCTRL_FAILED);
    flasher.updateSharedStatus(UpgradeActionVerify, 5, ERR_IOCTRL_FAILED);

    EXPECT_THAT(recorder.published(), ElementsAre("4 5", "4 5 !7", "5 5 !7"));
}

TEST(Publishing, DoesNothingWhenTheLockCannotBeTaken)
{
    Recorder recorder;
    Flasher_STM32 flasher;
    recorder.attach(flasher);
    recorder.breakLock();

    flasher.updateSharedStatus(UpgradeActionWrite, 5, ERR_SUCCESS);

    EXPECT_THAT(recorder.published(), testing::IsEmpty());
}

TEST(Publishing, DoesNothingWithoutASignal)
{
    Flasher_STM32 flasher;

    flasher.updateSharedStatus(UpgradeActionWrite, 5, ERR_SUCCESS);
}

} // namespace microcontroller_status_test
