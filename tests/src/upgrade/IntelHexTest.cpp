// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/IntelHex.h"

#include "testing/FirmwareTexts.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

namespace intel_hex_test {

using namespace Halvix;
using firmware::Bytes;
using testing::Each;
using testing::ElementsAre;

namespace {

struct Parsed {
    HexResult result;
    Bytes image;
    std::uint32_t base;
    std::vector<std::uint32_t> progress;
};

Parsed parse(const std::string& text, std::uint64_t limit = UINT32_MAX)
{
    HexImage image;
    image.limit = limit;
    MemorySource source{text};
    Parsed parsed{};
    parsed.result =
        parseIntelHex(source, image, [&](std::uint32_t characters) { parsed.progress.push_back(characters); });
    parsed.image.assign(image.data.get(), image.data.get() + image.size);
    parsed.base = image.base;
    return parsed;
}

const std::string kEnd{firmware::kEnd};
const std::string kFlash = firmware::linear(0x0800);

} // namespace

TEST(IntelHex, PutsTheDataRecordsInSequence)
{
    const Parsed parsed = parse(kFlash + firmware::data(0, {1, 2, 3}) + firmware::data(3, {4, 5}) + kEnd);

    EXPECT_EQ(parsed.result, HexResult::Complete);
    EXPECT_THAT(parsed.image, ElementsAre(1, 2, 3, 4, 5));
}

TEST(IntelHex, ReadsLowerCaseAndAnyLineEnds)
{
    const Parsed parsed = parse("\r\n\n:020000040800f2\r\n:01000000ab54\r\r\n:00000001ff");

    EXPECT_EQ(parsed.result, HexResult::Complete);
    EXPECT_THAT(parsed.image, ElementsAre(0xAB));
}

TEST(IntelHex, DoesNotReadAfterTheEndRecord)
{
    const Parsed parsed = parse(firmware::data(0, {1}) + kEnd + "this is not HEX");

    EXPECT_EQ(parsed.result, HexResult::Complete);
}

TEST(IntelHex, FillsAHoleWithZeroBytesAndNotWithErasedOnes)
{
    const Parsed parsed = parse(kFlash + firmware::data(0, {0xAA}) + firmware::data(4, {0xBB}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(0xAA, 0, 0, 0, 0xBB));
}

TEST(IntelHex, FillsUpToTheOffsetOfTheFirstRecord)
{
    const Parsed parsed = parse(kFlash + firmware::data(2, {0xAA}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(0, 0, 0xAA));
}

TEST(IntelHex, PlacesTheNextSegmentAtItsDistanceFromTheFirst)
{
    const Parsed parsed =
        parse(":020000040800F2\n" + firmware::data(0, {0xAA}) + ":020000040801F1\n" + firmware::data(0, {0xBB}) + kEnd);

    ASSERT_EQ(parsed.image.size(), 0x10001U);
    EXPECT_EQ(parsed.image[0], 0xAA);
    EXPECT_THAT(Bytes(parsed.image.begin() + 1, parsed.image.begin() + 0x10000), Each(0));
    EXPECT_EQ(parsed.image[0x10000], 0xBB);
    EXPECT_EQ(parsed.base, 0x0800U);
}

TEST(IntelHex, ContinuesAfterAFullSegment)
{
    Bytes full = firmware::pattern(0x10000);
    std::string text = firmware::intelHex(full);
    text.resize(text.size() - kEnd.size());

    const Parsed parsed = parse(text + firmware::linear(0x0801) + firmware::data(0, {0xBB}) + kEnd);

    full.push_back(0xBB);
    EXPECT_EQ(parsed.image, full);
}

TEST(IntelHex, TakesDataAtOffsetZeroAgainWhenASegmentIsFull)
{
    std::string text = kFlash;
    for (unsigned offset = 0; offset < 0x10000; offset += 128)
        text += firmware::data(static_cast<std::uint16_t>(offset), firmware::pattern(128));

    const Parsed parsed = parse(text + firmware::data(0, {0xBB}) + kEnd);

    EXPECT_EQ(parsed.result, HexResult::Complete);
    EXPECT_EQ(parsed.image.size(), 0x10001U);
}

TEST(IntelHex, RefusesALinearAddressBelowTheFirst)
{
    const Parsed parsed = parse(firmware::linear(0x0801) + firmware::data(0, {1}) + firmware::linear(0x0800) + kEnd);

    EXPECT_EQ(parsed.result, HexResult::WrongSyntax);
}

TEST(IntelHex, AppendsTheDataOfARepeatedLinearAddress)
{
    const Parsed parsed = parse(kFlash + firmware::data(0, {1, 2}) + kFlash + firmware::data(0, {3}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(1, 2, 3));
}

TEST(IntelHex, TakesTheFirstAddressThatIsNotZeroAsItsBase)
{
    const Parsed parsed =
        parse(firmware::linear(0) + firmware::data(0, {1}) + firmware::linear(3) + firmware::data(0, {2}) + kEnd);

    EXPECT_EQ(parsed.base, 3U);
    EXPECT_THAT(parsed.image, ElementsAre(1, 2)) << "no padding up to the first address that counts";
}

TEST(IntelHex, SetsTheSegmentEndFromTheOffsetOfALinearRecord)
{
    const Parsed parsed = parse(firmware::record(4, 0x0010, {8, 0}) + firmware::data(0x0012, {0xAA}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(0, 0, 0xAA));
    EXPECT_EQ(parsed.base, 0x00100800U);
}

// Segment records are handled differently from what Intel HEX asks for; callers rely on the results.

TEST(IntelHex, KeepsTheSegmentEndAcrossASegmentRecord)
{
    const Parsed parsed = parse(firmware::segment(0x1000) + firmware::data(0, {1, 2}) + firmware::segment(0x1000) +
                                firmware::data(2, {3}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(1, 2, 3));
    EXPECT_EQ(parsed.base, 0x10000U);
}

TEST(IntelHex, TakesTheDistanceOfTwoSegmentRecordsTimes64KiB)
{
    const Parsed parsed = parse(firmware::segment(0x1000) + firmware::data(0, {1}) + firmware::segment(0x1001) + kEnd);

    EXPECT_EQ(parsed.image.size(), 0x100000U);
}

TEST(IntelHex, SeesNoDistanceBetweenSegmentRecords64KiBApart)
{
    const Parsed parsed = parse(firmware::segment(0x1000) + firmware::data(0, {1}) + firmware::segment(0x2000) + kEnd);

    EXPECT_EQ(parsed.image.size(), 1U);
}

TEST(IntelHex, RefusesDataBelowTheEndOfItsSegment)
{
    const Parsed parsed = parse(kFlash + firmware::data(4, {1, 2}) + firmware::data(0, {3}) + kEnd);

    EXPECT_EQ(parsed.result, HexResult::WrongSyntax);
}

TEST(IntelHex, RefusesDataThatOverlaps)
{
    const Parsed parsed = parse(kFlash + firmware::data(0, {1, 2}) + firmware::data(1, {3}) + kEnd);

    EXPECT_EQ(parsed.result, HexResult::WrongSyntax);
}

TEST(IntelHex, FillsUpToADataRecordWithoutData)
{
    const Parsed parsed = parse(kFlash + firmware::data(3, {}) + firmware::data(3, {9}) + kEnd);

    EXPECT_THAT(parsed.image, ElementsAre(0, 0, 0, 9));
}

TEST(IntelHex, ChecksAStartRecordAndIgnoresIt)
{
    const std::string start = firmware::record(5, 0, {0x08, 0, 0x01, 0x01});
    std::string wrong = start;
    wrong[wrong.size() - 2] ^= 1;

    const Parsed parsed = parse(firmware::data(0, {1}) + start + kEnd);

    EXPECT_EQ(parsed.result, HexResult::Complete);
    EXPECT_THAT(parsed.image, ElementsAre(1));
    EXPECT_EQ(parse(firmware::data(0, {1}) + wrong + kEnd).result, HexResult::WrongChecksum);
}

TEST(IntelHex, RefusesARecordWhoseChecksumIsOffByOne)
{
    EXPECT_EQ(parse(":01000000AB54\n" + kEnd).result, HexResult::Complete);
    EXPECT_EQ(parse(":01000000AB55\n" + kEnd).result, HexResult::WrongChecksum);
    EXPECT_EQ(parse(":01000000AB53\n" + kEnd).result, HexResult::WrongChecksum);
}

TEST(IntelHex, ChecksTheEndRecordToo)
{
    EXPECT_EQ(parse(":00000001FE\n").result, HexResult::WrongChecksum);
}

TEST(IntelHex, RefusesARecordThatDoesNotBeginWithAColon)
{
    EXPECT_EQ(parse("\r\n01000000AB54\n" + kEnd).result, HexResult::WrongSyntax);
    EXPECT_EQ(parse(" :01000000AB54\n" + kEnd).result, HexResult::WrongSyntax);
}

TEST(IntelHex, MissesTheEndRecord)
{
    EXPECT_EQ(parse("").result, HexResult::EndRecordMissing);
    EXPECT_EQ(parse(firmware::data(0, {1})).result, HexResult::EndRecordMissing);
}

TEST(IntelHex, RefusesARecordThatIsCutShort)
{
    const std::string whole = ":01000000AB54";
    for (std::size_t length = 1; length < whole.size(); ++length)
        EXPECT_EQ(parse(whole.substr(0, length)).result, HexResult::WrongSyntax) << length;
}

TEST(IntelHex, DoesNotUseAHeadThatIsCutShort)
{
    const std::string head = ":01FFFF00"; // complete, it needs 64 KiB
    for (std::size_t length = 1; length < head.size(); ++length) {
        const Parsed parsed = parse(":01000000AB54\n" + head.substr(0, length), 1);

        EXPECT_EQ(parsed.result, HexResult::WrongSyntax) << length;
        EXPECT_THAT(parsed.image, ElementsAre(0xAB)) << length;
    }
}

TEST(IntelHex, RefusesFieldsThatAreNotNumbers)
{
    EXPECT_EQ(parse(":zz000000AB54\n").result, HexResult::WrongSyntax);
    EXPECT_EQ(parse(":01zzzz00AB54\n").result, HexResult::WrongSyntax);
    EXPECT_EQ(parse(":01000000zz54\n").result, HexResult::WrongSyntax);
    EXPECT_EQ(parse(":01000000ABzz\n").result, HexResult::WrongSyntax);
}

TEST(IntelHex, ReadsOneDigitAndALetterAsThatDigit)
{
    EXPECT_THAT(parse(":010000001GFE\n" + kEnd).image, ElementsAre(1));
}

TEST(IntelHex, CountsEveryCharacterThatItTook)
{
    const Parsed parsed = parse("\n" + kFlash + firmware::data(0, {1}) + kEnd);

    EXPECT_THAT(parsed.progress, ElementsAre(1 + 15, 1 + 15 + 1 + 13)) << "the end record is not reported";
}

TEST(IntelHex, IsOutOfMemoryWhenTheImageCannotGrow)
{
    EXPECT_EQ(parse(kFlash + firmware::data(0, {1, 2}) + kEnd, 1).result, HexResult::OutOfMemory);
    EXPECT_EQ(parse(kFlash + firmware::data(0, {1}) + firmware::linear(0x0801) + kEnd, 0xFFFF).result,
              HexResult::OutOfMemory);
}

TEST(IntelHex, MapsToTheCodesOfTheOperations)
{
    EXPECT_EQ(errorOf(HexResult::Complete), ERR_SUCCESS);
    EXPECT_EQ(errorOf(HexResult::WrongSyntax), ERR_INVALID_DATA);
    EXPECT_EQ(errorOf(HexResult::EndRecordMissing), ERR_INVALID_DATA);
    EXPECT_EQ(errorOf(HexResult::WrongChecksum), ERR_CHECKSUM);
    EXPECT_EQ(errorOf(HexResult::OutOfMemory), ERR_INIT_FAILED);
}

TEST(HexImage, KeepsItsBytesWhenItHasToMove)
{
    // Two images that grow in turn block each other.
    HexImage images[2];
    for (std::uint32_t size = 1U << 20; size <= 16U << 20; size *= 2)
        for (HexImage& image : images) {
            ASSERT_TRUE(image.grow(size - image.size));
            image.data[size - 1] = 7;
            EXPECT_EQ(image.data[(size / 2) - 1], size == 1U << 20 ? 0 : 7);
        }
}

TEST(HexImage, ReleasesItsMemory)
{
    // Together more than the address space of a process.
    constexpr std::uint64_t kSize = sizeof(void*) == 4 ? 1U << 28 : UINT32_MAX;
    for (int i = 0; i < 50000; ++i) {
        HexImage image;
        ASSERT_TRUE(image.grow(kSize)) << i;
    }
}

TEST(HexImage, HandsOutItsBytesPieceByPiece)
{
    HexImage image;
    ASSERT_TRUE(image.grow(5));
    image.data[4] = 9;

    std::uint8_t piece[4] = {};

    EXPECT_EQ(image.read(piece, 4), 4U);
    EXPECT_EQ(image.read(piece, 4), 1U);
    EXPECT_EQ(piece[0], 9);
    EXPECT_EQ(image.read(piece, 4), 0U);
}

namespace {

/// Increase of the peak memory of this process by a parse, in KiB.
long memoryFor(const std::string& text, HexResult expected)
{
    const auto peak = [] {
        rusage usage{};
        EXPECT_EQ(::getrusage(RUSAGE_SELF, &usage), 0);
        return usage.ru_maxrss;
    };
    const long before = peak();
    HexImage image;
    MemorySource source{text};
    EXPECT_EQ(parseIntelHex(source, image, [](std::uint32_t) {}), expected);
    return peak() - before;
}

constexpr long k16MiB = 16L * 1024;

} // namespace

TEST(HexImage, TakesUpNoMemoryForAHoleOfFourGigabytes)
{
    // More than the address space of a 32-bit process.
    const HexResult expected = sizeof(void*) == 4 ? HexResult::OutOfMemory : HexResult::Complete;
    const std::string text = kFlash + firmware::data(0, {1}) + firmware::linear(0xFFFF) + firmware::data(0, {2}) + kEnd;

    EXPECT_LT(memoryFor(text, expected), k16MiB);
}

TEST(HexImage, TakesUpAPageForEachOfManyLonelyBytes)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer keeps a copy of its own of what is written";
#endif
    std::string text = kFlash;
    for (unsigned segment = 0x0801; text.size() < 103000; ++segment)
        text += firmware::linear(static_cast<std::uint16_t>(segment)) + firmware::data(0, {1});

    EXPECT_LT(memoryFor(text + kEnd, HexResult::Complete), k16MiB);
}

} // namespace intel_hex_test
