// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Jida.h"

#include "platform/LinuxWrapper.h"
#include "simulator/model/ProductionData.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <numeric>

using namespace Halvix;
using hxsim::ProductionData;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

/// All thirteen pointers, for tests of what is resolved. Cleared first, because they outlive a unit.
struct Pointers {
    Pointers() { clear(); }
    ~Pointers() { clear(); }
    static void clear()
    {
        pJidaBoardClose = nullptr;
        pJidaTemperatureGetCurrent = nullptr;
        pJidaBoardOpenA = nullptr;
        pJidaBoardCountA = nullptr;
        pJidaI2CWrite = nullptr;
        pJidaTemperatureCount = nullptr;
        pJidaDllInstall = nullptr;
        pJidaI2CWriteReadCombined = nullptr;
        pJidaDllInitialize = nullptr;
        pJidaDllUninitialize = nullptr;
        pJidaTemperatureGetInfo = nullptr;
        pJidaI2CWriteRegister = nullptr;
        pJidaI2CReadRegister = nullptr;
    }
    /// Those that are set, in the order in which they are resolved.
    static std::string set()
    {
        const bool flags[] = {pJidaBoardClose != nullptr,         pJidaTemperatureGetCurrent != nullptr,
                              pJidaBoardOpenA != nullptr,         pJidaBoardCountA != nullptr,
                              pJidaI2CWrite != nullptr,           pJidaTemperatureCount != nullptr,
                              pJidaDllInstall != nullptr,         pJidaI2CWriteReadCombined != nullptr,
                              pJidaDllInitialize != nullptr,      pJidaDllUninitialize != nullptr,
                              pJidaTemperatureGetInfo != nullptr, pJidaI2CWriteRegister != nullptr,
                              pJidaI2CReadRegister != nullptr};
        std::string text;
        for (const bool flag : flags)
            text += flag ? '1' : '0';
        return text;
    }
};

unsigned long boardOf(SimulatedUnit& unit)
{
    unsigned long board = 0;
    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));
    unit.clearJournal();
    return board;
}

