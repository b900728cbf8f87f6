// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/Mcs.h"

#include "testing/FirmwareTexts.h"

#include <gmock/gmock.h>

using namespace Halvix;
using firmware::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Converted {
    eErr result;
    Bytes image;
    std::vector<std::uint32_t> progress;
    std::uint32_t wrongAt;
};

Converted convert(const std::string& text)
{
    MemorySource source{text};
    Converted converted{};
    converted.result = convertMcs(
        source, converted.image, [&](std::uint32_t characters) { converted.progress.push_back(characters); },
        &converted.wrongAt);
    return converted;
}

const std::string kFull = firmware::data(0, firmware::pattern(16));

} // namespace

TEST(Mcs, TakesTheDataOfFullRecords)
{
    const Bytes image = firmware::pattern(0x10020);

    const Converted converted = convert(firmware::mcs(image));

    EXPECT_EQ(converted.result, ERR_SUCCESS);
    EXPECT_EQ(converted.image, image);
}

TEST(Mcs, IgnoresShortRecordsUncheckedIncludingTheirData)
{
    const Converted converted = convert(firmware::data(0, firmware::pattern(8)) + ":080000000000000000000000ZZ\n");

    EXPECT_EQ(converted.result, ERR_SUCCESS);
    EXPECT_THAT(converted.image, IsEmpty());
    EXPECT_THAT(converted.progress, IsEmpty());
}

TEST(Mcs, IgnoresLengthAddressAndTypeOfARecord)
{
    const Converted converted = convert(firmware::record(7, 0x1230, firmware::pattern(16)));

    EXPECT_EQ(converted.image, firmware::pattern(16));
}

TEST(Mcs, EmptiesTheImageWhenAChecksumIsWrong)
{
    std::string wrong = kFull;
    wrong[wrong.size() - 2] = wrong[wrong.size() - 2] == '0' ? '1' : '0';

    const Converted converted = convert(kFull + wrong);

    EXPECT_EQ(converted.result, ERR_CHECKSUM);
    EXPECT_THAT(converted.image, IsEmpty());
    EXPECT_THAT(converted.progress, ElementsAre(42));
    EXPECT_EQ(converted.wrongAt, 84U) << "the wrong line counts as well";
}

TEST(Mcs, CountsOneCharacterLessThanALineHas)
{
    const Converted converted = convert("\n" + kFull + ":00\n" + kFull);

    EXPECT_THAT(converted.progress, ElementsAre(42, 42 + 2 + 42)) << "an empty line counts nothing";
}

TEST(Mcs, CountsACarriageReturnAsPartOfItsLine)
{
    const Converted converted = convert(kFull.substr(0, kFull.size() - 1) + "\r\n");

    EXPECT_EQ(converted.result, ERR_SUCCESS);
    EXPECT_THAT(converted.progress, ElementsAre(43));
}

TEST(Mcs, ReadsALastLineWithoutALineEnd)
{
    EXPECT_EQ(convert(kFull.substr(0, kFull.size() - 1)).image.size(), 16U);
}

TEST(Mcs, TakesARecordOf15BytesThatIsAsLongAsAFullOne)
{
    const Converted converted = convert(firmware::data(0, firmware::pattern(15)));

    ASSERT_EQ(converted.result, ERR_SUCCESS) << "its bytes sum to zero, and the missing checksum reads as zero";
    ASSERT_EQ(converted.image.size(), 16U) << "its checksum counts as the sixteenth byte";
    EXPECT_EQ(Bytes(converted.image.begin(), converted.image.end() - 1), firmware::pattern(15));
}

TEST(Mcs, ReadsHalfAChecksumOnALineOf42Characters)
{
    std::string line = ":10000000";
    for (int i = 0; i < 15; ++i)
        line += "00";
    // 10 + EE + 02 is zero.
    EXPECT_EQ(convert(line + "EE" + "2\n").result, ERR_SUCCESS);
    EXPECT_EQ(convert(line + "EE" + "3\n").result, ERR_CHECKSUM);
}

TEST(Mcs, CountsANonNumberAsZero)
{
    std::string line = ":10000000";
    for (int i = 0; i < 16; ++i)
        line += "zz";

    const Converted converted = convert(line + "F0\n");

    EXPECT_EQ(converted.result, ERR_SUCCESS);
    EXPECT_EQ(converted.image, Bytes(16, 0));
}

TEST(Mcs, TakesALongLineInPiecesOf254Characters)
{
    const std::string full = kFull.substr(0, kFull.size() - 1);

    const Converted converted = convert(full + std::string(254 - full.size(), ' ') + full + "\n");

    EXPECT_EQ(converted.result, ERR_SUCCESS);
    EXPECT_EQ(converted.image.size(), 32U);
    EXPECT_THAT(converted.progress, ElementsAre(253, 253 + 42));
}

TEST(Mcs, OfAnEmptyFileIsAnEmptyImage)
{
    EXPECT_EQ(convert("").result, ERR_SUCCESS);
    EXPECT_THAT(convert("").image, IsEmpty());
}
