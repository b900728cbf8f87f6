// SPDX-License-Identifier: LicenseRef-HXAux
// What every control code does, from the drivers' description, not from the library's table.
#include "platform/ControlCodeTable.h"
#include "platform/LinuxWrapper.h"
#include "testing/RowTest.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <ostream>
#include <sstream>

namespace io_ctrl_table_test {

using namespace Halvix;
using namespace driver;

namespace {

struct Case {
    std::uint32_t code;
    Bytes in;                     ///< input of the caller; empty: a null pointer of length 0
    Bytes out;                    ///< the caller's answer block before the call; empty as above
    std::vector<Exchange> driver; ///< calls of the driver
    Bytes answer;                 ///< the answer block afterwards
    int returned;                 ///< the count; kUnset: unchanged
    bool result = true;
};

constexpr int kUnset = -77;

Exchange R(std::uint8_t reg, std::uint16_t value)
{
    return readsRegister(reg, value);
}

Exchange W(std::uint8_t reg, std::uint16_t value)
{
    return writesRegister(reg, value);
}

Case byteRead(std::uint32_t code)
{
    return {code, {}, "ee"_hex, {local(code, "0000"_hex, "9c77"_hex)}, "9c"_hex, 1};
}

Case byteWrite(std::uint32_t code)
{
    return {code, "9c"_hex, {}, {local(code, "009c"_hex)}, {}, 1};
}

Case passIn(std::uint32_t code, const Bytes& block)
{
    return {code, block, {}, {callers(code, block)}, {}, static_cast<int>(block.size())};
}

Case passOut(std::uint32_t code, const Bytes& answer)
{
    const Bytes before(answer.size(), 0xEE);
    return {code, {}, before, {callers(code, before, answer)}, answer, static_cast<int>(answer.size())};
}

Case version(std::uint32_t code)
{
    return {code, {}, "eeeeeeee"_hex, {local(code, "00000000"_hex, "01fe0380"_hex)}, "01fe0380"_hex, 4};
}

Case word(std::uint32_t code, std::uint8_t reg)
{
    return {code, {}, "eeee"_hex, {R(reg, 0xA1B2)}, "b2a1"_hex, 2};
}

Case lowByte(std::uint32_t code, std::uint8_t reg)
{
    return {code, {}, "ee"_hex, {R(reg, 0xA1B2)}, "b2"_hex, 1};
}

Case setWord(std::uint32_t code, std::uint8_t reg)
{
    return {code, "b2a1"_hex, {}, {W(reg, 0xA1B2)}, {}, 2};
}

Case setByte(std::uint32_t code, std::uint8_t reg)
{
    return {code, "b2"_hex, {}, {W(reg, 0x00B2)}, {}, 1};
}

Bytes flashBlock()
{
    Bytes block(536);
    for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<std::uint8_t>(i * 7 + 3);
    return block;
}

Case flashWrite()
{
    return {0xc218004e,     flashBlock(),
            "eeeeeeee"_hex, {local(0xc218004e, flashBlock(), "1122334455667788"_hex)},
            "55667788"_hex, 4};
}

Case flashRead()
{
    Bytes out(536, 0);
    Bytes seen = out;
    const Bytes in = "1002 9999 00000100"_hex; // only the 16-bit length and the position are sent
    seen[0] = 0x10;
    seen[1] = 0x02;
    seen[6] = 0x01;
    return {0xc218004f, in, out, {callers(0xc218004f, seen, flashBlock())}, flashBlock(), 536};
}

Case timers()
{
    return {0x80010016,
            {},
            Bytes(28, 0xEE),
            {R(8, 0x0001), R(7, 0x0002), R(9, 59), R(11, 11), R(10, 10), R(23, 0xFFFF), R(24, 0xFFFF), R(15, 15),
             R(16, 16), R(17, 17), R(18, 18), R(19, 19), R(20, 20), R(21, 21), R(22, 22)},
            // (0x10002 x 60 + 59), 611, 0xFFFF x 61, 916, 1038, 1160, 1282
            "b3003c00 63020000 c3ff3c00 94030000 0e040000 88040000 02050000"_hex,
            28};
}

const std::vector<Case> kRegisterReads = {
    {0x80010013, "05030000"_hex, "eeeeeeeeeeeeeeee"_hex, {R(5, 0xA1B2)}, "05030000 b2a1 eeee"_hex, 8},
    word(0x80010014, 0),
    word(0x80010015, 1),
    timers(),
    word(0x80010017, 2),
    word(0x80010018, 3),
    word(0x80010019, 4),
    word(0x8001001a, 12),
    {0x8001001b, {}, "eeeeeeee"_hex, {R(14, 0x1112), R(13, 0x2122)}, "1211 2221"_hex, 4},
    {0x8001001d, {}, "0500eeee"_hex, {R(37, 0xA1B2)}, "0500b2a1"_hex, 4},
    lowByte(0x8001001e, 0),
    lowByte(0x80010020, 1),
    {0x80010022, {}, "ee"_hex, {R(2, 0xFFFF), R(5, 0xFFFE), R(6, 0x0003), R(7, 0x0001)}, "0d"_hex, 1},
    lowByte(0x80010024, 3),
    {0x80010026, {}, "eeeeeeee"_hex, {R(0, 0x1112), R(1, 0x2122)}, "1211 2221"_hex, 4},
    {0x8001002a, {}, "eeeeeeee"_hex, {R(4, 0xA1B2)}, "0000 b2a1"_hex, 4},
    word(0x8001002c, 7),
    {0x8001002e, {}, "eeee"_hex, {R(8, 0x0000), R(11, 0x8000), R(12, 0x0000), R(13, 0x0001)}, "0a00"_hex, 2},
    word(0x80010030, 9),
    word(0x80010032, 10),
    lowByte(0x80010034, 4),
    word(0x80010054, 14),
    lowByte(0x80010056, 3),
    word(0x80010058, 16),
    word(0x8001005a, 17),
    word(0x8001005c, 18),
    word(0x8001005e, 19),
    {0x80010060, {}, "eeeeeeee"_hex, {R(3, 0x1234), R(20, 0x0001)}, "34120100"_hex, 4},
    lowByte(0x80010067, 21),
    {0x8001006c, "f1002233"_hex, "eeeeeeee"_hex, {R(0xF1, 0xA1B2)}, "eeee b2a1"_hex, 4},
    {0x40010066, {}, "eeee"_hex, {R(4, 0xA1B2)}, "b2a1"_hex, 2}, // reads, despite its number
};

const std::vector<Case> kRegisterWrites = {
    {0x4001001c, "0500b2a1"_hex, {}, {W(37, 0xA1B2)}, {}, 4},
    setByte(0x4001001f, 0),
    setByte(0x40010021, 1),
    {0x40010023, "0f"_hex, {}, {W(2, 1), W(5, 2), W(6, 4), W(7, 8)}, {}, 1},
    setByte(0x40010025, 3),
    {0x40010027, "1211 2221"_hex, {}, {W(0, 0x1112), W(1, 0x2122)}, {}, 4},
    {0x4001002b, "0100 2c01"_hex, {}, {W(4, 300)}, {}, 4},
    setWord(0x4001002d, 7),
    {0x4001002f, "ffff"_hex, {}, {W(8, 1), W(11, 2), W(12, 4), W(13, 8)}, {}, 2},
    setWord(0x40010031, 9),
    setWord(0x40010033, 10),
    setByte(0x40010035, 4),
    setWord(0x40010055, 14),
    {0x40010057, "fe"_hex, {}, {W(3, 2)}, {}, 1},
    setWord(0x40010059, 16),
    setWord(0x4001005b, 17),
    setWord(0x4001005d, 18),
    setWord(0x4001005f, 19),
    {0x40010061, "7856 3412"_hex, {}, {W(3, 0x5678), W(20, 0x1234)}, {}, 4},
    setWord(0x40010062, 4),
    {0x40010063, {}, {}, {W(25, 1)}, {}, kUnset},
    {0x40010068, "ff"_hex, {}, {W(21, 0xFFFF)}, {}, 1},
    {0x4001006d, "f177b2a1"_hex, {}, {W(0xF1, 0xA1B2)}, {}, 4},
};

const std::vector<Case> kToTheDriver = {
    byteRead(0x80010002),
    byteRead(0x80010004),
    byteRead(0x8001000e),
    byteRead(0x80010049),
    byteRead(0x80010051),
    byteWrite(0x40010003),
    byteWrite(0x4001004a),
    {0x80020048, {}, "eeee"_hex, {local(0x80020048, "0000"_hex, "9c7711"_hex)}, "9c77"_hex, 2},
    version(0x80040036),
    version(0x80040037),
    version(0x80040038),
    version(0x80040064),
    passOut(0x80010040, "01"_hex),
    passOut(0x80010046, "01"_hex),
    passOut(0x8001006a, "0a"_hex),
    passOut(0x8002000d, "8c42"_hex),
    passOut(0x80030006, "010203"_hex),
    passOut(0x80030044, "010203"_hex),
    passOut(0x8004000b, "01020304"_hex),
    passOut(0x8004000f, "01020304"_hex),
    passOut(0x8004003c, "01020304"_hex),
    passOut(0x8004003e, "01020304"_hex),
    passOut(0x80040042, "01020304"_hex),
    passOut(0x80060012, "010203040506"_hex),
    passOut(0x80080009, "0102030405060708"_hex),
    passIn(0x40010005, "42"_hex),
    passIn(0x40010041, "01000000"_hex),
    passIn(0x40010047, "01"_hex),
    passIn(0x4001004b, "02"_hex),
    passIn(0x4001004c, "96"_hex),
    passIn(0x40010050, "00"_hex),
    passIn(0x4001006b, "0a"_hex),
    passIn(0x4002000c, "8c42"_hex),
    passIn(0x40020011, "0000"_hex),
    passIn(0x40030007, "010203"_hex),
    passIn(0x40030045, "010203"_hex),
    passIn(0x4004000a, "01020304"_hex),
    passIn(0x40040010, "01020304"_hex),
    passIn(0x4004003d, "01020304"_hex),
    passIn(0x4004003f, "01020304"_hex),
    passIn(0x40040043, "01020304"_hex),
    passIn(0x40080008, "0102030405060708"_hex),
    {0x4001004d, "0000"_hex, "ee"_hex, {callers(0x4001004d, "0000"_hex)}, "ee"_hex, 1}, // the answer's length
    {0x40010065, {}, {}, {null(0x40010065)}, {}, kUnset, false},
    {0x40010069, {}, {}, {null(0x40010069)}, {}, kUnset, false},
    flashWrite(),
    flashRead(),
};

std::vector<Case> everyCase()
{
    std::vector<Case> all = kRegisterReads;
    all.insert(all.end(), kRegisterWrites.begin(), kRegisterWrites.end());
    all.insert(all.end(), kToTheDriver.begin(), kToTheDriver.end());
    return all;
}

/// One call of IoCtrl with blocks of exactly the stated size.
struct OneCall {
    explicit OneCall(const Case& row) : in{row.in}, out{row.out}, row_{row} {}