std::string printedBy(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

// Loading.

TEST(BoardLibrary, FillsAllPointers)
{
    SimulatedUnit unit;
    const Pointers pointers;

    EXPECT_TRUE(JidaLinuxInitialize());

    EXPECT_EQ(Pointers::set(), "1111111111111");
}

TEST(BoardLibrary, IsLoadedAgainByEveryInitialisation)
{
    SimulatedUnit unit;
    const Pointers pointers;

    EXPECT_TRUE(JidaLinuxInitialize());
    EXPECT_TRUE(JidaLinuxInitialize());

    EXPECT_THAT(unit.journal(), ElementsAre("libjida.so dlopen", "libjida.so dlopen"));
}

TEST(BoardLibrary, ThatIsAbsentFailsSilently)
{
    SimulatedUnit unit{"absent = libjida.so"};
    const Pointers pointers;
    unsigned long board = 77;

    EXPECT_EQ(printedBy([&] {
                  EXPECT_FALSE(JidaLinuxInitialize());
                  EXPECT_FALSE(LinuxWrapper::JidaInit(&board));
              }),
              "");
    EXPECT_EQ(Pointers::set(), "0000000000000");
    EXPECT_EQ(board, 77U);
}

TEST(BoardLibrary, ThatIsAbsentMakesEveryForwarderAnswerZero)
{
    SimulatedUnit unit{"absent = libjida.so"};
    const Pointers pointers;
    unsigned long value = 0;
    unsigned char byte = 0;

    EXPECT_EQ(JidaBoardClose(1), 0U);
    EXPECT_EQ(JidaTemperatureGetCurrent(1, 0, &value, &value), 0U);
    EXPECT_EQ(JidaBoardOpenA("CPU", 0, 0, &value), 0U);
    EXPECT_EQ(JidaBoardCountA(nullptr, 0), 0U);
    EXPECT_EQ(JidaI2CWrite(1, 0, 0xAE, &byte, 1), 0U);
    EXPECT_EQ(JidaTemperatureCount(1), 0U);
    EXPECT_EQ(JidaDllInstall(1), 0U);
    EXPECT_EQ(JidaI2CWriteReadCombined(1, 0, 0xAE, &byte, 1, &byte, 1), 0U);
    EXPECT_EQ(JidaDllInitialize(), 0U);
    EXPECT_EQ(JidaDllUninitialize(), 0U);
    EXPECT_EQ(JidaTemperatureGetInfo(1, 0, nullptr), 0U);
    EXPECT_EQ(JidaI2CWriteRegister(1, 0, 0x40, 0, 0), 0U);
    EXPECT_EQ(JidaI2CReadRegister(1, 0, 0x41, 0, &byte), 0U);
}

struct Missing {
    const char* function;
    const char* pointers; ///< set before the missing one
};

class IncompleteBoardLibrary : public hxtest::TestWithRow<Missing> {};

ROW_TEST(IncompleteBoardLibrary, IsNamedAndKeepsThePointersBefore)
{
    SimulatedUnit unit{("absent = " + std::string{row().function}).c_str()};
    const Pointers pointers;

    const std::string printed = printedBy([] { EXPECT_FALSE(JidaLinuxInitialize()); });

    EXPECT_EQ(printed, "Failed to find symbol " + std::string{row().function} + ". Error = (null)\r\n");
    EXPECT_EQ(Pointers::set(), row().pointers);
}

TEST_ROWS(
    All, IncompleteBoardLibrary, [](const auto& row) { return row.function; },
    Missing{"JidaBoardClose", "0000000000000"}, Missing{"JidaTemperatureGetCurrent", "1000000000000"},
    Missing{"JidaBoardOpenA", "1100000000000"}, Missing{"JidaBoardCountA", "1110000000000"},
    Missing{"JidaI2CWrite", "1111000000000"}, Missing{"JidaTemperatureCount", "1111100000000"},
    Missing{"JidaDllInstall", "1111110000000"}, Missing{"JidaI2CWriteReadCombined", "1111111000000"},
    Missing{"JidaDllInitialize", "1111111100000"}, Missing{"JidaDllUninitialize", "1111111110000"},
    Missing{"JidaTemperatureGetInfo", "1111111111000"}, Missing{"JidaI2CWriteRegister", "1111111111100"},
    Missing{"JidaI2CReadRegister", "1111111111110"});

TEST(BoardLibrary, CallsWhatAProgramPutIntoAPointer)
{
    const Pointers pointers;
    pJidaBoardCountA = [](const char*, unsigned long flags) { return static_cast<unsigned int>(flags) + 1; };

    EXPECT_EQ(JidaBoardCountA(nullptr, 6), 7U);
}

// Opening the boards.

TEST(BoardInit, OpensAndClosesTheCpuBoardAndThenOpensAll)
{
    SimulatedUnit unit{"jida.boards = 3"};
    unsigned long board = 0;

    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));

    EXPECT_EQ(board, 4U); // the last one's
    EXPECT_THAT(unit.journal(),
                Requests("libjida.so dlopen", "libjida.so JidaDllInitialize = 1", "libjida.so JidaBoardCountA any = 3",
                         "libjida.so JidaBoardOpenA CPU 0 = handle 1", "libjida.so JidaBoardClose handle 1",
                         "libjida.so JidaBoardOpenA any 0 = handle 2", "libjida.so JidaBoardOpenA any 1 = handle 3",
                         "libjida.so JidaBoardOpenA any 2 = handle 4"));
}

TEST(BoardInit, ContinuesWithoutACpuBoard)
{
    SimulatedUnit unit;
    unit.fail("libjida.so", "JidaBoardOpenA", ENODEV, 1);
    unsigned long board = 0;

    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));

    EXPECT_EQ(board, 1U);
    EXPECT_THAT(unit.callsTo("libjida.so"), Not(Contains(testing::StartsWith("JidaBoardClose"))));
}

TEST(BoardInit, FailsWhenABoardCannotBeOpened)
{
    SimulatedUnit unit{"jida.boards = 3"};
    unit.fail("libjida.so", "JidaBoardOpenA", ENODEV, 1, 2);
    unsigned long board = 0;

    EXPECT_FALSE(LinuxWrapper::JidaInit(&board));

    EXPECT_THAT(unit.callsTo("libjida.so"), Not(Contains(testing::HasSubstr("any 2"))));
}

