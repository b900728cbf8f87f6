// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/FirmwareTexts.h"

#include <algorithm>
#include <cstdio>

namespace firmware {

namespace {

std::string hex(unsigned value)
{
    char text[3];
    std::snprintf(text, sizeof text, "%02X", value & 0xFF);
    return text;
}

std::string records(const Bytes& image, std::uint32_t start)
{
    std::string text;
    for (std::size_t i = 0; i < image.size(); i += 16) {
        const auto address = static_cast<std::uint32_t>(start + i);
        if (i == 0 || address % 0x10000 == 0)
            text += linear(static_cast<std::uint16_t>(address >> 16));
        const auto first = image.begin() + static_cast<std::ptrdiff_t>(i);
        text += data(static_cast<std::uint16_t>(address),
                     {first, first + std::min<std::ptrdiff_t>(16, image.end() - first)});
    }
    return text;
}

} // namespace

std::string record(std::uint8_t type, std::uint16_t offset, const Bytes& data)
{
    Bytes all{static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(offset >> 8),
              static_cast<std::uint8_t>(offset), type};
    all.insert(all.end(), data.begin(), data.end());
    std::string text = ":";
    unsigned sum = 0;
    for (const std::uint8_t byte : all) {
        text += hex(byte);
        sum += byte;
    }
    return text + hex(0U - sum) + "\n";
}

std::string data(std::uint16_t offset, const Bytes& bytes)
{
    return record(0, offset, bytes);
}

std::string segment(std::uint16_t paragraph)
{
    return record(2, 0, {static_cast<std::uint8_t>(paragraph >> 8), static_cast<std::uint8_t>(paragraph)});
}

std::string linear(std::uint16_t high)
{
    return record(4, 0, {static_cast<std::uint8_t>(high >> 8), static_cast<std::uint8_t>(high)});
}

Bytes pattern(std::size_t size, unsigned seed)
{
    Bytes bytes(size);
    std::uint32_t state = seed * 2654435761U + 1;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

std::string intelHex(const Bytes& image, std::uint32_t start)
{
    return records(image, start) + std::string{kEnd};
}

std::string intelHexOfSize(std::size_t size, const Bytes& image)
{
    const std::string text = intelHex(image);
    return text + std::string(size - text.size(), '\n');
}

std::string filledUpTo(std::size_t size, char filler, std::string_view word)
{
    std::string text(size - word.size(), filler);
    text.append(word);
    return text;
}

std::string mcs(const Bytes& image)
{
    return records(image, 0) + std::string{kEnd};
}

} // namespace firmware
