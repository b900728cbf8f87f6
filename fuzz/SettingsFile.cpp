// SPDX-License-Identifier: LicenseRef-HXAux
// Settings files of any content: reading, rewriting and reading again.
#include "fuzz/Require.h"
#include "settings/IniSettings.h"

#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using namespace Halvix;

namespace {

const int kFile = memfd_create("settings", 0);
const std::string kPath = "/proc/self/fd/" + std::to_string(kFile);

std::string content()
{
    std::string text(static_cast<std::size_t>(lseek(kFile, 0, SEEK_END)), '\0');
    REQUIRE(pread(kFile, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()));
    return text;
}

/// Sets a key in the current file and returns the new file.
std::string rewritten(const std::string& value)
{
    std::string trimmed = value;
    IniSettings::trim(trimmed);
    IniSettings settings;
    settings.load(kPath);
    settings.set("KEY", value);
    REQUIRE(settings.get("KEY") == trimmed);
    return content();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text{reinterpret_cast<const char*>(data), size};
    REQUIRE(ftruncate(kFile, 0) == 0);
    REQUIRE(pwrite(kFile, data, size, 0) == static_cast<ssize_t>(size));

    const std::string value = text.substr(0, text.find('\n'));
    (void)rewritten(value);
    const std::string second = rewritten("1"); // comments that the first write added are removed now
    REQUIRE(rewritten("1") == second);
    return 0;
}
