// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareFile.h"
#include "testing/RowTest.h"
#include "upgrade/Flasher_STM32.h"

namespace microcontroller_flasher_test {

using namespace Halvix;
using firmware::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

using Task = IFlasher::Task;

namespace {

constexpr auto kSupervisor = Flasher_STM32::Supervisor;
constexpr auto kFront = Flasher_STM32::FrontController;

eErr run(const SimulatedUnit& unit, Flasher_STM32::eDeviceType type, const Bytes& image, Task task = Task::Program)
{
    Flasher_STM32 flasher{type};
    flasher.setFileName(firmware::file(unit, firmware::intelHex(image)).c_str());
    return flasher.Run(task);
}

Bytes flashOf(SimulatedUnit& unit, Flasher_STM32::eDeviceType type, std::size_t size)
{
    const auto both = unit.model<hxsim::Microcontrollers>();
    const Bytes& flash = (type == kSupervisor ? both->supervisor : both->front).flash;
    return {flash.begin(), flash.begin() + static_cast<std::ptrdiff_t>(size)};
}

/// The calls on the unit, without the characters of the file and the bytes on the line.
std::vector<std::string> stepsOf(SimulatedUnit& unit)
{
    std::vector<std::string> steps;
    for (const hxsim::Entry& entry : unit.entries())
        if (entry.subject == "/dev/uart-redir" || entry.subject == "sleep" ||
            (entry.subject == "/dev/ttyS0" && entry.kind != hxsim::Entry::Kind::Read &&
             entry.kind != hxsim::Entry::Kind::Write))
            steps.push_back(entry.text());
    return steps;
}

class EitherMicrocontroller : public hxtest::TestWithRow<Flasher_STM32::eDeviceType> {};
TEST_ROWS(Flasher, EitherMicrocontroller, hxtest::kNumbered, kSupervisor, kFront);

} // namespace

ROW_TEST(EitherMicrocontroller, HoldsTheImageAfterAnUpgrade)
{
    SimulatedUnit unit;
    const Bytes image = firmware::pattern(20000);

    EXPECT_EQ(run(unit, row(), image), ERR_SUCCESS);

    EXPECT_EQ(flashOf(unit, row(), image.size()), image);
}

ROW_TEST(EitherMicrocontroller, HoldsAnImageOfEveryLengthOfItsLastBlock)
{
    for (std::size_t size = 256; size < 264; ++size) {
        SimulatedUnit unit;
        const Bytes image = firmware::pattern(size, static_cast<unsigned>(size));

        EXPECT_EQ(run(unit, row(), image), ERR_SUCCESS) << size;
        EXPECT_EQ(flashOf(unit, row(), size), image);
    }
}

ROW_TEST(EitherMicrocontroller, HasZeroBytesInTheFilesHoles)
{
    SimulatedUnit unit;
    Flasher_STM32 flasher{row()};
    flasher.setFileName(firmware::file(unit, firmware::linear(0x0800) + firmware::data(0, {1}) +
                                                 firmware::data(8, {2}) + std::string{firmware::kEnd})
                            .c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_SUCCESS);

    EXPECT_THAT(flashOf(unit, row(), 9), ElementsAre(1, 0, 0, 0, 0, 0, 0, 0, 2));
}

ROW_TEST(EitherMicrocontroller, IsOnlyReadByAVerification)
{
    SimulatedUnit unit;
    const Bytes before = flashOf(unit, row(), 4096);

    EXPECT_EQ(run(unit, row(), before, Task::Verify), ERR_SUCCESS);
    EXPECT_EQ(run(unit, row(), firmware::pattern(16), Task::Verify), ERR_VERIFY_FAILED);

    EXPECT_EQ(flashOf(unit, row(), 4096), before);
}

ROW_TEST(EitherMicrocontroller, IsUntouchedByABadFile)
{
    for (const char* const text : {"", "x", ":00000001FE", ":0100000001FF", ":01000000", ":01000000AB54\n"}) {
        SimulatedUnit unit;
        const Bytes before = flashOf(unit, row(), 1000);
        Flasher_STM32 flasher{row()};
        flasher.setFileName(firmware::file(unit, text).c_str());

        EXPECT_NE(flasher.Run(Task::Program), ERR_SUCCESS) << text;

        EXPECT_EQ(flashOf(unit, row(), 1000), before);
        EXPECT_THAT(unit.callsTo("/dev/ttyS0"), IsEmpty());
        EXPECT_EQ(unit.get("uart.direction"), "0");
    }
}

TEST(Flasher, RoutesToTheSupervisorAndTurnsTheLineBack)
{
    SimulatedUnit unit;

    ASSERT_EQ(run(unit, kSupervisor, firmware::pattern(16)), ERR_SUCCESS);

    EXPECT_THAT(stepsOf(unit),
                ElementsAre("/dev/uart-redir open rdwr nonblock", "/dev/uart-redir 0x4001004c: 96", "sleep 100 ms",
                            "/dev/uart-redir 0x4001004b: 01", "sleep 100 ms", "/dev/ttyS0 open rdwr nonblock noctty",
                            "/dev/ttyS0 tcgetattr", "/dev/ttyS0 tcflush input",
                            "/dev/ttyS0 tcsetattr now 115200 8e1 vmin 0 vtime 30", "/dev/ttyS0 tcgetattr",
                            "/dev/ttyS0 tcflush input", "/dev/ttyS0 tcsetattr now 9600 8n1 vmin 1 vtime 0",
                            "/dev/ttyS0 close", "/dev/uart-redir 0x4001004b: 00", "/dev/uart-redir close"));
}

TEST(Flasher, RoutesToTheFrontControllerAndTurnsEverythingBack)
{
    SimulatedUnit unit;

    ASSERT_EQ(run(unit, kFront, firmware::pattern(16), Task::Verify), ERR_VERIFY_FAILED);

    EXPECT_THAT(stepsOf(unit),
                InOrder({"/dev/uart-redir open rdwr nonblock", "/dev/uart-redir 0x4001004c: 0f", "sleep 500 ms",
                         "/dev/uart-redir 0x40010050", "sleep 500 ms", "/dev/uart-redir 0x4001004b: 02", "sleep 500 ms",
                         "/dev/ttyS0 close", "/dev/uart-redir 0x4001004c: c3", "/dev/uart-redir 0x4001004b: 00",
                         "sleep 100 ms", "/dev/uart-redir close"}));
}

TEST(Flasher, NeverStartsAProgramOnTheTarget)
{
    SimulatedUnit unit;

    ASSERT_EQ(run(unit, kSupervisor, firmware::pattern(600)), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("/dev/ttyS0"), testing::Not(testing::Contains("write: 21 de")));
}

TEST(Flasher, SendsEachFrameInOneWrite)
{
    SimulatedUnit unit;

    ASSERT_EQ(run(unit, kSupervisor, Bytes{1, 2, 4, 8}), ERR_SUCCESS);

    std::vector<std::string> writes;
    for (const std::string& call : unit.callsTo("/dev/ttyS0"))
        if (call.starts_with("write"))
            writes.push_back(call);
    EXPECT_THAT(writes, ElementsAre("write: 7f", "write: 00 ff", "write: 01 fe", "write: 02 fd", "write: 43 bc",
                                    "write: ff 00", "write: 31 ce", "write: 08 00 00 00 08", "write: 03 01 02 04 08 0c",
                                    "write: 11 ee", "write: 08 00 00 00 08", "write: 03 fc"));
}

TEST(Flasher, ReadsTheFileCharacterByCharacter)
{
    SimulatedUnit unit;
    Flasher_STM32 flasher;
    flasher.setFileName(firmware::file(unit, ":00000001FF\n").c_str());

    EXPECT_EQ(flasher.openFile(), ERR_SUCCESS);

    EXPECT_EQ(flasher.image()->size, 0U);
}

TEST(Flasher, RunsAlthoughTheRedirectorIsMissingIfTheTargetAnswers)
{
    SimulatedUnit unit{"absent = /dev/uart-redir"};

    EXPECT_EQ(run(unit, kSupervisor, firmware::pattern(16)), ERR_OPEN_FAILED) << "the line leads nowhere";

    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), testing::Each("open rdwr nonblock !ENOENT"));
}

