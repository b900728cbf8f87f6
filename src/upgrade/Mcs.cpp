// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/Mcs.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace Halvix {

namespace {

constexpr std::size_t kLongestLine = 254;
constexpr std::size_t kFullRecord = 41; ///< characters before the checksum of a record with 16 data bytes
constexpr std::size_t kFirstData = 9;

/// A line, followed by zero bytes: the checksum of a line of 41 or 42 characters reads them.
struct Line {
    std::array<char, kLongestLine + 2> text{};
    std::size_t length = 0;
};

/// False at the end of the file. A longer line is returned in pieces.
bool readLine(ByteSource& file, Line& line)
{
    line = Line{};
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
unsigned char byteAt(const Line& line, std::size_t index)
{
    const char pair[3] = {line.text[index], line.text[index + 1], '\0'};
    return static_cast<unsigned char>(std::strtol(pair, nullptr, 16));
}

bool appendRecord(const Line& line, std::vector<unsigned char>& image)
{
    unsigned char sum = 0;
    for (std::size_t i = 1; i < kFullRecord; i += 2) {
        const unsigned char byte = byteAt(line, i);
        sum = static_cast<unsigned char>(sum + byte);
        if (i >= kFirstData)
            image.push_back(byte);
    }
    return static_cast<unsigned char>(sum + byteAt(line, kFullRecord)) == 0;
}

} // namespace

eErr convertMcs(ByteSource& file, std::vector<unsigned char>& image, const McsProgress& progress,
                std::uint32_t* wrongAt)
{
    std::uint32_t charactersRead = 0;
    for (Line line; readLine(file, line);) {
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
