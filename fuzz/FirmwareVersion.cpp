// SPDX-License-Identifier: LicenseRef-HXAux
// Version texts read from a file: every text yields four numbers below 256 or is refused.
#include "fuzz/Require.h"
#include "platform/LinuxWrapper.h"

#include <array>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using Halvix::LinuxWrapper;

namespace {

using Parts = std::array<int, 4>;

constexpr Parts kBefore{-1000, -1000, -1000, -1000};

bool parse(const std::uint8_t* data, std::size_t size, Parts& parts)
{
    static const int file = memfd_create("version", 0);
    REQUIRE(ftruncate(file, 0) == 0);
    REQUIRE(pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
    REQUIRE(lseek(file, 0, SEEK_SET) == 0);
    return LinuxWrapper::ParseFirmwareVersion(file, parts[0], parts[1], parts[2], parts[3]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Parts parts = kBefore;
    if (!parse(data, size, parts)) {
        REQUIRE(parts == kBefore);
        return 0;
    }
    for (const int part : parts)
        REQUIRE(part < 256);

    // The parsed version, written again, is parsed to the same numbers.
    std::string text;
    for (const int part : parts)
        text += (text.empty() ? "" : ".") + std::to_string(part);
    Parts again = kBefore;
    REQUIRE(parse(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), again));
    REQUIRE(again == parts);
    return 0;
}
