// SPDX-License-Identifier: LicenseRef-HXAux
// A whole upgrade of 128 KiB in real time against what the wire needs:
//
//     hx-sim run -- hx-bench-upgrade [--check]
//
// With --check the status is 1 when it takes more than 1.02 times that.
#include "hx-aux/FirmwareUpgrade.h"
#include "tests/upgrade/FirmwareTexts.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

namespace {

constexpr int kBlocks = 512;
constexpr double kBytesPerBlock = 268;            // either way
constexpr double kSecondsPerByte = 11 / 115200.0; // start, eight data bits, parity, stop
constexpr double kWire = 2 * kBlocks * kBytesPerBlock * kSecondsPerByte;
constexpr double kErase = 0.040;   // what the simulated part takes for its whole flash
constexpr double kRouting = 0.200; // the library's pauses while the line is switched over

double secondsOfAnUpgrade(const char* path)
{
    Halvix::FirmwareUpgrade* upgrade = GetFirmwareUpgrade();
    const auto start = std::chrono::steady_clock::now();
    const Halvix::eErr err = upgrade->startSSUpgrade(path, true);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    upgrade->Release();
    return err == Halvix::ERR_SUCCESS ? seconds : -1;
}

} // namespace

int main(int count, char** words)
{
    char path[] = "/tmp/hx-bench.XXXXXX";
    if (mkstemp(path) < 0)
        return 2;
    std::ofstream{path} << firmware::intelHex(firmware::pattern(kBlocks * 256));
    const double seconds = secondsOfAnUpgrade(path);
    std::remove(path);
    if (seconds < 0) {
        std::fprintf(stderr, "the upgrade failed; is this a simulated unit?\n");
        return 2;
    }
    const double ratio = (seconds - kErase - kRouting) / kWire;
    std::printf("  %-28s %10.2f s\n  %-28s %10.2f s, %.3f times the wire's %.2f s\n", "upgrade of 128 KiB", seconds,
                "without erase and pauses", seconds - kErase - kRouting, ratio, kWire);
    return count > 1 && std::strcmp(words[1], "--check") == 0 && ratio > 1.02 ? 1 : 0;
}
