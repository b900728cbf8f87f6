// SPDX-License-Identifier: LicenseRef-HXAux
// Firmware of the microcontrollers: any text is refused or yields an image that survives writing and parsing again.
#include "upgrade/IntelHex.h"

#include "fuzz/Require.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

using namespace Halvix;

namespace {

// No microcontroller has more; files of gigabytes would only slow the fuzzer down.
constexpr std::uint64_t kLargest = 1U << 20;

HexResult parse(const char* text, std::size_t size, HexImage& image)
{
    image.limit = kLargest;
    MemorySource source{{text, size}};
    std::uint32_t before = 0;
    return parseIntelHex(source, image, [&](std::uint32_t characters) {
        REQUIRE(characters > before && characters <= size);
        before = characters;
    });
}

void append(std::string& text, std::uint8_t type, std::uint32_t offset, const unsigned char* bytes, unsigned count)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, ":%02X%04X%02X", count, offset & 0xFFFF, type);
    text += digits;
    unsigned sum = count + (offset >> 8 & 0xFF) + (offset & 0xFF) + type;
    for (unsigned i = 0; i < count; ++i) {
        std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
        text += digits;
        sum += bytes[i];
    }
    std::snprintf(digits, sizeof digits, "%02X\n", (0U - sum) & 0xFF);
    text += digits;
}

std::string written(const HexImage& image)
{
    std::string text;
    for (std::uint32_t at = 0; at < image.size; at += 128) {
        if (at % 0x10000 == 0) {
            const unsigned char high[] = {0x08, static_cast<unsigned char>(at >> 16)};
            append(text, 4, 0, high, 2);
        }
        append(text, 0, at, image.data.get() + at, std::min<std::uint32_t>(128, image.size - at));
    }
    append(text, 1, 0, nullptr, 0);
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    HexImage image;
    const HexResult result = parse(reinterpret_cast<const char*>(data), size, image);
    REQUIRE(image.size <= kLargest && image.position == 0);
    if (result != HexResult::Complete || image.size > 4096)
        return 0;
    const std::string text = written(image);
    HexImage again;
    REQUIRE(parse(text.data(), text.size(), again) == HexResult::Complete);
    REQUIRE(again.size == image.size);
    REQUIRE(image.size == 0 || std::memcmp(again.data.get(), image.data.get(), image.size) == 0);
    return 0;
}