TEST(BoardInit, SucceedsWithNoBoardAtAll)
{
    SimulatedUnit unit{"jida.boards = 0"};
    unsigned long board = 77;

    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));

    EXPECT_THAT(unit.callsTo("libjida.so"), ElementsAre("dlopen", "JidaDllInitialize = 1", "JidaBoardCountA any = 0",
                                                        "JidaBoardOpenA CPU 0 !ENODEV"));
}

TEST(BoardInit, InstallsTheLibraryThatNeedsIt)
{
    SimulatedUnit unit{"jida.installed = no"};
    unsigned long board = 0;

    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));

    EXPECT_THAT(unit.callsTo("libjida.so"), InOrder({"JidaDllInitialize = 0", "JidaDllInstall 1 = 1",
                                                     "JidaDllInitialize = 1", "JidaBoardCountA any = 1"}));
}

TEST(BoardInit, FailsWhenTheLibraryCannotBeInstalled)
{
    SimulatedUnit unit{"jida.refuses = yes"};
    unsigned long board = 77;

    EXPECT_FALSE(LinuxWrapper::JidaInit(&board));

    EXPECT_EQ(board, 77U);
    EXPECT_THAT(unit.callsTo("libjida.so"), ElementsAre("dlopen", "JidaDllInitialize = 0", "JidaDllInstall 1 = 0"));
}

TEST(BoardInit, IgnoresTheResultOfTheSecondInitialisation)
{
    SimulatedUnit unit;
    unit.fail("libjida.so", "JidaDllInitialize", EIO, 2);
    unsigned long board = 0;

    EXPECT_TRUE(LinuxWrapper::JidaInit(&board));
}

TEST(BoardInit, AcceptsAHandleOfFourBytes)
{
    const Pointers pointers;
    SimulatedUnit unit;
    ASSERT_TRUE(JidaLinuxInitialize());
    // The real library of a 64-bit system may write 4 bytes where the caller has 8; the initialisation calls dlopen
    // again, so the forwarder is called here as JidaInit calls it.
    pJidaBoardOpenA = [](const char*, unsigned long, unsigned long, unsigned long* handle) {
        const std::uint32_t four = 0x12345678;
        std::memcpy(handle, &four, sizeof four);
        return 1U;
    };
    unsigned long handle = 0;

    EXPECT_EQ(JidaBoardOpenA(nullptr, 0, 0, &handle), 1U);

    EXPECT_EQ(handle, 0x12345678U);
}

// Temperatures.

struct Reading {
    unsigned long temperature = 77;
    unsigned long status = 77;
    unsigned long type = 77;

    [[nodiscard]] bool read(unsigned long board, unsigned long index)
    {
        return LinuxWrapper::JidaGetTemperature(board, index, &temperature, &status, &type);
    }
};

TEST(BoardTemperature, ReadsValueStatusAndType)
{
    SimulatedUnit unit{{"temperature.pm.1 = 41.25", "temperature.pm.1.status = 9", "temperature.pm.1.type = 3"}};
    const unsigned long board = boardOf(unit);
    Reading reading;

    EXPECT_TRUE(reading.read(board, 1));

    EXPECT_EQ(reading.temperature, 41250U);
    EXPECT_EQ(reading.status, 9U);
    EXPECT_EQ(reading.type, 3U);
    EXPECT_THAT(unit.callsTo("libjida.so"),
                ElementsAre("JidaTemperatureCount handle 2 = 2", "JidaTemperatureGetCurrent handle 2 sensor 1 = 41250",
                            "JidaTemperatureGetInfo handle 2 sensor 1 size 44 = type 3"));
}

TEST(BoardTemperature, BelowZeroIsASignedNumberOf32Bits)
{
    SimulatedUnit unit{"temperature.pm.0 = -1.5"};
    const unsigned long board = boardOf(unit);
    Reading reading;

    ASSERT_TRUE(reading.read(board, 0));

    EXPECT_EQ(static_cast<std::int32_t>(reading.temperature), -1500);
}

TEST(BoardTemperature, OfAnIndexAtTheCountIsNotRead)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    Reading reading;

    EXPECT_FALSE(reading.read(board, 2));

    EXPECT_THAT(unit.callsTo("libjida.so"), ElementsAre("JidaTemperatureCount handle 2 = 2"));
    EXPECT_EQ(reading.temperature, 77U);
}

