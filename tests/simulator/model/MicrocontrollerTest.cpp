// SPDX-License-Identifier: LicenseRef-HXAux
// Memories, power and injected failures of a microcontroller, and its bootloader byte by byte. BootloaderModelTest.cpp
// asks the same over the wire.
#include "simulator/model/Microcontroller.h"

#include "simulator/model/ServiceUart.h"
#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace microcontroller_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

constexpr std::uint8_t kAck = 0x79;
constexpr std::uint8_t kNack = 0x1F;

/// Bytes with the exclusive or of them all behind.
Bytes summed(Bytes bytes)
{
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : bytes)
        sum ^= byte;
    bytes.push_back(sum);
    return bytes;
}

class MicrocontrollerTest : public modeltest::ModelTest {
protected:
    Microcontroller& chip = unit.get<Microcontrollers>().supervisor;
    Node& port = node("/dev/ttyS0");
    std::unique_ptr<OpenFile> file = port.open(O_RDWR);

    void SetUp() override
    {
        set("uart.paced", "off");
        port.setLine(LineSettings{115200, 8, 'e', 1, 0, 30, false});
        boot();
    }
    void boot()
    {
        ASSERT_EQ(put("/dev/uart-redir", 0x4001004C, {0x96}), 0);
        ASSERT_EQ(put("/dev/uart-redir", 0x4001004B, {1}), 0);
    }
    /// What is answered within a second.
    Bytes ask(const Bytes& bytes)
    {
        (void)port.write(*file, bytes);
        pass(1s);
        Bytes answer(600);
        const Outcome outcome = port.read(*file, answer, unit.clock().now());
        answer.resize(outcome.waits ? 0 : static_cast<std::size_t>(outcome.result));
        return answer;
    }
    Bytes command(std::uint8_t code) { return ask({code, static_cast<std::uint8_t>(~code)}); }
    Bytes address(std::uint32_t value)
    {
        return ask(summed({static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                           static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)}));
    }
    Bytes read(std::uint32_t from, std::uint8_t count)
    {
        EXPECT_EQ(command(0x11), Bytes{kAck});
        EXPECT_EQ(address(from), Bytes{kAck});
        Bytes answer = ask({static_cast<std::uint8_t>(count - 1), static_cast<std::uint8_t>(~(count - 1))});
        EXPECT_FALSE(answer.empty());
        if (!answer.empty())
            answer.erase(answer.begin());
        return answer;
    }
    Bytes write(std::uint32_t to, const Bytes& data)
    {
        EXPECT_EQ(command(0x31), Bytes{kAck});
        if (Bytes answer = address(to); answer != Bytes{kAck})
            return answer;
        Bytes block{static_cast<std::uint8_t>(data.size() - 1)};
        block.insert(block.end(), data.begin(), data.end());
        return ask(summed(block));
    }
    void synchronise() { ASSERT_EQ(ask({0x7F}), Bytes{kAck}); }
};

TEST_F(MicrocontrollerTest, WaitsForTheByteThatShowsTheBaudRate)
{
    EXPECT_EQ(ask({0x00, 0xFF, 0x7E, 0x80}), Bytes{});
    EXPECT_EQ(ask({0x7F}), Bytes{kAck});
    EXPECT_EQ(ask({0x7F, 0x80}), Bytes{kNack}) << "a command now, and an unknown one";
}

TEST_F(MicrocontrollerTest, ListsElevenCommandsBehindItsVersion)
{
    synchronise();

    EXPECT_EQ(command(0x00),
              (Bytes{kAck, 11, 0x22, 0x00, 0x01, 0x02, 0x11, 0x21, 0x31, 0x43, 0x63, 0x73, 0x82, 0x92, kAck}));
    EXPECT_EQ(command(0x01), (Bytes{kAck, 0x22, 0x00, 0x00, kAck}));
    EXPECT_EQ(command(0x02), (Bytes{kAck, 1, 0x04, 0x14, kAck}));
}

TEST_F(MicrocontrollerTest, AnswersTheProductThatItIsToldToBe)
{
    set("ss.product-id", "0x5a3");
    synchronise();

    EXPECT_EQ(command(0x02), (Bytes{kAck, 1, 0x05, 0xA3, kAck}));
    EXPECT_EQ(property("ss.product-id"), "0x5a3");
}

