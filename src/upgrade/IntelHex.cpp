// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/IntelHex.h"

#include "upgrade/HexField.h"

#include <string_view>

namespace Halvix {

namespace {

enum RecordType : unsigned { kData = 0, kEndOfFile = 1, kSegmentAddress = 2, kLinearAddress = 4 };

struct RecordHead {
    unsigned char count;
    std::uint16_t offset;
    unsigned char type;
};

bool scanHead(std::string_view text, RecordHead& head)
{
    unsigned count = 0;
    unsigned offset = 0;
    unsigned type = 0;
    if (!hexfield::scan(text, 2, count) || !hexfield::scan(text, 4, offset) || !hexfield::scan(text, 2, type))
        return false;
    head = {static_cast<unsigned char>(count), static_cast<std::uint16_t>(offset), static_cast<unsigned char>(type)};
    return true;
}

class Parser {
public:
    Parser(ByteSource& file, HexImage& image) : characters_{file}, image_{image} {}

    /// One record, including the line ends before it.
    [[nodiscard]] HexResult record();
    [[nodiscard]] bool atEndRecord() const { return head_.type == kEndOfFile; }
    [[nodiscard]] std::uint32_t charactersRead() const { return charactersRead_; }

private:
    [[nodiscard]] bool nextCharacter(char& character);
    template <std::size_t size>
    [[nodiscard]] bool nextField(char (&text)[size]);
    [[nodiscard]] bool nextByte(unsigned char& byte);
    [[nodiscard]] HexResult findStart();
    [[nodiscard]] HexResult readHead();
    [[nodiscard]] HexResult makeRoom();
    [[nodiscard]] HexResult readData();
    [[nodiscard]] HexResult readChecksum();
    [[nodiscard]] HexResult moveToExtendedAddress();

    Characters characters_;
    HexImage& image_;
    std::uint32_t charactersRead_ = 0;
    RecordHead head_{};
    unsigned char checksum_ = 0;
    std::uint32_t extendedAddress_ = 0;
    std::uint16_t segmentEnd_ = 0; ///< where the image ends within the current 64 KiB segment
    std::uint32_t writePosition_ = 0;
};

bool Parser::nextCharacter(char& character)
{
    if (!characters_.next(character))
        return false;
    ++charactersRead_;
    return true;
}

template <std::size_t size>
bool Parser::nextField(char (&text)[size])
{
    for (char& character : text)
        if (!nextCharacter(character))
            return false;
    return true;
}

/// False when the file ends within the byte, or when it is not a number.
bool Parser::nextByte(unsigned char& byte)
{
    char text[2];
    return nextField(text) && hexfield::byte(text, byte);
}

HexResult Parser::findStart()
{
    char character = '\0';
    do {
        if (!nextCharacter(character))
            return HexResult::EndRecordMissing;
    } while (character == '\n' || character == '\r');
    return character == ':' ? HexResult::Complete : HexResult::WrongSyntax;
}

HexResult Parser::readHead()
{
    char text[8];
    if (!nextField(text) || !scanHead({text, sizeof text}, head_))
        return HexResult::WrongSyntax;
    checksum_ = static_cast<unsigned char>(head_.count + (head_.offset >> 8) + (head_.offset & 0xFF) + head_.type);
    return HexResult::Complete;
}

HexResult Parser::makeRoom()
{
    if (head_.type == kSegmentAddress)
        extendedAddress_ = 0;
    if (head_.type == kLinearAddress)
        extendedAddress_ = segmentEnd_ = head_.offset;
    if (head_.type != kData)
        return HexResult::Complete;

    if (head_.offset < segmentEnd_)
        return HexResult::WrongSyntax; // out of order or overlapping: the image can only grow
    const unsigned gap = static_cast<unsigned>(head_.offset) - segmentEnd_;
    if (!image_.grow(gap + head_.count))
        return HexResult::OutOfMemory;
    writePosition_ = image_.size - head_.count;
    segmentEnd_ = static_cast<std::uint16_t>(head_.offset + head_.count);
    return HexResult::Complete;
}

HexResult Parser::readData()
{
    for (unsigned i = 0; i < head_.count; ++i) {
        unsigned char byte = 0;
        if (!nextByte(byte))
            return HexResult::WrongSyntax;
        checksum_ = static_cast<unsigned char>(checksum_ + byte);
        if (head_.type == kSegmentAddress || head_.type == kLinearAddress)
            extendedAddress_ = (extendedAddress_ << 8) | byte;
        if (head_.type == kData)
            image_.data[writePosition_ + i] = byte;
    }
    return HexResult::Complete;
}

HexResult Parser::readChecksum()
{
    unsigned char byte = 0;
    if (!nextByte(byte))
        return HexResult::WrongSyntax;
    return static_cast<unsigned char>(checksum_ + byte) == 0 ? HexResult::Complete : HexResult::WrongChecksum;
}

HexResult Parser::moveToExtendedAddress()
{
    if (head_.type == kSegmentAddress)
        extendedAddress_ *= 16;
    if (head_.type != kSegmentAddress && head_.type != kLinearAddress)
        return HexResult::Complete;
    if (image_.base == 0) {
        image_.base = extendedAddress_;
        return HexResult::Complete;
    }
    if (image_.base > extendedAddress_)
        return HexResult::WrongSyntax;
    const std::uint32_t target = (extendedAddress_ - image_.base) << 16;
    if (image_.size < target && !image_.grow(target - image_.size))
        return HexResult::OutOfMemory;
    return HexResult::Complete;
}

HexResult Parser::record()
{
    constexpr HexResult (Parser::*kSteps[])() = {&Parser::findStart,    &Parser::readHead,
                                                 &Parser::makeRoom,     &Parser::readData,
                                                 &Parser::readChecksum, &Parser::moveToExtendedAddress};
    for (const auto step : kSteps)
        if (const HexResult result = (this->*step)(); result != HexResult::Complete)
            return result;
    return HexResult::Complete;
}

} // namespace

eErr errorOf(HexResult result)
{
    switch (result) {
    case HexResult::Complete:
        return ERR_SUCCESS;
    case HexResult::WrongChecksum:
        return ERR_CHECKSUM;
    case HexResult::OutOfMemory:
        return ERR_INIT_FAILED;
    default:
        return ERR_INVALID_DATA;
    }
}

HexResult parseIntelHex(ByteSource& file, HexImage& image, const CharactersRead& progress)
{
    Parser parser{file, image};
    for (;;) {
        if (const HexResult result = parser.record(); result != HexResult::Complete)
            return result;
        if (parser.atEndRecord())
            return HexResult::Complete;
        progress(parser.charactersRead());
    }
}

} // namespace Halvix