TEST(BoardTemperature, StopsWhenTheValueCannotBeRead)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unit.fail("libjida.so", "JidaTemperatureGetCurrent");
    Reading reading;

    EXPECT_FALSE(reading.read(board, 0));

    EXPECT_THAT(unit.callsTo("libjida.so"), Not(Contains(testing::StartsWith("JidaTemperatureGetInfo"))));
    EXPECT_EQ(reading.status, 77U);
}

TEST(BoardTemperature, FailsWhenTheSensorCannotBeDescribed)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unit.fail("libjida.so", "JidaTemperatureGetInfo");
    Reading reading;

    EXPECT_FALSE(reading.read(board, 0));

    EXPECT_EQ(reading.type, 77U);
}

TEST(BoardTemperature, PassesTheBoardLibraryTheCallersOwnStatus)
{
    const Pointers pointers;
    static unsigned long* given = nullptr;
    pJidaTemperatureCount = [](unsigned long) { return 1U; };
    pJidaTemperatureGetCurrent = [](unsigned long, unsigned long, unsigned long*, unsigned long* status) {
        given = status;
        return 0U;
    };
    Reading reading;

    EXPECT_FALSE(reading.read(1, 0));

    EXPECT_EQ(given, &reading.status);
}

TEST(BoardTemperature, SucceedsOnlyForAResultOfExactlyOne)
{
    const Pointers pointers;
    pJidaTemperatureCount = [](unsigned long) { return 1U; };
    pJidaTemperatureGetCurrent = [](unsigned long, unsigned long, unsigned long*, unsigned long*) { return 2U; };
    Reading reading;

    EXPECT_FALSE(reading.read(1, 0));
}

// Registers on the I2C bus.

TEST(I2cRegister, IsWrittenWithTheReadBitMasked)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);

    (void)printedBy([&] { (void)LinuxWrapper::I2CWrite(board, 0x41, 9, 0xFC); });

    EXPECT_THAT(unit.callsTo("libjida.so"),
                Contains(testing::StartsWith("JidaI2CWriteRegister handle 2 0x40 register 9: fc")));
}

TEST(I2cRegister, IsReadWithTheAddressAsItIs)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unsigned char value = 0;

    (void)printedBy([&] { (void)LinuxWrapper::I2CRead(board, 0x41, 9, &value); });

    EXPECT_THAT(unit.callsTo("libjida.so"),
                Contains(testing::StartsWith("JidaI2CReadRegister handle 2 0x41 register 9")));
}

TEST(I2cRegister, WithoutAnAnswerPrintsTheOldText)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unsigned char value = 77;

    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::I2CWrite(board, 0x60, 0, 0)); }),
              "WindowsWrapper: I2CWrite error...");
    EXPECT_EQ(printedBy([&] { EXPECT_FALSE(LinuxWrapper::I2CRead(board, 0x61, 0, &value)); }),
              "WindowsWrapper: I2CRead error...");
    EXPECT_EQ(value, 77);
}

// The EEPROMs.

TEST(EepromRead, OfThreeHundredBytesTakesThreeTransfers)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    char buffer[300];
    unsigned int count = 0;

    EXPECT_TRUE(LinuxWrapper::EepromRead(board, EepromTypeMain, buffer, sizeof buffer, &count));

    EXPECT_EQ(count, 300U);
    std::vector<std::string> transfers;
    for (const hxsim::Entry& entry : unit.entries())
        transfers.push_back(entry.action + ": " + std::to_string(entry.in[0] * 256 + entry.in[1]));
    EXPECT_THAT(transfers, ElementsAre("JidaI2CWriteReadCombined handle 2 0xae read 128: 0",
                                       "JidaI2CWriteReadCombined handle 2 0xae read 128: 128",
                                       "JidaI2CWriteReadCombined handle 2 0xae read 44: 256"));
}

TEST(EepromRead, DeliversTheBytesOfThePart)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    {
        auto data = unit.model<ProductionData>();
        std::iota(data->addOn.bytes().begin(), data->addOn.bytes().end(), std::uint8_t{0});
    }
    char buffer[300];
    unsigned int count = 0;

    ASSERT_TRUE(LinuxWrapper::EepromRead(board, EepromTypeAddOn, buffer, sizeof buffer, &count));

    for (unsigned i = 0; i < sizeof buffer; ++i)
        ASSERT_EQ(static_cast<unsigned char>(buffer[i]), i % 256);
}

