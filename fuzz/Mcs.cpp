// SPDX-License-Identifier: LicenseRef-HXAux
// Configurations of the FPGA: any text is refused or yields whole records, the same whatever is between them.
#include "upgrade/Mcs.h"

#include "fuzz/Require.h"

#include <cstdint>
#include <cstdio>
#include <string>

using namespace Halvix;

namespace {

eErr convert(const char* text, std::size_t size, std::vector<unsigned char>& image)
{
    MemorySource source{{text, size}};
    std::uint32_t before = 0;
    std::uint32_t wrongAt = 0;
    const eErr err = convertMcs(
        source, image,
        [&](std::uint32_t characters) {
            REQUIRE(characters > before && characters <= size);
            before = characters;
        },
        &wrongAt);
    REQUIRE(err == ERR_SUCCESS || wrongAt > before);
    return err;
}

std::string written(const std::vector<unsigned char>& image)
{
    std::string text = ":020000040000FA\n";
    for (std::size_t at = 0; at < image.size(); at += 16) {
        text += ":10000000";
        unsigned sum = 16;
        char digits[4];
        for (std::size_t i = at; i < at + 16; ++i) {
            std::snprintf(digits, sizeof digits, "%02X", image[i]);
            text += digits;
            sum += image[i];
        }
        std::snprintf(digits, sizeof digits, "%02X\n", (0U - sum) & 0xFF);
        text += digits;
    }
    return text + ":00000001FF\n";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<unsigned char> image;
    const eErr err = convert(reinterpret_cast<const char*>(data), size, image);
    REQUIRE(err == ERR_SUCCESS || (err == ERR_CHECKSUM && image.empty()));
    REQUIRE(image.size() % 16 == 0);
    const std::string text = written(image);
    std::vector<unsigned char> again;
    REQUIRE(convert(text.data(), text.size(), again) == ERR_SUCCESS);
    REQUIRE(again == image);
    return 0;
}
