// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <array>
#include <cerrno>

using namespace Halvix;
using namespace driver;

namespace {

constexpr int kHandle = 42;

} // namespace

TEST(IoCtrl, AcceptsANullInputOfNoLength)
{
    Script script{{local(0x80010051, "0000"_hex, "05"_hex)}};
    char out = 0;
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x80010051, nullptr, 0, &out, 1, &returned));

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(out, 5);
}

TEST(IoCtrl, RefusesANullInputOfLengthOneBeforeAnySystemCall)
{
    Script script;
    char out = 0;
    int returned = 0;

    EXPECT_FALSE(LinuxWrapper::IoCtrl(kHandle, 0x80010051, nullptr, 1, &out, 1, &returned));

    EXPECT_TRUE(script.calls().empty());
}

TEST(IoCtrl, RefusesAnUnknownCodeWithoutASystemCall)
{
    for (const unsigned long code : {0UL, 0x80010001UL, 0x80010052UL, 0xc2180050UL, 0xffffffffUL}) {
        Script script;
        char block[8] = {};
        int returned = 0;

        EXPECT_FALSE(LinuxWrapper::IoCtrl(kHandle, code, block, 8, block, 8, &returned));

        EXPECT_TRUE(script.calls().empty());
    }
}

TEST(IoCtrl, SetsTheVideoPowerSwitchesByTheMaskedBitsThemselves)
{
    Script script{{writesRegister(2, 1), writesRegister(5, 2), writesRegister(6, 4), writesRegister(7, 8)}};
    char switches = 0x0F;
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x40010023, &switches, 1, nullptr, 0, &returned));

    EXPECT_EQ(script.complaint(), "");
}

TEST(IoCtrl, PutsTheHighHalfOfTheSignalTimeAboveTheLowOne)
{
    Script script{{readsRegister(3, 0x1234), readsRegister(20, 0x0001)}};
    std::uint32_t time = 0;
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x80010060, nullptr, 0, reinterpret_cast<char*>(&time), 4, &returned));

    EXPECT_EQ(time, 0x00011234U);
}

TEST(IoCtrl, AnswersFalseToTheVideoResumeEvenWhenTheDriverAcceptsIt)
{
    Script script{{null(0x40010069)}};

    EXPECT_FALSE(LinuxWrapper::IoCtrl(kHandle, 0x40010069, nullptr, 0, nullptr, 0, nullptr));

    EXPECT_EQ(script.complaint(), "");
}

TEST(IoCtrl, SendsTheVideoResumeOnAClosedDeviceToo)
{
    Script script{{null(0x40010069)}};
    script.failAt(0, EBADF);

    EXPECT_FALSE(LinuxWrapper::IoCtrl(-1, 0x40010069, nullptr, 0, nullptr, 0, nullptr));

    EXPECT_EQ(script.calls().size(), 1U);
}

TEST(IoCtrl, LeavesTheCountOfAClearedErrorStatusUnset)
{
    Script script{{writesRegister(25, 1)}};
    int returned = -77;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x40010063, nullptr, 0, nullptr, 0, &returned));

    EXPECT_EQ(returned, -77);
}

TEST(IoCtrl, KeepsTheRegistersWrittenBeforeARefusal)
{
    Script script{{writesRegister(0, 0x1112), writesRegister(1, 0x2122)}};
    script.failAt(1, EIO);
    Bytes times = "12112221"_hex;
    int returned = -77;

    EXPECT_FALSE(
        LinuxWrapper::IoCtrl(kHandle, 0x40010027, reinterpret_cast<char*>(times.data()), 4, nullptr, 0, &returned));

    EXPECT_THAT(script.calls(), testing::ElementsAre(writesRegister(0, 0x1112), writesRegister(1, 0x2122)));
    EXPECT_EQ(returned, -77);
}

TEST(IoCtrl, CountsWhatTheCallerStatedNotWhatTheDriverGave)
{
    Script script{{local(0x80040037, "00000000"_hex, "01020304"_hex)}};
    char version[100] = {};
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x80040037, nullptr, 0, version, 100, &returned));

    EXPECT_EQ(returned, 100);
    EXPECT_EQ(version[4], 0) << "four bytes are copied whatever the caller has room for";
}