TEST(EepromRead, ReportsTheNumberOfBytesReadBeforeAFailure)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unit.fail("libjida.so", "JidaI2CWriteReadCombined", EIO, 1, 2);
    char buffer[300];
    unsigned int count = 0;

    EXPECT_FALSE(LinuxWrapper::EepromRead(board, EepromTypeMain, buffer, sizeof buffer, &count));

    EXPECT_EQ(count, 256U);
}

TEST(EepromRead, OfNoLengthWritesNoCount)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    char buffer[1];
    unsigned int count = 77;

    EXPECT_TRUE(LinuxWrapper::EepromRead(board, EepromTypeMain, buffer, 0, &count));

    EXPECT_EQ(count, 77U);
    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(EepromWrite, Of33BytesTakesTwoPagesEachAfterAPause)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    const std::string data(33, 'd');

    EXPECT_TRUE(LinuxWrapper::EepromWrite(board, EepromTypeMain, data.data(), 33));

    std::string firstPage = "libjida.so JidaI2CWrite handle 2 0xae: 00 00";
    for (int i = 0; i < 32; ++i)
        firstPage += " 64";
    EXPECT_THAT(unit.journal(),
                Requests("sleep 10 ms", firstPage, "sleep 10 ms", "libjida.so JidaI2CWrite handle 2 0xae: 00 20 64"));
}

TEST(EepromWrite, PausesInFullWhenSignalsInterrupt)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unit.fail("sleep", "10 ms", EINTR, 2);

    EXPECT_TRUE(LinuxWrapper::EepromWrite(board, EepromTypeMain, "d", 1));

    EXPECT_THAT(unit.journal(), Requests("sleep 10 ms !EINTR", "sleep 10 ms !EINTR", "sleep 10 ms",
                                         "libjida.so JidaI2CWrite handle 2 0xae: 00 00 64"));
}

TEST(EepromWrite, SendsTheOffsetsHighByteFirst)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    const std::string data(288, 'd');

    ASSERT_TRUE(LinuxWrapper::EepromWrite(board, EepromTypeAddOn, data.data(), 288));

    const hxsim::Entry last = unit.entries().back();
    EXPECT_EQ(last.in[0], 0x01);
    EXPECT_EQ(last.in[1], 0x00);
}

TEST(EepromWrite, StopsAtTheFirstPageThatFails)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    unit.fail("libjida.so", "JidaI2CWrite", EIO, 1, 1);
    const std::string data(320, 'd');

    EXPECT_FALSE(LinuxWrapper::EepromWrite(board, EepromTypeMain, data.data(), 320));

    EXPECT_THAT(unit.callsTo("sleep"), testing::SizeIs(2));
    EXPECT_EQ(unit.model<ProductionData>()->main.bytes()[31], 'd');
    EXPECT_NE(unit.model<ProductionData>()->main.bytes()[32], 'd');
}

struct Address {
    int type;
    const char* address;
};

class EepromAddress : public hxtest::TestWithRow<Address> {};

ROW_TEST(EepromAddress, IsAEForTheMainBoardAndA4ForAnyOther)
{
    SimulatedUnit unit;
    const unsigned long board = boardOf(unit);
    char byte = 'x';
    unsigned int count = 0;
    const auto which = static_cast<EepromType>(row().type);

    EXPECT_TRUE(LinuxWrapper::EepromRead(board, which, &byte, 1, &count));
    EXPECT_TRUE(LinuxWrapper::EepromWrite(board, which, &byte, 1));

    const std::string address = row().address;
    EXPECT_EQ(unit.entries().front().action, "JidaI2CWriteReadCombined handle 2 " + address + " read 1");
    EXPECT_EQ(unit.entries().back().action, "JidaI2CWrite handle 2 " + address);
}

TEST_ROWS(Types, EepromAddress, hxtest::kNumbered, Address{1, "0xae"}, Address{2, "0xa4"}, Address{0, "0xa4"},
          Address{-1, "0xa4"}, Address{257, "0xa4"});

} // namespace
