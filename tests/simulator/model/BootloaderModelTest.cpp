// SPDX-License-Identifier: LicenseRef-HXAux
// The ROM bootloader of the simulated microcontrollers, accessed over the unit's serial node.
#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"
#include "simulator/model/ServiceUart.h"
#include "simulator/model/UartRouting.h"

#include <gmock/gmock.h>

#include <array>
#include <cerrno>

namespace bootloader_model_test {

namespace {

using namespace hxsim;
using Bytes = std::vector<std::uint8_t>;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint8_t kAck = 0x79;
constexpr std::uint8_t kNack = 0x1F;

/// A unit whose line leads to the supervisor in its bootloader.
class Line {
public:
    explicit Line(bool paced = false)
    {
        unit.get<ServiceUart>().paced = paced;
        settings(115200, 'e');
        request(0x4001004C, {0x96});
        request(0x4001004B, {1});
    }

    void settings(std::uint32_t baud, char parity) { port().setLine(LineSettings{baud, 8, parity, 1, 0, 30, false}); }
    int request(std::uint32_t code, const Bytes& in)
    {
        Node& node = *unit.findNode("/dev/uart-redir");
        return node.ioctl(*node.open(0), code, in, {});
    }
    /// What the target answers to these bytes within a second.
    Bytes ask(const Bytes& bytes)
    {
        const auto file = port().open(0);
        (void)port().write(*file, bytes);
        unit.clock().advanceTo(unit.clock().now() + std::chrono::seconds{1});
        Bytes answer(600);
        const Outcome outcome = port().read(*file, answer, unit.clock().now());
        answer.resize(outcome.waits ? 0 : static_cast<std::size_t>(outcome.result));
        return answer;
    }
    Bytes write(std::uint32_t address, const Bytes& data)
    {
        if (Bytes answer = at(0x31, address); answer != Bytes{kAck})
            return answer;
        Bytes frame{static_cast<std::uint8_t>(data.size() - 1)};
        frame.insert(frame.end(), data.begin(), data.end());
        std::uint8_t sum = 0;
        for (const std::uint8_t byte : frame)
            sum ^= byte;
        frame.push_back(sum);
        return ask(frame);
    }
    /// A command with an address; the answer to the address.
    Bytes at(std::uint8_t command, std::uint32_t address)
    {
        EXPECT_THAT(ask({command, static_cast<std::uint8_t>(~command)}), ElementsAre(kAck));
        const Bytes bytes{static_cast<std::uint8_t>(address >> 24), static_cast<std::uint8_t>(address >> 16),
                          static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)};
        return ask({bytes[0], bytes[1], bytes[2], bytes[3],
                    static_cast<std::uint8_t>(bytes[0] ^ bytes[1] ^ bytes[2] ^ bytes[3])});
    }
    Microcontroller& chip() { return unit.get<Microcontrollers>().supervisor; }

    Unit unit;

private:
    Node& port() { return *unit.findNode("/dev/ttyS0"); }
};

} // namespace

TEST(BootloaderModel, SynchronisesOnceAndThenTakesCommands)
{
    Line line;

    EXPECT_THAT(line.ask({0x7F}), ElementsAre(kAck));
    EXPECT_THAT(line.ask({0x7F, 0x7F}), ElementsAre(kNack)) << "a command without its complement";
}

TEST(BootloaderModel, DoesNotAnswerAtOtherLineSettings)
{
    Line line;
    line.settings(115200, 'n');
    EXPECT_THAT(line.ask({0x7F}), IsEmpty());
    line.settings(230400, 'e');
    EXPECT_THAT(line.ask({0x7F}), IsEmpty());
    line.settings(9600, 'e');
    EXPECT_THAT(line.ask({0x7F}), ElementsAre(kAck)) << "it learns slower rates";
}

TEST(BootloaderModel, ListsItsCommandsAndItsProduct)
{
    Line line;
    line.ask({0x7F});

    EXPECT_THAT(line.ask({0x00, 0xFF}),
                ElementsAre(kAck, 11, 0x22, 0x00, 0x01, 0x02, 0x11, 0x21, 0x31, 0x43, 0x63, 0x73, 0x82, 0x92, kAck));
    EXPECT_THAT(line.ask({0x01, 0xFE}), ElementsAre(kAck, 0x22, 0, 0, kAck));
    EXPECT_THAT(line.ask({0x02, 0xFD}), ElementsAre(kAck, 1, 0x04, 0x14, kAck));
}