TEST_F(MicrocontrollerTest, RefusesCommandsWithoutTheirComplement)
{
    synchronise();

    EXPECT_EQ(ask({0x00, 0x00}), Bytes{kNack});
    EXPECT_EQ(ask({0x11, 0xEF}), Bytes{kNack});
    EXPECT_EQ(command(0x00).size(), 15U) << "and goes on";
}

struct Range : Named {
    std::uint8_t command;
    std::uint32_t address;
    bool allowed;
};

class AddressOfACommand : public MicrocontrollerTest, public hxtest::WithRow<Range> {};

ROW_TEST(AddressOfACommand, IsAcceptedInsideTheMemories)
{
    synchronise();
    ASSERT_EQ(command(row().command), Bytes{kAck});

    EXPECT_EQ(address(row().address), Bytes{row().allowed ? kAck : kNack});
}

TEST_ROWS(Microcontroller, AddressOfACommand, kNameOfRow, Range{{"ReadFlashBegin"}, 0x11, 0x08000000, true},
          Range{{"ReadFlashEnd"}, 0x11, 0x0807FFFF, true}, Range{{"ReadBehindFlash"}, 0x11, 0x08080000, false},
          Range{{"ReadBeforeFlash"}, 0x11, 0x07FFFFFF, false}, Range{{"ReadRam"}, 0x11, 0x20000000, true},
          Range{{"ReadBehindRam"}, 0x11, 0x20010000, false}, Range{{"ReadSystemMemory"}, 0x11, 0x1FFFF000, true},
          Range{{"ReadOptionBytes"}, 0x11, 0x1FFFF800, true}, Range{{"WriteFlash"}, 0x31, 0x08000000, true},
          Range{{"WriteRam"}, 0x31, 0x20000200, true}, Range{{"WriteTheBootloadersRam"}, 0x31, 0x200001FC, false},
          Range{{"WriteSystemMemory"}, 0x31, 0x1FFFF000, false}, Range{{"GoToFlash"}, 0x21, 0x08000000, true},
          Range{{"GoToRam"}, 0x21, 0x20000200, true}, Range{{"GoNowhere"}, 0x21, 0x40000000, false});

TEST_F(MicrocontrollerTest, RefusesAnAddressWithAWrongChecksum)
{
    synchronise();
    ASSERT_EQ(command(0x11), Bytes{kAck});

    EXPECT_EQ(ask({0x08, 0x00, 0x00, 0x00, 0x09}), Bytes{kNack});
}

TEST_F(MicrocontrollerTest, ReadsOneTo256Bytes)
{
    synchronise();

    EXPECT_EQ(read(0x08000000, 1), Bytes{0x00});
    EXPECT_EQ(read(0x08000000, 8), (Bytes{0x00, 0x10, 0x00, 0x20, 0x01, 0x01, 0x00, 0x08}));
    EXPECT_EQ(read(0x08000000, 0).size(), 256U);
}

TEST_F(MicrocontrollerTest, RefusesACountWithoutItsComplement)
{
    synchronise();
    ASSERT_EQ(command(0x11), Bytes{kAck});
    ASSERT_EQ(address(0x08000000), Bytes{kAck});

    EXPECT_EQ(ask({3, 3}), Bytes{kNack});
}

TEST_F(MicrocontrollerTest, KeepsWhatIsWrittenToItsRam)
{
    synchronise();

    EXPECT_EQ(write(0x20000200, {0xAA, 0x55}), Bytes{kAck});
    EXPECT_EQ(write(0x20000200, {0x55, 0xAA}), Bytes{kAck});
    EXPECT_EQ(read(0x20000200, 2), (Bytes{0x55, 0xAA}));
}

TEST_F(MicrocontrollerTest, WritesUpToTheLastByteOfItsFlashAndNotBehind)
{
    synchronise();

    EXPECT_EQ(write(0x0807FFFE, {0x12, 0x34}), Bytes{kAck});
    EXPECT_EQ(write(0x0807FFFE, {0x12, 0x34, 0x56, 0x78}), Bytes{kNack});
}

