// SPDX-License-Identifier: LicenseRef-HXAux
// How fast firmware files are read, in MB of text a second, against the common tools reading the same file. The tools'
// time is that of their whole process, less that of one that does nothing.
//
//   hx-bench-parsers [--check]    with --check: status 1 when objcopy is faster
#include "testing/FirmwareTexts.h"
#include "upgrade/FileSource.h"
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

void readHex(ByteSource& source)
{
    HexImage image;
    image.limit = kImage;
    require(parseIntelHex(source, image, [](std::uint32_t) {}) == HexResult::Complete, "reading HEX");
}

void readMcs(ByteSource& source)
{
    std::vector<unsigned char> image;
    std::uint32_t wrongAt = 0;
    require(convertMcs(
                source, image, [](std::uint32_t) {}, &wrongAt) == ERR_SUCCESS,
            "reading MCS");
}

double show(const std::string& name, const std::string& text, double seconds)
{
    const double speed = static_cast<double>(text.size()) / 1e6 / seconds;
    std::printf("  %-28s %10.1f MB/s\n", name.c_str(), speed);
    return speed;
}

/// Whether the library is at least as fast as objcopy.
bool compare(const std::string& kind, const std::string& text, void (*read)(ByteSource&))
{
    char name[] = "/tmp/hx-bench.XXXXXX";
    const int file = mkstemp(name);
    require(file >= 0, "a temporary file");
    std::ofstream{name} << text;
    const std::string path = name;

    const double library = show(kind + ", library", text, medianSeconds([&] {
                                    const File opened{name};
                                    BufferedSource source{opened};
                                    read(source);
                                }));
    const double nothing = medianSeconds([] { shell("/bin/true"); });
    const auto tool = [&](const char* program, const std::string& command) {
        return show(kind + ", " + program, text, medianSeconds([&] { shell(command); }) - nothing);
    };
    const double objcopy = tool("objcopy", "objcopy -I ihex -O binary " + path + " " + path + ".bin");
    tool("srec_cat", "srec_cat " + path + " -intel -o " + path + ".bin -binary");
    std::remove((path + ".bin").c_str());
    std::remove(name);
    return library >= objcopy;
}

} // namespace

int main(int count, char** arguments)
{
    const firmware::Bytes image = firmware::pattern(kImage);
    const bool hex = compare("HEX", firmware::intelHex(image, 0), readHex);
    const bool mcs = compare("MCS", firmware::mcs(image), readMcs);
    const bool checks = count > 1 && std::string{arguments[1]} == "--check";
    return checks && !(hex && mcs) ? 1 : 0;
}