TEST(BootloaderModel, RefusesAnUnknownCommand)
{
    Line line;
    line.ask({0x7F});

    EXPECT_THAT(line.ask({0x44, 0xBB}), ElementsAre(kNack));
}

TEST(BootloaderModel, OnlyClearsBitsUntilItErases)
{
    Line line;
    line.ask({0x7F});
    line.chip().flash[0] = 0xF0;
    line.chip().flash[1] = 0xFF;

    EXPECT_THAT(line.write(0x08000000, {0x3C, 0x55}), ElementsAre(kAck));

    EXPECT_EQ(line.chip().flash[0], 0x30);
    EXPECT_EQ(line.chip().flash[1], 0x55);
    line.ask({0x43, 0xBC});
    EXPECT_THAT(line.ask({0xFF, 0x00}), ElementsAre(kAck));
    EXPECT_EQ(line.chip().flash[0], 0xFF);
}

TEST(BootloaderModel, ErasesSinglePages)
{
    Line line;
    line.ask({0x7F});
    line.chip().flash[2048] = line.chip().flash[4096] = 0;

    line.ask({0x43, 0xBC});
    EXPECT_THAT(line.ask({0x00, 0x01, 0x01}), ElementsAre(kAck));

    EXPECT_EQ(line.chip().flash[2048], 0xFF);
    EXPECT_EQ(line.chip().flash[4096], 0);
}

TEST(BootloaderModel, RefusesToWriteOutsideFlashAndRam)
{
    Line line;
    line.ask({0x7F});

    EXPECT_THAT(line.write(0x1FFFF800, {1, 2}), ElementsAre(kNack)) << "option bytes";
    EXPECT_THAT(line.write(0x20000000, {1, 2}), ElementsAre(kNack)) << "the bootloader's own RAM";
    EXPECT_THAT(line.write(0x08080000, {1, 2}), ElementsAre(kNack)) << "behind the flash";
    EXPECT_THAT(line.write(0x0807FFFE, {1, 2, 3, 4}), ElementsAre(kNack)) << "half of it behind the flash";
    EXPECT_THAT(line.write(0x20000200, {1, 2}), ElementsAre(kAck));
    EXPECT_EQ(line.chip().ram[0x201], 2);
}

TEST(BootloaderModel, RefusesWrongChecksumsAndUnevenBlocks)
{
    Line line;
    line.ask({0x7F});

    EXPECT_THAT(line.write(0x08000000, {1, 2, 3}), ElementsAre(kNack)) << "flash is written in half-words";
    line.at(0x31, 0x08000000);
    EXPECT_THAT(line.ask({0x01, 0x00, 0x00, 0x00}), ElementsAre(kNack));
    line.ask({0x31, 0xCE});
    EXPECT_THAT(line.ask({0x08, 0, 0, 0, 0x09}), ElementsAre(kNack));
}

TEST(BootloaderModel, ReadsWhatWasWritten)
{
    Line line;
    line.ask({0x7F});
    line.write(0x20000300, {0xDE, 0xAD});

    line.at(0x11, 0x20000300);
    EXPECT_THAT(line.ask({1, 0xFE}), ElementsAre(kAck, 0xDE, 0xAD));
}

TEST(BootloaderModel, StartsAProgramAndIsGoneThen)
{
    Line line;
    line.ask({0x7F});

    EXPECT_THAT(line.at(0x21, 0x20000200), ElementsAre(kAck));

    EXPECT_EQ(line.chip().state, Microcontroller::State::Running);
    EXPECT_EQ(line.chip().startedAt, 0x20000200U);
    EXPECT_THAT(line.ask({0x00, 0xFF}), IsEmpty());
}

TEST(BootloaderModel, ProtectsSectorsFromWritingUntilTheProtectionIsRemoved)
{
    Line line;
    line.ask({0x7F});
    line.chip().flash[0] = line.chip().flash[1] = 0xFF;
    line.ask({0x63, 0x9C});
    EXPECT_THAT(line.ask({0x00, 0x00, 0x00}), ElementsAre(kAck));
    line.ask({0x7F});

    line.write(0x08000000, {0, 0});
    EXPECT_EQ(line.chip().flash[0], 0xFF);

    EXPECT_THAT(line.ask({0x73, 0x8C}), ElementsAre(kAck, kAck));
    line.ask({0x7F});
    line.write(0x08000000, {0, 0});
    EXPECT_EQ(line.chip().flash[0], 0);
}

