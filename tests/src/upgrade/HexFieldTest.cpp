// SPDX-License-Identifier: LicenseRef-HXAux
// Fields of firmware files against the C library's functions, whose answers firmware tools rely on.
#include "upgrade/HexField.h"

#include "testing/FirmwareTexts.h"
#include "upgrade/HexImage.h"
#include "upgrade/IntelHex.h"
#include "upgrade/Mcs.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>

using namespace Halvix;
using namespace std::string_view_literals;

namespace {

struct Byte {
    bool isNumber;
    unsigned char value;

    bool operator==(const Byte&) const = default;
};

using Head = std::array<unsigned, 4>; // how many fields are numbers; then those

Byte byteByScanf(const std::string& text)
{
    unsigned value = 0;
    const bool isNumber = std::sscanf(text.c_str(), "%2x", &value) == 1;
    return {isNumber, static_cast<unsigned char>(isNumber ? value : 0)};
}

Byte readByte(char first, char second)
{
    unsigned char value = 0;
    const bool isNumber = hexfield::byte({first, second}, value);
    return {isNumber, value};
}

Head headByScanf(const std::string& text)
{
    Head head{};
    const int count = std::sscanf(text.c_str(), "%2x%4x%2x", &head[1], &head[2], &head[3]);
    head[0] = static_cast<unsigned>(std::max(count, 0));
    return head;
}

Head readHead(std::string_view text)
{
    Head head{};
    for (const unsigned width : {2U, 4U, 2U}) {
        if (!hexfield::scan(text, width, head[head[0] + 1])) {
            head[head[0] + 1] = 0;
            break;
        }
        ++head[0];
    }
    return head;
}

/// Any character, but mostly one that has a meaning in a number.
char anyCharacter(std::mt19937& random)
{
    static constexpr std::string_view kLikely = "00123456789abcdefABCDEFxX+- \t\n\v\f\r\0gGz:"sv;
    return random() % 8 != 0 ? kLikely[random() % kLikely.size()] : static_cast<char>(random());
}

/// A file in pieces of few characters.
class Pieces final : public ByteSource {
public:
    Pieces(const std::string& text, std::mt19937& random) : text_{text}, random_{random} {}
    [[nodiscard]] std::span<const char> more() override
    {
        const std::size_t from = position_;
        position_ = std::min<std::size_t>(text_.size(), from + 1 + random_() % 9);
        return {text_.data() + from, position_ - from};
    }

private:
    const std::string& text_;
    std::mt19937& random_;
    std::size_t position_ = 0;
};

std::string damaged(std::string text, std::mt19937& random)
{
    for (auto i = random() % 3; i != 0; --i)
        text[random() % text.size()] = anyCharacter(random);
    return text;
}

} // namespace

TEST(HexByte, OfAnyTwoCharactersIsTheOneThatScanfReads)
{
    for (unsigned i = 0; i < 0x10000; ++i) {
        const auto first = static_cast<char>(i >> 8);
        const auto second = static_cast<char>(i);

        ASSERT_EQ(readByte(first, second), byteByScanf({first, second})) << std::hex << i;
    }
}

TEST(HexByte, OfAnyTwoCharactersIsTheOneThatStrtolReads)
{
    for (unsigned i = 0; i < 0x10000; ++i) {
        const char text[] = {static_cast<char>(i >> 8), static_cast<char>(i), '\0'};

        ASSERT_EQ(readByte(text[0], text[1]).value, static_cast<unsigned char>(std::strtol(text, nullptr, 16)))
            << std::hex << i;
    }
}

TEST(HexHead, OfAnyOrderOfSpecialCharactersIsTheOneThatScanfReads)
{
    constexpr std::string_view kSpecial = "0x- 5G";
    for (unsigned number = 0; number < 6 * 6 * 6 * 6 * 6 * 6 * 6 * 6; ++number) {
        std::string text;
        for (unsigned rest = number; text.size() < 8; rest /= 6)
            text += kSpecial[rest % 6];

        ASSERT_EQ(readHead(text), headByScanf(text)) << testing::PrintToString(text);
    }
}

TEST(HexHead, OfRandomCharactersIsTheOneThatScanfReads)
{
    std::mt19937 random{22}; // NOLINT(cert-msc51-cpp): the same texts in every run
    for (int i = 0; i < 500000; ++i) {
        std::string text(8, ' ');
        for (char& character : text)
            character = anyCharacter(random);

        ASSERT_EQ(readHead(text), headByScanf(text)) << testing::PrintToString(text);
    }
}

TEST(IntelHex, GivesTheSameImageOfAFileInPieces)
{
    std::mt19937 random{23}; // NOLINT(cert-msc51-cpp): the same files in every run
    const std::string good = firmware::intelHex(firmware::pattern(0x200));
    for (int i = 0; i < 2000; ++i) {
        const std::string text = damaged(good, random);
        const auto parse = [](ByteSource&& source, HexImage& image, std::uint32_t& read) {
            return parseIntelHex(source, image, [&](std::uint32_t characters) { read = characters; });
        };
        HexImage whole;
        HexImage image;
        std::uint32_t wholeRead = 0;
        std::uint32_t read = 0;

        const HexResult expected = parse(MemorySource{text}, whole, wholeRead);

        ASSERT_EQ(parse(Pieces{text, random}, image, read), expected) << text;
        ASSERT_EQ(read, wholeRead) << text;
        ASSERT_TRUE(std::equal(image.data.get(), image.data.get() + image.size, whole.data.get(),
                               whole.data.get() + whole.size))
            << text;
    }
}

TEST(Mcs, GivesTheSameImageOfAFileInPieces)
{
    std::mt19937 random{24}; // NOLINT(cert-msc51-cpp): the same files in every run
    const std::string good = firmware::mcs(firmware::pattern(0x200));
    for (int i = 0; i < 2000; ++i) {
        const std::string text = damaged(good, random);
        const auto convert = [](ByteSource&& source, std::vector<unsigned char>& image) {
            std::uint32_t wrongAt = 0;
            const eErr err = convertMcs(
                source, image, [](std::uint32_t) {}, &wrongAt);
            return std::pair{err, wrongAt};
        };
        std::vector<unsigned char> whole;
        std::vector<unsigned char> image;

        const auto expected = convert(MemorySource{text}, whole);

        ASSERT_EQ(convert(Pieces{text, random}, image), expected) << text;
        ASSERT_EQ(image, whole) << text;
    }
}