TEST(Flasher, ConnectsAgainWhenABytesIsLostOnTheLine)
{
    for (const int lost : {1, 2, 3, 10}) {
        SimulatedUnit unit;
        unit.set("uart.drop-to-unit", lost);

        EXPECT_EQ(run(unit, kSupervisor, firmware::pattern(16)), ERR_SUCCESS) << "byte " << lost << " to the unit";
    }
}

TEST(Flasher, FailsWhenAByteIsLostInABlock)
{
    SimulatedUnit unit;
    unit.set("uart.drop-to-target", 1 + 2 + 2 + 2 + 2 + 2 + 2 + 5 + 7);

    EXPECT_EQ(run(unit, kSupervisor, firmware::pattern(16)), ERR_DEVICE_WRITE_DATA_FAILED);
}

TEST(Flasher, ReleasesItsImageWhenTheNextFileIsBad)
{
    SimulatedUnit unit;
    Flasher_STM32 flasher;
    flasher.setFileName(firmware::file(unit, ":0100000001FE\n:00000001FF\n").c_str());
    ASSERT_EQ(flasher.openFile(), ERR_SUCCESS);
    ASSERT_EQ(flasher.image()->size, 1U);

    flasher.setFileName(firmware::file(unit, "x").c_str());
    EXPECT_EQ(flasher.openFile(), ERR_INVALID_DATA);

    EXPECT_EQ(flasher.image(), nullptr);
    EXPECT_EQ(flasher.writeAndVerifyFlash(Task::Program), ERR_OPEN_FAILED);
}