TEST(BootloaderModel, HidesAProtectedFlashAndErasesItWhenTheProtectionGoes)
{
    Line line;
    line.ask({0x7F});
    EXPECT_THAT(line.ask({0x82, 0x7D}), ElementsAre(kAck, kAck));
    line.ask({0x7F});
    EXPECT_THAT(line.ask({0x11, 0xEE}), ElementsAre(kNack));

    EXPECT_THAT(line.ask({0x92, 0x6D}), ElementsAre(kAck, kAck));

    EXPECT_EQ(line.chip().flash[0], 0xFF);
}

TEST(BootloaderModel, IsHeardOnlyWhereTheLineLeads)
{
    Line line;
    line.request(0x4001004B, {2});

    EXPECT_THAT(line.ask({0x7F}), IsEmpty()) << "the front-panel controller runs its firmware";
}

TEST(BootloaderModel, OfTheFrontControllerStartsOnlyWhenTheSupervisorLeavesItAlone)
{
    Line line;
    EXPECT_EQ(line.request(0x40010050, {}), -EBUSY);

    EXPECT_EQ(line.request(0x4001004C, {0x0F}), 0);
    EXPECT_EQ(line.request(0x40010050, {}), 0);
    line.request(0x4001004B, {2});

    EXPECT_THAT(line.ask({0x7F}), ElementsAre(kAck));
}

TEST(BootloaderModel, StartsTheFirmwareWhenTheLineTurnsBack)
{
    Line line;
    line.request(0x4001004B, {0});
    EXPECT_EQ(line.unit.properties().get("ss.state"), "running");

    line.request(0x4001004C, {0x96});
    line.request(0x4001004B, {1});
    line.chip().flash.assign(line.chip().flash.size(), 0xFF);
    line.request(0x4001004B, {0});
    EXPECT_EQ(line.unit.properties().get("ss.state"), "no firmware");
}

TEST(BootloaderModel, CountsNoBytesThatTheFirmwareGets)
{
    Line line;
    line.request(0x4001004B, {0});
    line.request(0x4001004B, {1}); // the line leads to the running firmware
    line.unit.properties().set("ss.cut-at-byte", "1");

    EXPECT_THAT(line.ask({0x7F}), IsEmpty());

    EXPECT_EQ(line.unit.properties().get("ss.state"), "running");
}

