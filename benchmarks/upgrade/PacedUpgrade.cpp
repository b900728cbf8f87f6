// SPDX-License-Identifier: LicenseRef-HXAux
// A whole upgrade of 128 KiB in real time, compared with the time on the wire:
//
//     hx-sim run -- hx-bench-upgrade [--check]
//
// The wire's time is measured in the same run, by waiting for it piece by piece, as often as the direction changes: a
// machine wakes up late from each. With --check the status is 1 when the upgrade takes more than 1.02 times that.
#include "hx-aux/FirmwareUpgrade.h"
#include "testing/FirmwareTexts.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

namespace {

constexpr int kBlocks = 512;
constexpr double kBytesPerBlock = 268;            // either way
constexpr double kSecondsPerByte = 11 / 115200.0; // start, eight data bits, parity, stop
constexpr double kWire = 2 * kBlocks * kBytesPerBlock * kSecondsPerByte;
constexpr double kErase = 0.040;   // the simulated part erases its whole flash
constexpr double kRouting = 0.200; // the library's pauses while the line is switched over

/// The time of the wire alone: command, address and data of each block, each answered, either way.
double bareSeconds()
{
    const auto start = std::chrono::steady_clock::now();
    for (int block = 0; block < 2 * kBlocks; ++block)
        for (const double bytes : {3.0, 6.0, kBytesPerBlock - 9.0})
            std::this_thread::sleep_for(std::chrono::duration<double>(bytes * kSecondsPerByte));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

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
    const double bare = bareSeconds();
    const double ratio = (seconds - kErase - kRouting) / bare;
    std::printf("  %-28s %10.2f s\n  %-28s %10.2f s\n  %-28s %10.2f s, %.3f times that without erase and pauses\n",
                "the wire's time", kWire, "waiting as long, bare", bare, "upgrade of 128 KiB", seconds, ratio);
    return count > 1 && std::strcmp(words[1], "--check") == 0 && ratio > 1.02 ? 1 : 0;
}
