// SPDX-License-Identifier: LicenseRef-HXAux
// How fast firmware files are read, in MB of text a second, against the common tools reading the same file. The tools'
// time is that of their whole process, less that of one that does nothing.
#include "testing/FirmwareTexts.h"
#include "upgrade/IntelHex.h"
#include "upgrade/Mcs.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace Halvix;

namespace {

constexpr std::size_t kImage = 4 * 1024 * 1024;

double medianSeconds(const std::function<void()>& action)
{
    std::vector<double> seconds(9);
    for (double& second : seconds) {
        const auto start = std::chrono::steady_clock::now();
        action();
        second = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    std::sort(seconds.begin(), seconds.end());
    return seconds[seconds.size() / 2];
}

void require(bool good, const char* what)
{
    if (!good) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(2);
    }
}

void shell(const std::string& command)
{
    require(std::system((command + " >/dev/null 2>&1").c_str()) == 0, command.c_str());
}

void readHex(const std::string& text)
{
    HexImage image;
    image.limit = kImage;
    MemorySource source{text};
    require(parseIntelHex(source, image, [](std::uint32_t) {}) == HexResult::Complete, "reading HEX");
}

void readMcs(const std::string& text)
{
    std::vector<unsigned char> image;
    MemorySource source{text};
    std::uint32_t wrongAt = 0;
    require(convertMcs(
                source, image, [](std::uint32_t) {}, &wrongAt) == ERR_SUCCESS,
            "reading MCS");
}

void show(const char* name, const std::string& text, double seconds)
{
    std::printf("  %-28s %10.1f MB/s\n", name, static_cast<double>(text.size()) / 1e6 / seconds);
}

void compare(const std::string& kind, const std::string& text, void (*read)(const std::string&))
{
    char name[] = "/tmp/hx-bench.XXXXXX";
    const int file = mkstemp(name);
    require(file >= 0, "a temporary file");
    std::ofstream{name} << text;
    const std::string path = name;

    show((kind + ", library").c_str(), text, medianSeconds([&] { read(text); }));
    const double nothing = medianSeconds([] { shell("/bin/true"); });
    show((kind + ", objcopy").c_str(), text,
         medianSeconds([&] { shell("objcopy -I ihex -O binary " + path + " " + path + ".bin"); }) - nothing);
    show((kind + ", srec_cat").c_str(), text,
         medianSeconds([&] { shell("srec_cat " + path + " -intel -o " + path + ".bin -binary"); }) - nothing);
    std::remove((path + ".bin").c_str());
    std::remove(name);
}

} // namespace

int main()
{
    const firmware::Bytes image = firmware::pattern(kImage);
    compare("HEX", firmware::intelHex(image, 0), readHex);
    compare("MCS", firmware::mcs(image), readMcs);
    return 0;
}
