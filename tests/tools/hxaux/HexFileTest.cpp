// SPDX-License-Identifier: LicenseRef-HXAux
// HEX files whose bytes the unit would write elsewhere than their addresses say.
#include "tools/hxaux/HexFile.h"

#include "testing/FirmwareTexts.h"
#include "testing/Named.h"
#include "testing/RowTest.h"

#include <gmock/gmock.h>

using namespace firmware;
using hxaux::checkHex;
using testing::StartsWith;

namespace {

const std::string kEndRecord{kEnd};

/// Sixteen bytes at an offset.
std::string row(std::uint16_t offset)
{
    return data(offset, pattern(16, offset));
}

/// All rows of a segment.
std::string fullSegment()
{
    std::string text;
    for (unsigned offset = 0; offset < 0x10000; offset += 16)
        text += row(static_cast<std::uint16_t>(offset));
    return text;
}

std::string problemOf(const std::string& records)
{
    return checkHex(records + kEndRecord).problem;
}

} // namespace

TEST(HexFile, IsGoodWhenItStartsWhereTheFlashDoes)
{
    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + row(16)), "");
    EXPECT_EQ(problemOf(linear(0x0800) + row(0x100) + row(0x200)), "") << "holes are allowed";
    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + linear(0x0801) + row(0)), "");
    EXPECT_EQ(problemOf(linear(0x0800) + linear(0x0801) + row(0)), "");
    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + record(5, 0, {8, 0, 1, 0x15})), "");
}

TEST(HexFile, IsGoodAtTheAddressesWhereAStartingMicrocontrollerShowsItsFlash)
{
    EXPECT_EQ(problemOf(row(0) + row(16)), "");
    EXPECT_EQ(problemOf(linear(0) + row(0)), "");
}

TEST(HexFile, IsGoodWhenBothReadingsComeToTheSame)
{
    EXPECT_EQ(problemOf(linear(0) + fullSegment() + linear(1) + row(0)), "") << "there is nothing to fill up";
    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + linear(0x0800)), "") << "no data follows";
    EXPECT_EQ(problemOf(segment(0) + row(0) + row(16)), "");
}

TEST(HexFile, ReportsTheSizeOfTheImage)
{
    EXPECT_EQ(checkHex(linear(0x0800) + row(0x100) + kEndRecord).imageSize, 0x110U);
}

struct Misplaced : Named {
    std::string records;
    const char* problem;
};

class HexFileThatIsMisplaced : public hxtest::TestWithRow<Misplaced> {};

ROW_TEST(HexFileThatIsMisplaced, IsRefusedWithItsLine)
{
    EXPECT_THAT(problemOf(row().records), StartsWith(row().problem));
}

TEST_ROWS(Of, HexFileThatIsMisplaced, kNameOfRow,
          Misplaced{"LinearZeroFirst", linear(0) + row(0) + linear(1) + row(0),
                    "line 4: its data belongs to address 0x00010000, but the unit would write it to 0x00000010"},
          Misplaced{"DataBeforeTheFirstAddress", row(0) + linear(0x0800) + row(0),
                    "line 3: its data belongs to address"},
          Misplaced{"LinearRepeated", linear(0x0800) + row(0) + linear(0x0800) + row(16),
                    "line 4: its data belongs to address 0x08000010, but the unit would write it to 0x08000020"},
          Misplaced{"LinearRepeatedAtTheSamePlace", linear(0x0800) + row(0) + linear(0x0800) + row(0),
                    "line 4: its data belongs to address 0x08000000"},
          Misplaced{"LinearDescending", linear(0x0801) + linear(0x0800) + row(0), "line 2: its address is below"},
          Misplaced{"LinearDescendingAboveTheFirst",
                    linear(0x0800) + row(0) + linear(0x0802) + row(0) + linear(0x0801) + row(0),
                    "line 6: its data belongs to address 0x08010000"},
          Misplaced{"LinearWithAnOffset", linear(0x0800) + record(4, 0x10, {8, 0}) + row(0x10),
                    "line 3: its data belongs to address 0x08000010"},
          Misplaced{"LinearOfOneByte", record(4, 0, {8}) + row(0), "line 1: an address record holds two bytes, not 1"},
          Misplaced{"FlashNotAtItsStart", linear(0x0801) + row(0),
                    "line 2: its data belongs to address 0x08010000, but the unit would write it to 0x08000000"},
          Misplaced{"NotInTheFlash", linear(0x2000) + row(0), "line 2: its data belongs to address 0x20000000"},
          Misplaced{"SegmentAddresses", segment(0x1000) + row(0) + segment(0x2000) + row(0),
                    "line 2: its data belongs to address 0x00010000"},
          Misplaced{"SegmentAfterData", row(0) + segment(0x10) + row(16),
                    "line 3: its data belongs to address 0x00000110"},
          Misplaced{"SegmentThatIsFull", segment(0) + data(0xFFF8, pattern(16)),
                    "line 2: its data continues at the start of its segment"},
          Misplaced{"SegmentCrossedBeforeTheNext", linear(0x0800) + data(0xFFF8, pattern(16)) + linear(0x0801) + row(8),
                    "line 4: its data belongs to address 0x08010008, but the unit would write it to 0x08010010"},
          Misplaced{"Overlap", linear(0x0800) + row(0) + row(8), "line 3: its data begins before the end"},
          Misplaced{"DescendingData", linear(0x0800) + row(32) + row(0), "line 3: its data begins before the end"});