TEST(PacedWire, TakesElevenBitsForEachByte)
{
    Line line{true};
    const auto file = line.unit.findNode("/dev/ttyS0")->open(0);
    (void)line.unit.findNode("/dev/ttyS0")->write(*file, Bytes{0x7F});
    const Time passed{std::int64_t{1'000'000'000} * 11 / 115200};

    EXPECT_EQ(line.unit.clock().nextDeadline(), passed);
    line.unit.clock().advanceTo(passed);
    EXPECT_EQ(line.unit.clock().nextDeadline(), 2 * passed) << "the answer";
}

TEST(PowerOfAMicrocontroller, LeavesHalfOfAnInterruptedErase)
{
    Line line;
    line.ask({0x7F});
    line.ask({0x43, 0xBC});
    const auto file = line.unit.findNode("/dev/ttyS0")->open(0);
    (void)line.unit.findNode("/dev/ttyS0")->write(*file, Bytes{0xFF, 0x00});
    line.chip().flash.back() = 0x00;

    line.unit.actions().run("cut", {"ss"});

    EXPECT_EQ(line.unit.properties().get("ss.state"), "off");
    EXPECT_EQ(line.chip().flash.front(), 0xFF);
    EXPECT_EQ(line.chip().flash.back(), 0x00);
    line.unit.actions().run("restore", {"ss"});
    EXPECT_EQ(line.unit.properties().get("ss.state"), "no firmware");
}

/// What a driver answers for the supervisor's firmware: its version and a register.
int supervisorAnswers(Unit& unit)
{
    Bytes version(4);
    Node& versions = *unit.findNode("/dev/fpga-version");
    const int first = versions.ioctl(*versions.open(0), 0x80040037, {}, version);
    Bytes word(4);
    Node& registers = *unit.findNode("/dev/adc-id");
    const int second = registers.ioctl(*registers.open(0), 0xC004003A, Bytes(4), word);
    EXPECT_EQ(first, second);
    return first;
}

constexpr std::array<std::uint8_t, 8> kVectors{0x00, 0x10, 0x00, 0x20, 0x01, 0x01, 0x00, 0x08};

/// Erases everything and programs the beginning of a firmware.
void eraseAndBegin(Line& line)
{
    line.ask({0x7F});
    line.ask({0x43, 0xBC});
    EXPECT_THAT(line.ask({0xFF, 0x00}), ElementsAre(kAck));
    EXPECT_THAT(line.write(0x08000000, Bytes(kVectors.begin(), kVectors.end())), ElementsAre(kAck));
}

TEST(KilledUpgrade, LeavesTheSupervisorInItsBootloaderWhereItAnswersNoDriver)
{
    Line line;
    eraseAndBegin(line);

    EXPECT_EQ(line.unit.properties().get("ss.state"), "bootloader");
    EXPECT_EQ(supervisorAnswers(line.unit), -EIO);
}

TEST(KilledUpgrade, LeavesNoFirmwareToStartWhenThePowerComesBack)
{
    Line line;
    eraseAndBegin(line);

    line.unit.actions().run("supply", {"off"});
    line.unit.actions().run("supply", {"on"});

    EXPECT_EQ(line.unit.properties().get("ss.state"), "no firmware");
    EXPECT_EQ(line.unit.properties().get("uart.mode"), "0xc3");
    EXPECT_EQ(supervisorAnswers(line.unit), -EIO);
    EXPECT_EQ(line.unit.properties().get("front.state"), "running");
}

TEST(KilledUpgrade, IsRepairedByOneThatComesToItsEndAndByNoVerification)
{
    Line line;
    eraseAndBegin(line);
    line.unit.actions().run("supply", {"off"});
    line.unit.actions().run("supply", {"on"});

    line.request(0x4001004C, {0x96});
    line.request(0x4001004B, {1});
    line.ask({0x7F});
    line.request(0x4001004B, {0});
    EXPECT_EQ(line.unit.properties().get("ss.state"), "no firmware") << "nothing was written";

    line.request(0x4001004C, {0x96});
    line.request(0x4001004B, {1});
    eraseAndBegin(line);
    line.request(0x4001004B, {0});
    EXPECT_EQ(line.unit.properties().get("ss.state"), "running");
    EXPECT_EQ(supervisorAnswers(line.unit), 0);
}

TEST(KilledUpgrade, IsLikeOneInWhichABlockWasRefused)
{
    Line line;
    eraseAndBegin(line);
    EXPECT_THAT(line.write(0x08000008, {1, 2, 3}), ElementsAre(kNack)); // half a half-word

    line.request(0x4001004B, {0});

    EXPECT_EQ(line.unit.properties().get("ss.state"), "no firmware");
}

TEST(SupplyOff, RemovesAndRestoresThePowerOfBothMicrocontrollers)
{
    Unit unit;
    unit.actions().run("supply", {"off"});
    EXPECT_EQ(unit.properties().get("ss.state"), "off");
    EXPECT_EQ(unit.properties().get("front.state"), "off");
    EXPECT_EQ(supervisorAnswers(unit), -EIO);

    unit.actions().run("supply", {"on"});
    EXPECT_EQ(unit.properties().get("ss.state"), "running");
    EXPECT_EQ(unit.properties().get("front.state"), "running");
    EXPECT_EQ(supervisorAnswers(unit), 0);
}

TEST(SupplyOff, ForgetsWhatNoMemoryHolds)
{
    Unit unit;
    unit.describe("light.range = 1\nexpander.directions = 0\nexpander.latch = 255\ntelematics.gsm = on\n");

    unit.actions().run("supply", {"off"});
    unit.actions().run("supply", {"on"});

    EXPECT_EQ(unit.properties().get("light.range"), "0");
    EXPECT_EQ(unit.properties().get("expander.directions"), "255");
    EXPECT_EQ(unit.properties().get("expander.latch"), "0");
    EXPECT_EQ(unit.properties().get("telematics.gsm"), "off");
}

/// The FPGA's flash and the other parts that take part in writing it.
class Fpga {
public:
    int write(std::uint32_t position, std::uint32_t length, std::uint8_t value)
    {
        return ask(0xC218004E, position, length, value);
    }
    int ask(std::uint32_t code, std::uint32_t position, std::uint32_t length, std::uint8_t value = 0)
    {
        Bytes block(536, value);
        for (int i = 0; i < 4; ++i) {
            block[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(length >> 8 * i);
            block[static_cast<std::size_t>(i) + 4] = static_cast<std::uint8_t>(position >> 8 * i);
        }
        Bytes out(536);
        Node& node = *unit.findNode("/dev/fpgaflash");
        return node.ioctl(*node.open(0), code, block, out);
    }
    void mode(std::uint8_t value)
    {
        Node& node = *unit.findNode("/dev/uart-redir");
        EXPECT_EQ(node.ioctl(*node.open(0), 0x4001004C, Bytes{value}, {}), 0);
    }
    void supplyOffAndOn()
    {
        unit.actions().run("supply", {"off"});
        unit.actions().run("supply", {"on"});
    }
    int version()
    {
        Bytes out(4);
        Node& node = *unit.findNode("/dev/fpga-version");
        return node.ioctl(*node.open(0), 0x80040036, {}, out);
    }
    std::uint8_t at(std::size_t position) { return unit.get<FpgaFlash>().at(position); }

    Unit unit;
};

TEST(FpgaFlashModel, ErasesAPageWithItsFirstByteAndOnlyClearsBitsInsideOne)
{
    Fpga fpga;
    ASSERT_EQ(fpga.write(528, 528, 0x0F), 0);
    ASSERT_EQ(fpga.at(528 + 100), 0x0F);

    EXPECT_EQ(fpga.write(528 + 100, 4, 0x3C), 0);
    EXPECT_EQ(fpga.at(528 + 100), 0x0C);
    EXPECT_EQ(fpga.at(528 + 104), 0x0F);

    EXPECT_EQ(fpga.write(528, 4, 0x3C), 0);
    EXPECT_EQ(fpga.at(528), 0x3C);
    EXPECT_EQ(fpga.at(528 + 4), 0xFF) << "the rest of the page is erased";
    EXPECT_EQ(fpga.at(0), 0x5A) << "the page before is not";
    EXPECT_EQ(fpga.at(std::size_t{2} * 528), 0x5A) << "nor the one behind";
}

TEST(FpgaFlashModel, KeepsItsConfigurationWhileTheFlashIsWritten)
{
    Fpga fpga;
    fpga.mode(0x0F);
    fpga.write(0, 528, 0x11);

    EXPECT_EQ(fpga.version(), 0);
}

TEST(FpgaFlashModel, HasNoConfigurationAfterARunThatDidNotEndAndAPowerCut)
{
    Fpga fpga;
    fpga.mode(0x0F);
    fpga.write(0, 528, 0x11);

    fpga.supplyOffAndOn();
    EXPECT_EQ(fpga.version(), -EIO);
    EXPECT_EQ(fpga.unit.properties().get("fpga.configured"), "off");

    fpga.mode(0x0F);
    fpga.write(0, 528, 0x11);
    fpga.mode(0xC3);
    EXPECT_EQ(fpga.version(), -EIO) << "it takes its configuration when it gets power";
    fpga.supplyOffAndOn();
    EXPECT_EQ(fpga.version(), 0);
}

TEST(FpgaFlashModel, HasNoConfigurationAfterARunInWhichABlockFailed)
{
    Fpga fpga;
    fpga.unit.properties().set("fpga.cut-at-block", "2");
    fpga.mode(0x0F);
    EXPECT_EQ(fpga.write(0, 528, 0x11), 0);
    EXPECT_EQ(fpga.write(528, 528, 0x11), -EIO);
    fpga.mode(0xC3);

    fpga.supplyOffAndOn();

    EXPECT_EQ(fpga.version(), -EIO);
}

TEST(FpgaFlashModel, RefusesBlocksOutsideItsFlash)
{
    Unit unit;
    Node& node = *unit.findNode("/dev/fpgaflash");
    const auto file = node.open(0);
    Bytes block(536);
    const auto ask = [&](std::uint32_t code, std::uint32_t length, std::uint32_t position) {
        for (int i = 0; i < 4; ++i) {
            block[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(length >> 8 * i);
            block[static_cast<std::size_t>(i) + 4] = static_cast<std::uint8_t>(position >> 8 * i);
        }
        Bytes out(536);
        return node.ioctl(*file, code, block, out);
    };

    for (const std::uint32_t code : {0xC218004EU, 0xC218004FU}) {
        EXPECT_EQ(ask(code, 0, 0), -EINVAL);
        EXPECT_EQ(ask(code, 529, 0), -EINVAL);
        EXPECT_EQ(ask(code, 528, 0xFFFFFFFF), -EINVAL);
        EXPECT_EQ(ask(code, 528, 528), 0);
    }
}

} // namespace bootloader_model_test