TEST(IoCtrl, CountsTheInputOfAFlashBlockWhenNoAnswerIsRequested)
{
    Bytes block(536, 7);
    Script script{{local(0xc218004e, block)}};
    int returned = 0;

    EXPECT_TRUE(
        LinuxWrapper::IoCtrl(kHandle, 0xc218004e, reinterpret_cast<char*>(block.data()), 536, nullptr, 0, &returned));

    EXPECT_EQ(returned, 536);
}

TEST(IoCtrl, StoresTheFlashAnswerEvenWhenItsLengthIsStatedAsNone)
{
    Bytes block(536, 7);
    Script script{{local(0xc218004e, block, "1122334455667788"_hex)}};
    std::uint32_t answer = 0;
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0xc218004e, reinterpret_cast<char*>(block.data()), 536,
                                     reinterpret_cast<char*>(&answer), 0, &returned));

    EXPECT_EQ(answer, 0x88776655U);
    EXPECT_EQ(returned, 536);
}

TEST(IoCtrl, TakesTheVoltageNumbersLowByteForTheRegisterAndEchoesAllOfIt)
{
    Script script{{readsRegister(0x21, 1)}};
    Bytes in = "21436587"_hex;
    Bytes out(8, 0xEE);
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x80010013, reinterpret_cast<char*>(in.data()), 4,
                                     reinterpret_cast<char*>(out.data()), 8, &returned));

    EXPECT_EQ(out, "21436587 0100 eeee"_hex);
}

TEST(IoCtrl, WrapsTheSmartRegistersNumberAtEightBits)
{
    Script script{{readsRegister(31, 1), writesRegister(31, 2)}};
    Bytes read = "ffff0000"_hex;
    Bytes written = "ffff0200"_hex;
    int returned = 0;

    EXPECT_TRUE(
        LinuxWrapper::IoCtrl(kHandle, 0x8001001d, nullptr, 0, reinterpret_cast<char*>(read.data()), 4, &returned));
    EXPECT_TRUE(
        LinuxWrapper::IoCtrl(kHandle, 0x4001001c, reinterpret_cast<char*>(written.data()), 4, nullptr, 0, &returned));

    EXPECT_EQ(script.complaint(), "");
}

TEST(IoCtrl, ExtendsOnlyThePowerOnStartupByteWithItsSign)
{
    for (const auto& [code, reg] : std::array<std::pair<unsigned long, std::uint8_t>, 4>{
             {{0x4001001f, 0}, {0x40010021, 1}, {0x40010025, 3}, {0x40010035, 4}}}) {
        Script script{{writesRegister(reg, 0x00FF)}};
        char all = static_cast<char>(0xFF);
        int returned = 0;
        EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, code, &all, 1, nullptr, 0, &returned));
        EXPECT_EQ(script.complaint(), "");
    }
    Script script{{writesRegister(21, 0xFFFF)}};
    char all = static_cast<char>(0xFF);
    int returned = 0;
    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x40010068, &all, 1, nullptr, 0, &returned));
    EXPECT_EQ(script.complaint(), "");
}

TEST(IoCtrl, SetsTheFpgaVideoPowerStatusBitOnlyFromTheLowestBitOfARegister)
{
    Script script{{readsRegister(2, 0xFFFE), readsRegister(5, 1), readsRegister(6, 2), readsRegister(7, 3)}};
    char bits = 0;
    int returned = 0;

    EXPECT_TRUE(LinuxWrapper::IoCtrl(kHandle, 0x80010022, nullptr, 0, &bits, 1, &returned));

    EXPECT_EQ(bits, 0x0A);
}

TEST(IoCtrl, AcceptsCallersBlocksWithoutAlignment)
{
    Script script{{writesRegister(3, 0x5678), writesRegister(20, 0x1234)}};
    Bytes block = "00 78563412"_hex;
    int returned = 0;

    EXPECT_TRUE(
        LinuxWrapper::IoCtrl(kHandle, 0x40010061, reinterpret_cast<char*>(block.data() + 1), 4, nullptr, 0, &returned));

    EXPECT_EQ(script.complaint(), "");
}

TEST(IoCtrl, RefusesAnAnswerWithoutABlockBeforeTheDriverIsCalled)
{
    for (const unsigned long code : {0x80010051UL, 0x80040037UL, 0x80010014UL, 0x80010016UL, 0x80010022UL}) {
        Script script;
        int returned = 0;

        EXPECT_FALSE(LinuxWrapper::IoCtrl(kHandle, code, nullptr, 0, nullptr, 0, &returned));

        EXPECT_TRUE(script.calls().empty());
    }
}
