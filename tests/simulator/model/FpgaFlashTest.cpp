// SPDX-License-Identifier: LicenseRef-HXAux
// The blocks of the configuration flash's driver; BootloaderModelTest.cpp looks at what makes a configuration.
#include "simulator/model/FpgaFlash.h"

#include "tests/simulator/model/ModelTest.h"

namespace fpga_flash_test {

using namespace hxsim;
using modeltest::Bytes;

namespace {

constexpr std::size_t kPage = 528;

std::uint32_t word(const Bytes& block, std::size_t at)
{
    return static_cast<std::uint32_t>(block[at] | block[at + 1] << 8 | block[at + 2] << 16) |
           static_cast<std::uint32_t>(block[at + 3]) << 24;
}

class FpgaFlashTest : public modeltest::ModelTest {
protected:
    Bytes answer{};

    int ask(std::uint32_t code, std::uint32_t length, std::uint32_t position, std::uint8_t value)
    {
        Bytes block(536, value);
        for (std::size_t i = 0; i < 4; ++i) {
            block[i] = static_cast<std::uint8_t>(length >> 8 * i);
            block[i + 4] = static_cast<std::uint8_t>(position >> 8 * i);
        }
        answer.assign(536, 0xEE);
        return request("/dev/fpgaflash", code, block, answer);
    }
    int write(std::uint32_t length, std::uint32_t position, std::uint8_t value)
    {
        return ask(0xC218004E, length, position, value);
    }
    int read(std::uint32_t length, std::uint32_t position) { return ask(0xC218004F, length, position, 0); }
    std::uint8_t at(std::size_t position) { return unit.get<FpgaFlash>().at(position); }
};

TEST_F(FpgaFlashTest, IsReadyUnlessItIsSetBusy)
{
    EXPECT_EQ(get("/dev/fpgaflash", 0x4001004D, 1), Bytes{0});
    set("fpga.status", "7");
    EXPECT_EQ(get("/dev/fpgaflash", 0x4001004D, 1), Bytes{7});
}

TEST_F(FpgaFlashTest, AnswersAWriteWithThePositionBehindIt)
{
    EXPECT_EQ(write(528, 1056, 0x11), 0);
    EXPECT_EQ(word(answer, 4), 1584U);
    EXPECT_EQ(write(5, 1584, 0x11), 0);
    EXPECT_EQ(word(answer, 4), 1589U);
}

TEST_F(FpgaFlashTest, WritesOnlyAsManyBytesAsTheLengthSays)
{
    ASSERT_EQ(write(3, 0, 0x11), 0);

    EXPECT_EQ(at(2), 0x11);
    EXPECT_EQ(at(3), 0xFF) << "erased with its page";
    EXPECT_EQ(at(kPage), 0x5A) << "the next page stays";
}

TEST_F(FpgaFlashTest, TakesNoMoreOfABlockThanIsSet)
{
    set("fpga.accepts", "100");
    EXPECT_EQ(write(528, 0, 0x11), 0);
    EXPECT_EQ(word(answer, 4), 100U);
    EXPECT_EQ(at(99), 0x11);
    EXPECT_EQ(at(100), 0xFF);

    set("fpga.accepts", "0");
    EXPECT_EQ(write(528, 528, 0x11), 0);
    EXPECT_EQ(word(answer, 4), 528U) << "no progress";
}

TEST_F(FpgaFlashTest, ReadsABlockWithItsCountAndTheNextPosition)
{
    ASSERT_EQ(write(528, 528, 0x3C), 0);

    EXPECT_EQ(read(528, 528), 0);

    EXPECT_EQ(word(answer, 0), 528U);
    EXPECT_EQ(word(answer, 4), 1056U);
    EXPECT_EQ(answer[8], 0x3C);
    EXPECT_EQ(answer[535], 0x3C);
}

TEST_F(FpgaFlashTest, ReadsUpToItsEnd)
{
    const std::uint32_t end = 4096 * 528;
    EXPECT_EQ(read(528, end - 10), 0);
    EXPECT_EQ(word(answer, 0), 10U);
    EXPECT_EQ(word(answer, 4), end);
    EXPECT_EQ(answer[8], 0xFF) << "what was never programmed is erased";
    EXPECT_EQ(read(528, end), 0);
    EXPECT_EQ(word(answer, 0), 0U);
    EXPECT_EQ(read(528, end + 1), -EINVAL);
}

TEST_F(FpgaFlashTest, DeliversNothingWhenSetSo)
{
    set("fpga.reads-nothing", "on");

    EXPECT_EQ(read(528, 0), 0);

    EXPECT_EQ(word(answer, 0), 0U);
    EXPECT_EQ(word(answer, 4), 0U);
}

TEST_F(FpgaFlashTest, FlipsABitOfTheByteThatIsReadAfterSoMany)
{
    set("fpga.flip-read-at", "530");

    ASSERT_EQ(read(528, 0), 0);
    EXPECT_EQ(std::count(answer.begin() + 8, answer.end(), 0x5A), 528);
    ASSERT_EQ(read(528, 528), 0);
    EXPECT_EQ(answer[8 + 1], 0x5B);
    EXPECT_EQ(answer[8 + 2], 0x5A);
    EXPECT_EQ(property("fpga.flip-read-at"), "0");
    EXPECT_EQ(at(529), 0x5A) << "the flash itself is good";
}

TEST_F(FpgaFlashTest, LosesItsPowerInTheMiddleOfABlock)
{
    set("fpga.cut-at-block", "2");
    EXPECT_EQ(write(528, 0, 0x11), 0);
    EXPECT_EQ(write(528, 528, 0x11), -EIO);

    EXPECT_EQ(at(528 + 263), 0x11);
    EXPECT_EQ(at(528 + 264), 0xFF);
    EXPECT_EQ(property("fpga.power"), "off");
    EXPECT_EQ(write(528, 528, 0x11), -EIO);
    EXPECT_EQ(read(528, 0), -EIO);
}

TEST_F(FpgaFlashTest, GetsItsPowerBackWithTheSupply)
{
    set("fpga.power", "off");
    supplyOffAndOn();

    EXPECT_EQ(property("fpga.power"), "on");
    EXPECT_EQ(read(528, 0), 0);
}

TEST_F(FpgaFlashTest, RefusesBlocksOfNoAndOfTooManyBytes)
{
    for (const std::uint32_t length : {0U, 529U, 0xFFFFFFFFU}) {
        EXPECT_EQ(write(length, 0, 0), -EINVAL) << length;
        EXPECT_EQ(read(length, 0), -EINVAL) << length;
    }
    EXPECT_EQ(at(0), 0x5A);
}

TEST_F(FpgaFlashTest, RefusesToWriteBehindItsEnd)
{
    EXPECT_EQ(write(11, 4096 * 528 - 10, 0), -EINVAL);
    EXPECT_EQ(write(10, 4096 * 528 - 10, 0), 0);
    EXPECT_EQ(write(1, 0xFFFFFFFF, 0), -EINVAL);
}

TEST_F(FpgaFlashTest, TakesMemoryUpToTheLastPageThatWasProgrammed)
{
    const FpgaFlash& flash = unit.get<FpgaFlash>();
    EXPECT_EQ(flash.content.size(), 100U * 528) << "the configuration from the factory";

    EXPECT_EQ(write(4, 200 * 528 + 100, 0x11), 0);

    EXPECT_EQ(flash.content.size(), 201U * 528);
    EXPECT_EQ(at(std::size_t{99} * 528), 0x5A);
    EXPECT_EQ(at(std::size_t{150} * 528), 0xFF) << "a page in between";
    EXPECT_EQ(at(200 * 528 + 99), 0xFF);
    EXPECT_EQ(at(200 * 528 + 100), 0x11);
    EXPECT_EQ(at(200 * 528 + 104), 0xFF);
    EXPECT_EQ(at(4096 * 528 - 1), 0xFF);
}

TEST_F(FpgaFlashTest, NeedsBothBlocksWhole)
{
    Bytes out(536);
    EXPECT_EQ(request("/dev/fpgaflash", 0xC218004E, Bytes(535), out), -EFAULT);
    Bytes small(535);
    EXPECT_EQ(request("/dev/fpgaflash", 0xC218004F, Bytes(536), small), -EFAULT);
}

} // namespace

} // namespace fpga_flash_test
