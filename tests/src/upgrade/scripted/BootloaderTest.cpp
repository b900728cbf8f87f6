// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/FirmwareTexts.h"
#include "testing/RowTest.h"
#include "tests/src/upgrade/scripted/Dialogue.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <malloc.h>
#include <memory>

using testing::ElementsAre;

namespace {

struct TargetClose {
    void operator()(stm32_target* h) const { stm32_close(h); }
};
using Target = std::unique_ptr<stm32_target, TargetClose>;

Target identify(unsigned mode = STM32_INIT_SYNCHRONISE)
{
    return Target{stm32_init(nullptr, mode)};
}

std::vector<std::uint8_t> bytes(std::size_t count, std::uint8_t value)
{
    return std::vector<std::uint8_t>(count, value);
}

} // namespace

TEST(Bootloader, IsIdentifiedWithSynchronisation)
{
    const Dialogue dialogue{"identify"};

    const Target target = identify();

    EXPECT_EQ(dialogue.complaint(), "");
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->bootloader_version, 0x22);
    EXPECT_THAT(std::vector<int>({target->version, target->option1, target->option2}), ElementsAre(0x22, 0x05, 0x06));
    EXPECT_EQ(target->product_id, 0x414);
    EXPECT_STREQ(target->device->name, "High-density");
    EXPECT_THAT(std::vector<int>(target->commands, target->commands + STM32_COMMANDS),
                ElementsAre(0x00, 0x01, 0x02, 0x11, 0x21, 0x31, 0x43, 0x63, 0x73, 0x82, 0x92));
}

