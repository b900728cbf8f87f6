// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/Mcs.h"

#include "upgrade/HexField.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace Halvix {

namespace {

constexpr std::size_t kLongestLine = 254;
constexpr std::size_t kFullRecord = 41; ///< characters before the checksum of a record with 16 data bytes
constexpr std::size_t kFirstData = 9;

struct Line {
    std::array<char, kLongestLine> text;
    std::size_t length = 0;
};

/// False at the end of the file. A longer line is returned in pieces.
bool readLine(Characters& file, Line& line)
{
    line.length = 0;
    char character = '\0';
    bool any = false;
    while (file.next(character)) {
        any = true;
        if (character == '\n')
            return true;
        line.text[line.length++] = character;
        if (line.length == kLongestLine)
            return true;
    }
    return any;
}

/// Not validated: anything that is not a number counts as 0, and a sign is accepted.
unsigned char byteOf(char first, char second)
{
    unsigned char byte = 0;
    return hexfield::byte({first, second}, byte) ? byte : 0;
}

/// Of a line of 41 or 42 characters it is read beyond the line's end, as zero characters.
unsigned char checksumOf(const Line& line)
{
    const auto at = [&](std::size_t i) { return i < line.length ? line.text[i] : '\0'; };
    return byteOf(at(kFullRecord), at(kFullRecord + 1));
}

bool appendRecord(const Line& line, std::vector<unsigned char>& image)
{
    std::array<unsigned char, kFullRecord / 2> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = byteOf(line.text[2 * i + 1], line.text[2 * i + 2]);
    const auto sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
    image.insert(image.end(), bytes.begin() + kFirstData / 2, bytes.end());
    return static_cast<unsigned char>(sum + checksumOf(line)) == 0;
}

} // namespace

eErr convertMcs(ByteSource& file, std::vector<unsigned char>& image, const McsProgress& progress,
                std::uint32_t* wrongAt)
{
    std::uint32_t charactersRead = 0;
    Characters characters{file};
    for (Line line; readLine(characters, line);) {
        charactersRead += static_cast<std::uint32_t>(line.length - std::min<std::size_t>(line.length, 1));
        if (line.length < kFullRecord)
            continue;
        if (!appendRecord(line, image)) {
            image.clear();
            *wrongAt = charactersRead;
            return ERR_CHECKSUM;
        }
        progress(charactersRead);
    }
    return ERR_SUCCESS;
}

} // namespace Halvix