    void run(Script& script)
    {
        const bool toCallersOut = std::any_of(row_.driver.begin(), row_.driver.end(),
                                              [](const Exchange& e) { return e.block == Block::Callers; }) &&
                                  row_.code != 0x4001004d && !out.empty();
        const Bytes& block = toCallersOut ? out : in;
        script.callersBlock(block.data(), block.size());
        result = LinuxWrapper::IoCtrl(42, row_.code, pointer(in), static_cast<int>(in.size()), pointer(out),
                                      static_cast<int>(out.size()), &returned);
    }

    static char* pointer(Bytes& bytes) { return bytes.empty() ? nullptr : reinterpret_cast<char*>(bytes.data()); }

    Bytes in;
    Bytes out;
    int returned = kUnset;
    bool result = false;

private:
    const Case& row_;
};

std::string nameOf(const Case& row)
{
    std::ostringstream text;
    text << std::hex << row.code;
    return text.str();
}

void PrintTo(const Case& row, std::ostream* out)
{
    *out << "code 0x" << std::hex << row.code << std::dec;
}

class ControlCode : public hxtest::TestWithRow<Case> {};

} // namespace

ROW_TEST(ControlCode, ReachesTheDriverAndBringsTheAnswerAndItsCount)
{
    Script script{row().driver};
    OneCall call{row()};

    call.run(script);

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(call.result, row().result);
    EXPECT_EQ(call.in, row().in);
    EXPECT_EQ(call.out, row().answer);
    EXPECT_EQ(call.returned, row().returned);
}

TEST(ControlCodes, EndWithFalseAtTheFirstRefusalWhereverItIs)
{
    for (const Case& row : everyCase()) {
        for (std::size_t i = 0; i < row.driver.size(); ++i) {
            SCOPED_TRACE(testing::PrintToString(row));
            Script script{row.driver};
            script.failAt(i, EIO);
            OneCall call{row};

            call.run(script);

            EXPECT_FALSE(call.result);
            EXPECT_EQ(script.calls().size(), i + 1) << "nothing more is sent after a refusal";
            EXPECT_EQ(call.returned, kUnset);
            // The caller's block, except for the one code that prepares it before the driver call.
            EXPECT_EQ(call.out, row.code == 0xc218004f ? row.driver[0].seen : row.out);
        }
    }
}

TEST(ControlCodes, AreRefusedForANullInputOfALengthBeforeAnySystemCall)
{
    for (const Case& row : everyCase()) {
        SCOPED_TRACE(testing::PrintToString(row));
        Script script;
        char out[536] = {};
        int returned = kUnset;

        EXPECT_FALSE(LinuxWrapper::IoCtrl(42, row.code, nullptr, 1, out, 536, &returned));

        EXPECT_TRUE(script.calls().empty());
        EXPECT_EQ(returned, kUnset);
    }
}

TEST(ControlCodes, AreRefusedForANullOutputOfALengthBeforeAnySystemCall)
{
    for (const Case& row : everyCase()) {
        SCOPED_TRACE(testing::PrintToString(row));
        Script script;
        char in[536] = {};
        int returned = kUnset;

        EXPECT_FALSE(LinuxWrapper::IoCtrl(42, row.code, in, 536, nullptr, 1, &returned));

        EXPECT_TRUE(script.calls().empty());
        EXPECT_EQ(returned, kUnset);
    }
}

/// Codes that use the caller's block accept a null one of length 0; the others require it.
TEST(ControlCodes, FailWithoutTheBlockThatTheyReadOrFill)
{
    const auto isCallers = [](const Exchange& exchange) { return exchange.block == Block::Callers; };
    for (const Case& row : everyCase()) {
        if (std::ranges::any_of(row.driver, isCallers))
            continue;
        SCOPED_TRACE(testing::PrintToString(row));
        for (const bool withoutInput : {true, false}) {
            Case without = row;
            Bytes& block = withoutInput ? without.in : without.out;
            if (block.empty() || (!withoutInput && row.code == 0xc218004e)) // its answer may stay in place
                continue;
            block.clear();
            Script script{row.driver};
            OneCall call{without};

            call.run(script);

            EXPECT_FALSE(call.result) << (withoutInput ? "no input" : "no output");
            EXPECT_EQ(call.returned, kUnset);
        }
    }
}

TEST_ROWS_IN(Each, ControlCode, nameOf, everyCase());

TEST(ControlCodes, EveryOneOfTheTableIsWrittenDownHere)
{
    std::map<std::uint32_t, int> cases;
    for (const Case& row : everyCase())
        ++cases[row.code];
    for (const Row& row : kControlCodes)
        EXPECT_EQ(cases[row.code], 1) << "cases of 0x" << std::hex << row.code << "; each code needs one in " __FILE__;
    EXPECT_EQ(cases.size(), std::size(kControlCodes)) << "a case's code is not in the table";
}

} // namespace io_ctrl_table_test