TEST_F(MicrocontrollerTest, ErasesThePagesOfAList)
{
    synchronise();
    ASSERT_EQ(command(0x43), Bytes{kAck});

    EXPECT_EQ(ask(summed({1, 0, 2})), Bytes{kAck});

    EXPECT_EQ(chip.flash[0], 0xFF);
    EXPECT_EQ(chip.flash[2047], 0xFF);
    EXPECT_NE((Bytes{chip.flash.begin() + 2048, chip.flash.begin() + 4096}), Bytes(2048, 0xFF));
    EXPECT_EQ((Bytes{chip.flash.begin() + 4096, chip.flash.begin() + 6144}), Bytes(2048, 0xFF));
}

TEST_F(MicrocontrollerTest, RefusesAListWithAWrongChecksum)
{
    synchronise();
    ASSERT_EQ(command(0x43), Bytes{kAck});
    EXPECT_EQ(ask({0, 1, 0}), Bytes{kNack});
    ASSERT_EQ(command(0x43), Bytes{kAck});
    EXPECT_EQ(ask({0xFF, 0x01}), Bytes{kNack});

    EXPECT_EQ(chip.flash[3], 0x20) << "nothing is erased";
}

TEST_F(MicrocontrollerTest, TakesItsTimeToEraseEverything)
{
    set("ss.erase-ms", "5000");
    synchronise();
    ASSERT_EQ(command(0x43), Bytes{kAck});

    EXPECT_EQ(ask({0xFF, 0x00}), Bytes{}) << "within a second";
    EXPECT_EQ(ask({0x00, 0xFF}), Bytes{}) << "it does not listen meanwhile";
    pass(3s);
    EXPECT_EQ(ask({}), Bytes{kAck});
    EXPECT_EQ(chip.flash, Bytes(512U << 10, 0xFF));
}

TEST_F(MicrocontrollerTest, RefusesEverythingButToIdentifyItselfWhenItIsProtected)
{
    synchronise();
    EXPECT_EQ(command(0x82), (Bytes{kAck, kAck}));
    synchronise();

    for (const std::uint8_t code : Bytes{0x11, 0x21, 0x31, 0x43, 0x63, 0x73})
        EXPECT_EQ(command(code), Bytes{kNack}) << int{code};
    EXPECT_EQ(command(0x02).size(), 5U);
    EXPECT_EQ(command(0x92), (Bytes{kAck, kAck}));
    EXPECT_EQ(chip.flash[3], 0xFF) << "the price of it";
    EXPECT_FALSE(chip.readoutProtected);
}

TEST_F(MicrocontrollerTest, StartsAProgramWhereItIsToldTo)
{
    synchronise();
    ASSERT_EQ(command(0x21), Bytes{kAck});

    EXPECT_EQ(address(0x20000200), Bytes{kAck});

    EXPECT_EQ(property("ss.state"), "running");
    EXPECT_EQ(chip.startedAt, 0x20000200U);
    EXPECT_EQ(ask({0x00, 0xFF}), Bytes{});
}

class InjectedFailure : public MicrocontrollerTest {};

TEST_F(InjectedFailure, RefusesTheCommandThatIsSoManyAhead)
{
    synchronise();
    set("ss.nack-at", "2");

    EXPECT_EQ(command(0x02).size(), 5U);
    EXPECT_EQ(command(0x02), Bytes{kNack});
    EXPECT_EQ(command(0x02).size(), 5U);
    EXPECT_EQ(property("ss.nack-at"), "0");
}

TEST_F(InjectedFailure, FlipsABitOfTheByteThatIsReadAfterSoMany)
{
    synchronise();
    set("ss.flip-read-at", "4");

    EXPECT_EQ(read(0x08000000, 5), (Bytes{0x00, 0x10, 0x00, 0x21, 0x01}));
    EXPECT_EQ(read(0x08000000, 5), (Bytes{0x00, 0x10, 0x00, 0x20, 0x01}));
}

TEST_F(InjectedFailure, MakesTheBootloaderSilent)
{
    set("ss.silent", "on");
    EXPECT_EQ(ask({0x7F}), Bytes{});

    set("ss.silent", "off");
    EXPECT_EQ(ask({0x7F}), Bytes{kAck});
}

TEST_F(InjectedFailure, CutsThePowerAtAByteCountedBothWays)
{
    synchronise();
    set("ss.cut-at-byte", "5");

    EXPECT_EQ(command(0x02), (Bytes{kAck, 1})) << "two to the chip, two from it";
    EXPECT_EQ(property("ss.state"), "off");
    EXPECT_EQ(ask({0x7F}), Bytes{});
}

