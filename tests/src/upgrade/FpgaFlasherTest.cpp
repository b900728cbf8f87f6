// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/FpgaFlash.h"
#include "testing/FirmwareFile.h"
#include "upgrade/FileSource.h"
#include "upgrade/Flasher_FPGA.h"

#include <fcntl.h>
#include <unistd.h>

using namespace Halvix;
using firmware::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Task = IFlasher::Task;

namespace {

constexpr char kNode[] = "/dev/fpgaflash";

eErr run(const SimulatedUnit& unit, const Bytes& image, Task task = Task::Program)
{
    Flasher_FPGA flasher;
    flasher.setFileName(firmware::fpgaFile(unit, image).c_str());
    return flasher.Run(task);
}

Bytes flashOf(SimulatedUnit& unit, std::size_t size)
{
    const auto flash = unit.model<hxsim::FpgaFlash>();
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = flash->at(i);
    return bytes;
}

/// The head of a block request in the journal: length and position.
std::vector<std::string> heads(SimulatedUnit& unit, const std::string& request)
{
    std::vector<std::string> found;
    for (const std::string& call : unit.requestsTo(kNode))
        if (call.starts_with(request))
            found.push_back(call.substr(0, request.size() + 2 + std::size_t{8} * 3 - 1));
    return found;
}

} // namespace

TEST(FpgaFlasher, WritesTheImageFromPositionZero)
{
    SimulatedUnit unit;
    const Bytes image = firmware::pattern(4096);

    EXPECT_EQ(run(unit, image), ERR_SUCCESS);

    EXPECT_EQ(flashOf(unit, image.size()), image);
}

TEST(FpgaFlasher, WritesBlocksOf528BytesAndReadsAlways528)
{
    SimulatedUnit unit;

    EXPECT_EQ(run(unit, firmware::pattern(1008)), ERR_SUCCESS);

    EXPECT_THAT(heads(unit, "0xc218004e"),
                ElementsAre("0xc218004e: 10 02 00 00 00 00 00 00", "0xc218004e: e0 01 00 00 10 02 00 00"));
    EXPECT_THAT(heads(unit, "0xc218004f"),
                ElementsAre("0xc218004f: 10 02 00 00 00 00 00 00", "0xc218004f: 10 02 00 00 10 02 00 00"));
}

TEST(FpgaFlasher, ReadsTheStatusWithOneByte)
{
    SimulatedUnit unit;

    EXPECT_EQ(run(unit, firmware::pattern(16)), ERR_SUCCESS);

    EXPECT_EQ(unit.requestsTo(kNode).front(), "0x4001004d -> 00");
}

TEST(FpgaFlasher, SendsAgainWhatTheDriverDidNotTake)
{
    SimulatedUnit unit{"fpga.accepts = 264"};
    const Bytes image = firmware::pattern(1008);

    EXPECT_EQ(run(unit, image), ERR_SUCCESS);

    EXPECT_THAT(heads(unit, "0xc218004e"),
                ElementsAre("0xc218004e: 10 02 00 00 00 00 00 00", "0xc218004e: 10 02 00 00 08 01 00 00",
                            "0xc218004e: e0 01 00 00 10 02 00 00", "0xc218004e: d8 00 00 00 18 03 00 00"));
    EXPECT_EQ(flashOf(unit, image.size()), image);
}

TEST(FpgaFlasher, WritesNothingInAVerification)
{
    SimulatedUnit unit;
    const Bytes before = flashOf(unit, 1008);

    EXPECT_EQ(run(unit, firmware::pattern(1008), Task::Verify), ERR_VERIFY_FAILED);

    EXPECT_EQ(flashOf(unit, 1008), before);
    EXPECT_THAT(heads(unit, "0xc218004e"), IsEmpty());
}

TEST(FpgaFlasher, KeepsTheSupervisorOffTheFlash)
{
    SimulatedUnit unit;

    EXPECT_EQ(run(unit, firmware::pattern(16)), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), InOrder({"/dev/fpgaflash open rdwr nonblock", "/dev/fpgaflash 0x4001004d -> 00",
                                         "/dev/uart-redir open rdwr nonblock", "/dev/uart-redir 0x4001004c: 0f",
                                         "sleep 50 ms", "/dev/uart-redir 0x4001004c: c3", "/dev/fpgaflash close"}));
}

TEST(FpgaFlasher, TurnsTheSupervisorBackAlsoWhenItCouldNotBeReached)
{
    SimulatedUnit unit;
    unit.fail("/dev/uart-redir", 0x4001004c);

    EXPECT_EQ(run(unit, firmware::pattern(16)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo("/dev/uart-redir"), ElementsAre("0x4001004c: 0f !EIO", "0x4001004c: c3 !EIO"));
}

TEST(FpgaFlasher, LeavesTheSupervisorAloneWhenTheFileIsBad)
{
    SimulatedUnit unit;
    Flasher_FPGA flasher;
    flasher.setFileName((unit.folder() + "/missing").c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_OPEN_FAILED);

    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), IsEmpty());
    EXPECT_THAT(unit.callsTo(kNode).back(), StartsWith("close"));
}

TEST(FpgaFlasher, TakesAFolderForAnEmptyFile)
{
    SimulatedUnit unit;
    Flasher_FPGA flasher;
    flasher.setFileName(unit.folder().c_str());

    EXPECT_EQ(flasher.Run(Task::Program), ERR_INVALID_DATA);
}

TEST(FpgaFlasher, ClosesTheRedirectorWhenItIsDestroyed)
{
    SimulatedUnit unit;

    EXPECT_EQ(run(unit, firmware::pattern(16)), ERR_SUCCESS);

    EXPECT_EQ(unit.callsTo("/dev/uart-redir").back(), "close");
}

TEST(BufferedSource, EndsPermanentlyAtAFailedRead)
{
    SimulatedUnit unit;
    const File file{firmware::file(unit, std::string(10000, 'x')).c_str()};
    BufferedSource source{file};
    Characters characters{source};
    char character = '\0';
    for (int i = 0; i < 4096; ++i) // the size of one read
        ASSERT_TRUE(characters.next(character));

    const int unreadable = ::open("/dev/null", O_WRONLY);
    ASSERT_EQ(::dup2(unreadable, file.handle()), file.handle());
    ::close(unreadable);

    EXPECT_FALSE(characters.next(character));
    EXPECT_FALSE(characters.next(character));
}

TEST(FpgaFlasher, EmptiesItsImageBeforeAFileThatIsMissing)
{
    SimulatedUnit unit;
    Flasher_FPGA flasher;
    flasher.setFileName(firmware::fpgaFile(unit, firmware::pattern(16)).c_str());
    ASSERT_EQ(flasher.Mcs2Bin(), ERR_SUCCESS);
    ASSERT_EQ(flasher.image().size(), 16U);

    flasher.setFileName("/missing");
    EXPECT_EQ(flasher.Mcs2Bin(), ERR_OPEN_FAILED);

    EXPECT_THAT(flasher.image(), IsEmpty());
}

TEST(FpgaFlasher, RefusesAnEmptyImage)
{
    SimulatedUnit unit;
    Flasher_FPGA flasher;

    EXPECT_EQ(flasher.flash(), ERR_INVALID_DATA);
    EXPECT_EQ(flasher.verify(), ERR_INVALID_DATA);
}

TEST(FpgaFlasher, CalculatesPercents)
{
    EXPECT_EQ(Flasher_FPGA::calcPercent(528, 1000), 52U);
    EXPECT_EQ(Flasher_FPGA::calcPercent(1, 0), 0U);
}