TEST(Bootloader, IsIdentifiedWithoutSynchronisation)
{
    const Dialogue dialogue{"identify-continued"};

    EXPECT_NE(identify(STM32_INIT_CONTINUE), nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, IsSentNothingInModeZeroOrAnUnknownOne)
{
    const Dialogue dialogue{"silence"};

    EXPECT_EQ(identify(STM32_INIT_NONE), nullptr);
    EXPECT_EQ(identify(3), nullptr);
    EXPECT_EQ(dialogue.writes(), 0U);
}

TEST(Bootloader, GetsFiveAttemptsToSynchronise)
{
    const Dialogue dialogue{"identify-silent"};

    EXPECT_EQ(identify(), nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, IsIdentifiedWhenItSynchronisesLate)
{
    const Dialogue dialogue{"identify-late"};

    EXPECT_NE(identify(), nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, IsUsedWithTheCodesThatItListed)
{
    const Dialogue dialogue{"identify-other-codes"};

    const Target target = identify();

    ASSERT_NE(target, nullptr);
    EXPECT_TRUE(stm32_erase_memory(target.get()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, ThatListsMoreCodesThanWeKnowIsHeardOutWithAMessage)
{
    CapturedErrors errors;
    const Dialogue dialogue{"identify-more-codes"};

    const Target target = identify();

    EXPECT_NE(target, nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
    EXPECT_EQ(errors.text(), "Seems this bootloader returns more then we understand in the GET command, we will skip "
                             "the unknown bytes\n");
}

TEST(Bootloader, ThatListsFewerCodesIsReadToTheUsualLength)
{
    CapturedErrors errors;
    const Dialogue dialogue{"identify-fewer-codes"};

    EXPECT_NE(identify(), nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
    EXPECT_THAT(errors.text(), testing::StartsWith("Seems this bootloader"));
}

TEST(Bootloader, WithALongerProductIdIsRefusedWithAMessage)
{
    CapturedErrors errors;
    const Dialogue dialogue{"identify-long-id"};

    EXPECT_EQ(identify(), nullptr);
    EXPECT_EQ(dialogue.complaint(), "");
    EXPECT_EQ(errors.text(), "More then two bytes sent in the PID, unknown/unsupported device\n");
}

TEST(Bootloader, WithAnUnknownProductIdIsAccepted)
{
    CapturedErrors errors;
    const Dialogue dialogue{"identify-unknown"};

    const Target target = identify();

    ASSERT_NE(target, nullptr);
    EXPECT_EQ(target->product_id, 0x9ABC);
    EXPECT_EQ(target->device->id, 0);
    EXPECT_EQ(target->device->flash_end, 0U);
    EXPECT_EQ(errors.text(), "");
}

TEST(Bootloader, ErasesTheWholeFlash)
{
    const Dialogue dialogue{"erase"};

    EXPECT_TRUE(stm32_erase_memory(dialogue.target()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, WritesAFullBlock)
{
    const Dialogue dialogue{"write-full"};

    EXPECT_TRUE(stm32_write_memory(dialogue.target(), 0x08000100, bytes(256, 0x41).data(), 256));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, WritesAnAlignedShortBlockWithoutPadding)
{
    const Dialogue dialogue{"write"};
    constexpr std::array<std::uint8_t, 4> kData{1, 2, 4, 8};

    EXPECT_TRUE(stm32_write_memory(dialogue.target(), 0x08000000, kData.data(), kData.size()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, PadsSixBytesWithTwoMore)
{
    const Dialogue dialogue{"write-six"};
    constexpr std::array<std::uint8_t, 6> kData{1, 2, 3, 4, 5, 6};

    EXPECT_TRUE(stm32_write_memory(dialogue.target(), 0x08000000, kData.data(), kData.size()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, PadsSevenBytesWithThreeMoreAsTargetsAreUsedTo)
{
    const Dialogue dialogue{"write-seven"};
    constexpr std::array<std::uint8_t, 7> kData{1, 2, 3, 4, 5, 6, 7};

    EXPECT_TRUE(stm32_write_memory(dialogue.target(), 0x08000000, kData.data(), kData.size()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, AnnouncesTheLowByteOfTheCountOfALongUnevenBlock)
{
    const Dialogue dialogue{"write-255"};

    EXPECT_TRUE(stm32_write_memory(dialogue.target(), 0x08000000, bytes(255, 0x41).data(), 255));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, ReadsABlock)
{
    const Dialogue dialogue{"read"};
    std::array<std::uint8_t, 4> found{};

    EXPECT_TRUE(stm32_read_memory(dialogue.target(), 0x08000004, found.data(), found.size()));
    EXPECT_EQ(dialogue.complaint(), "");
    EXPECT_THAT(found, ElementsAre(0xDE, 0xAD, 0xBE, 0xEF));
}

TEST(Bootloader, FailsToReadABlockThatBreaksOff)
{
    const Dialogue dialogue{"read-broken-off"};
    std::array<std::uint8_t, 4> found{};

    EXPECT_FALSE(stm32_read_memory(dialogue.target(), 0x08000004, found.data(), found.size()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, StartsAProgram)
{
    const Dialogue dialogue{"go"};

    EXPECT_TRUE(stm32_go(dialogue.target(), 0x20000200));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, LoadsAndStartsTheResetProgram)
{
    const Dialogue dialogue{"reset"};

    EXPECT_TRUE(stm32_reset_device(dialogue.target()));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, LoadsTheResetProgramWhereTheDevicesRamBegins)
{
    const Dialogue dialogue{"reset-xl-density"};
    stm32_target xl = *dialogue.target();
    xl.device = &stm32_devices[5];

    EXPECT_FALSE(stm32_reset_device(&xl)) << "the target refuses the second piece";
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, IsSentNothingForAnAddressThatIsNotAMultipleOfFour)
{
    const Dialogue dialogue{"silence"};
    std::array<std::uint8_t, 256> data{};

    for (std::uint32_t address = 0x08000001; address <= 0x08000003; ++address) {
        EXPECT_FALSE(stm32_write_memory(dialogue.target(), address, data.data(), 4));
        EXPECT_FALSE(stm32_read_memory(dialogue.target(), address, data.data(), 4));
    }
    EXPECT_EQ(dialogue.writes(), 0U);
}

TEST(Bootloader, IsSentNothingForALengthOutside1To256)
{
    const Dialogue dialogue{"silence"};
    std::array<std::uint8_t, 257> data{};

    for (const unsigned length : {0U, 257U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(stm32_write_memory(dialogue.target(), 0x08000000, data.data(), length));
        EXPECT_FALSE(stm32_read_memory(dialogue.target(), 0x08000000, data.data(), length));
    }
    EXPECT_EQ(dialogue.writes(), 0U);
}

TEST(Bootloader, TakesAByteThatDidNotComeForZero)
{
    const Dialogue dialogue{"silence"};

    EXPECT_EQ(stm32_read_byte(dialogue.target()), 0);
}

TEST(Bootloader, SendsASingleByteAsItIs)
{
    const Dialogue dialogue{"one-byte"};

    EXPECT_EQ(stm32_send_byte(dialogue.target(), 0xA5), SERIAL_OK);
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, SendsACommandWithoutItsComplementOnRequest)
{
    const Dialogue dialogue{"command-alone"};

    EXPECT_TRUE(stm32_send_command(dialogue.target(), 0x12, false));
    EXPECT_EQ(dialogue.complaint(), "");
}

TEST(Bootloader, XorsTheFourBytesOfAnAddress)
{
    EXPECT_EQ(stm32_gen_cs(0x08000000), 0x08);
    EXPECT_EQ(stm32_gen_cs(0x20000200), 0x22);
    EXPECT_EQ(stm32_gen_cs(0x01020408), 0x0F);
}

TEST(Bootloader, SwapsAValueForTheWire)
{
    EXPECT_TRUE(cpu_le());
    EXPECT_EQ(be_u32(0x01020304), 0x04030201U);
}

TEST(Bootloader, ReleasesItsMemory)
{
    const std::size_t before = ::mallinfo2().uordblks;

    for (int i = 0; i < 1000; ++i)
        stm32_close(stm32_init(nullptr, STM32_INIT_NONE));

    EXPECT_LT(::mallinfo2().uordblks, before + 1000);
}

TEST(Bootloader, IsClosedWithoutATarget)
{
    stm32_close(nullptr);
}

// If the target refuses or falls silent anywhere, the operation fails and nothing more is sent.

namespace {

struct Operation {
    const char* dialogue;
    std::function<bool(const stm32_target*)> run;
};

std::array<std::uint8_t, 256> scratch{};

const Operation kOperations[] = {
    {"identify", [](const stm32_target*) { return identify() != nullptr; }},
    {"erase", [](const stm32_target* h) { return stm32_erase_memory(h); }},
    {"write",
     [](const stm32_target* h) {
         constexpr std::array<std::uint8_t, 4> kData{1, 2, 4, 8};
         return stm32_write_memory(h, 0x08000000, kData.data(), kData.size());
     }},
    {"read", [](const stm32_target* h) { return stm32_read_memory(h, 0x08000004, scratch.data(), 4); }},
    {"go", [](const stm32_target* h) { return stm32_go(h, 0x20000200); }},
    {"reset", [](const stm32_target* h) { return stm32_reset_device(h); }},
};

class EveryOperation : public hxtest::TestWithRow<Operation> {};

bool isAcknowledgement(const Operation& operation, std::size_t line)
{
    // The lines of data: answers to GET, GET VERSION and GET ID, and the block that is read.
    const std::string name = operation.dialogue;
    return !(name == "identify" && (line == 3 || line == 6 || line == 9)) && !(name == "read" && line == 4);
}

} // namespace

ROW_TEST(EveryOperation, FailsAtEachRefusal)
{
    const std::size_t lines = Dialogue{row().dialogue}.linesOfTarget();
    for (std::size_t line = 1; line <= lines; ++line) {
        if (!isAcknowledgement(row(), line) || (line == 1 && std::string{row().dialogue} == "identify"))
            continue; // data, or the synchronisation, which is retried
        Dialogue dialogue{row().dialogue};
        dialogue.refuseAt(line);

        EXPECT_FALSE(row().run(dialogue.target())) << "line " << line;
        if (line < lines) {
            EXPECT_THAT(dialogue.complaint(), testing::StartsWith("not reached: ")) << "line " << line;
        }
    }
}

ROW_TEST(EveryOperation, FailsWhereverTheTargetFallsSilent)
{
    std::size_t silentFrom = 1;
    for (bool succeeded = false; !succeeded; ++silentFrom) {
        ASSERT_LT(silentFrom, 100U);
        Dialogue dialogue{row().dialogue};
        dialogue.silentFrom(silentFrom);
        CapturedErrors errors;
        succeeded = row().run(dialogue.target());
        (void)errors.text();
        EXPECT_EQ(succeeded, dialogue.complaint().empty()) << "silent from byte " << silentFrom;
    }
    EXPECT_GT(silentFrom, 2U);
}

TEST_ROWS_IN(
    Bootloader, EveryOperation, [](const Operation& row) { return row.dialogue; }, kOperations);