TEST_F(InjectedFailure, CutsThePowerBeforeAnAcknowledgement)
{
    set("ss.cut-at-ack", "2");
    synchronise();

    EXPECT_EQ(command(0x02), Bytes{});
    EXPECT_EQ(property("ss.state"), "off");
    EXPECT_EQ(chip.acknowledgements, 2);
}

TEST_F(InjectedFailure, IsForgottenWhenThePowerComesBack)
{
    set("ss.cut-at-byte", "1");
    EXPECT_EQ(ask({0x7F}), Bytes{});
    set("ss.cut-at-ack", "3");
    act("restore", {"ss"});

    EXPECT_EQ(property("ss.cut-at-ack"), "0");
    EXPECT_EQ(property("ss.state"), "running");
}

class PowerOfAChip : public MicrocontrollerTest {};

TEST_F(PowerOfAChip, ThatIsThereAlreadyRestartsNothing)
{
    act("restore", {"ss"});

    EXPECT_EQ(property("ss.state"), "bootloader");
}

TEST_F(PowerOfAChip, DoesNotComeBackByABootPin)
{
    act("cut", {"ss"});
    chip.startBootloader();
    EXPECT_EQ(property("ss.state"), "off");
    chip.startFirmware();
    EXPECT_EQ(property("ss.state"), "off");
}

TEST_F(PowerOfAChip, StartsNothingWhereThereIsNoFirmware)
{
    chip.flash[7] = 0xFF;
    act("cut", {"ss"});
    act("restore", {"ss"});

    EXPECT_EQ(property("ss.state"), "no firmware");
    EXPECT_EQ(reg("/dev/adc-id", 0), -1);
}

TEST_F(PowerOfAChip, IsCutAndRestoredForTheChipThatIsNamed)
{
    act("cut", {"front"});
    EXPECT_EQ(property("front.state"), "off");
    EXPECT_EQ(property("ss.state"), "bootloader");
    EXPECT_EQ(refusalOfAct("cut", {}), "which microcontroller: ss or front?");
    EXPECT_EQ(refusalOfAct("restore", {"both"}), "which microcontroller: ss or front?");
}

struct Family : Named {
    std::uint16_t productId;
    std::size_t flashKib;
    std::size_t ramKib;
    std::size_t page;
};

class FamilyOfChips : public modeltest::ModelTest, public hxtest::WithRow<Family> {};

ROW_TEST(FamilyOfChips, HasItsMemoriesAndPages)
{
    Microcontroller chip{unit, "another", row().productId};
    EXPECT_EQ(chip.flash.size(), row().flashKib * 1024);
    EXPECT_EQ(chip.ram.size(), row().ramKib * 1024);

    chip.erasePage(1);
    const auto first = chip.flash.begin() + static_cast<std::ptrdiff_t>(row().page);
    EXPECT_NE(*(first - 1), 0xFF);
    EXPECT_EQ((Bytes{first, first + static_cast<std::ptrdiff_t>(row().page)}), Bytes(row().page, 0xFF));
    EXPECT_NE(
        (Bytes{first + static_cast<std::ptrdiff_t>(row().page), first + static_cast<std::ptrdiff_t>(row().page) + 16}),
        Bytes(16, 0xFF));
}

TEST_ROWS(Microcontroller, FamilyOfChips, kNameOfRow, Family{{"LowDensity"}, 0x412, 32, 10, 1024},
          Family{{"MediumDensity"}, 0x410, 128, 20, 1024}, Family{{"HighDensity"}, 0x414, 512, 64, 2048},
          Family{{"Connectivity"}, 0x418, 256, 64, 2048}, Family{{"MediumDensityValueLine"}, 0x420, 128, 8, 1024},
          Family{{"ExtraLargeDensity"}, 0x430, 1024, 96, 2048});

TEST_F(PowerOfAChip, ShowsTheChecksumOfItsFlash)
{
    const std::string factory = property("ss.flash-crc");
    chip.flash.assign(9, 0);
    const char* const digits = "123456789";
    std::copy(digits, digits + 9, chip.flash.begin());

    EXPECT_EQ(property("ss.flash-crc"), "0xcbf43926");
    EXPECT_NE(factory, "0xcbf43926");
}

} // namespace

} // namespace microcontroller_test