TEST(HexFile, NamesTheLineOfWhatIsNotARecord)
{
    EXPECT_THAT(problemOf("hello\n"), StartsWith("line 1: it does not begin with ':'"));
    EXPECT_THAT(problemOf(linear(0x0800) + "\n\n:1\n"), StartsWith("line 4: it is truncated, or has characters"));
    EXPECT_THAT(checkHex(linear(0x0800) + ":10").problem, StartsWith("line 2: it is truncated, or has characters"));
}

TEST(HexFile, NamesTheLineOfAWrongChecksum)
{
    std::string wrong = row(16);
    wrong[9] = wrong[9] == '0' ? '1' : '0';

    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + wrong), "line 3: the record's checksum is wrong");
}

TEST(HexFile, CountsLinesThatEndInCarriageReturns)
{
    EXPECT_THAT(problemOf("\r\n\r\n:1\n"), StartsWith("line 3: "));
    EXPECT_THAT(problemOf("\r\r:1"), StartsWith("line 3: "));
}

// The library takes " 1" and "1G" for 1; the checksum does not always notice.
TEST(HexFile, RefusesDigitsThatOtherReadersDoNotTake)
{
    EXPECT_EQ(problemOf(linear(0x0800) + ":01000000 1FE\n"),
              "line 2: it has characters that are not hexadecimal digits");
    EXPECT_EQ(problemOf(linear(0x0800) + ":010000001GFE\n"),
              "line 2: it has characters that are not hexadecimal digits");
}

TEST(HexFile, WithoutAnEndRecordIsTruncated)
{
    EXPECT_EQ(checkHex(linear(0x0800) + row(0)).problem, "missing end record: the file is truncated");
}

// An upgrade would erase the flash and write nothing.
TEST(HexFile, WithoutDataIsRefused)
{
    EXPECT_EQ(problemOf(""), "it holds no data");
    EXPECT_EQ(problemOf(linear(0x0800)), "it holds no data");
}

TEST(HexFile, TakesNoMemoryForAHoleThatNoFlashHas)
{
    EXPECT_EQ(problemOf(linear(0x0800) + row(0) + linear(0xFFFF) + row(0)),
              "line 3: its address is more than 16 MiB behind the first one");
    EXPECT_EQ(problemOf(segment(1) + row(0) + segment(0xFFFF) + row(0)).substr(0, 8), "line 2: ");
}

TEST(HexFile, NamesTheFirstOfSeveralProblems)
{
    EXPECT_THAT(problemOf(linear(0) + row(0) + linear(1) + row(0) + ":1\n"), StartsWith("line 4: "));
}

TEST(HexFile, ReportsThePositionOfTheImagesLastByte)
{
    const std::string text = linear(0x0800) + data(0, {1, 2, 0xA7}) + linear(0x0801) + kEndRecord;

    EXPECT_EQ(text.substr(checkHex(text).lastByteAt, 2), "A7");
}