TEST(Flasher, CutsAFileNameAt256Characters)
{
    SimulatedUnit unit;
    Flasher_STM32 flasher;

    EXPECT_TRUE(flasher.setFileName(std::string(256, 'x').c_str()));
    EXPECT_FALSE(flasher.setFileName(std::string(257, 'x').c_str()));
}

TEST(Flasher, OpensTheFileOfACutName)
{
    SimulatedUnit unit;
    std::string name = unit.folder() + "/";
    name += std::string(256 - name.size(), '/');
    std::string longest = unit.folder();
    longest += std::string(256 - longest.size() - 1, '/') + "f";
    firmware::file(unit, ":00000001FF\n", "f");
    Flasher_STM32 flasher;

    EXPECT_FALSE(flasher.setFileName((longest + "oo").c_str()));

    EXPECT_EQ(flasher.openFile(), ERR_SUCCESS);
}

TEST(Flasher, HandsOutItsImageAndStartsAgain)
{
    HexImage image;
    ASSERT_TRUE(image.grow(3));
    image.data[0] = 7;
    unsigned char bytes[8] = {};
    unsigned length = 2;

    EXPECT_TRUE(Flasher_STM32::hex_read(&image, bytes, &length));
    EXPECT_EQ(length, 2U);
    length = 8;
    EXPECT_TRUE(Flasher_STM32::hex_read(&image, bytes, &length));
    EXPECT_EQ(length, 1U);
    EXPECT_TRUE(Flasher_STM32::hex_read(&image, bytes, &length));
    EXPECT_EQ(length, 0U);

    Flasher_STM32::hex_restart(&image);
    length = 1;
    EXPECT_TRUE(Flasher_STM32::hex_read(&image, bytes, &length));
    EXPECT_EQ(bytes[0], 7);
}

TEST(Flasher, CalculatesPercentsIn32Bits)
{
    EXPECT_EQ(Flasher_STM32::calcPercent(1, 3), 33U);
    EXPECT_EQ(Flasher_STM32::calcPercent(3, 3), 100U);
    EXPECT_EQ(Flasher_STM32::calcPercent(5, 0), 0U) << "a file of unknown size";
    EXPECT_EQ(Flasher_STM32::calcPercent(42949673, 42949673), 0U) << "the product wraps";
}

TEST(Flasher, DoesNotSwapHexAddresses)
{
    EXPECT_TRUE(Flasher_STM32::cpu_le());
    EXPECT_EQ(Flasher_STM32::be_u32(0x12345678), 0x12345678U);
}

TEST(Flasher, SendsTheDaemonTheRestartCommand)
{
    SimulatedUnit unit;

    EXPECT_TRUE(Flasher_STM32::restartAfterUpgrade());
    unit.settle();

    EXPECT_EQ(unit.get("daemon.commands"), "128");
}

TEST(Flasher, ReportsThatTheDaemonDoesNotRun)
{
    SimulatedUnit unit{"daemon.running = no"};

    EXPECT_FALSE(Flasher_STM32::restartAfterUpgrade());
}

} // namespace microcontroller_flasher_test
