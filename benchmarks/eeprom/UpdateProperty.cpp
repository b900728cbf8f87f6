// SPDX-License-Identifier: LicenseRef-HXAux
// The time of a change of production data compared with its lower bound: the pauses of the library and the bytes on the
// bus. Run it on a simulated unit in real time:
//
//     hx-sim run -- hx-bench-eeprom [--check]
//
// The floor is measured side by side, by waiting for the same pieces of time one after the other: a machine wakes up
// late from each. With --check the status is 1 when the median is more than 3 % above it.
#include "hx-aux/HXAuxPrivate.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kClocksPerMs = 100.0; // the bus at 100 kHz
constexpr int kPages = 4096 / 32;
constexpr int kReads = 4096 / 128;

/// Nine clocks a byte, one for each start and one for the stop.
constexpr double transferMs(int bytes, int starts)
{
    return (bytes * 9 + starts + 1) / kClocksPerMs;
}

// Each page: 10 ms for the one before, then address, offset and data. Then 200 ms, everything read again, 200 ms.
constexpr double kFloorMs =
    kPages * (10.0 + transferMs(1 + 2 + 32, 1)) + 200.0 + kReads * transferMs(1 + 2 + 1 + 128, 2) + 200.0;

void waitMs(double milliseconds)
{
    std::this_thread::sleep_for(Milliseconds{milliseconds});
}

/// The same pieces of time, and nothing else.
double bareMs()
{
    const auto start = std::chrono::steady_clock::now();
    for (int page = 0; page < kPages; ++page) {
        waitMs(10.0);
        waitMs(transferMs(1 + 2 + 32, 1));
    }
    waitMs(200.0);
    for (int read = 0; read < kReads; ++read)
        waitMs(transferMs(1 + 2 + 1 + 128, 2));
    waitMs(200.0);
    return Milliseconds{std::chrono::steady_clock::now() - start}.count();
}

double changeMs(Halvix::HXAuxPrivate& service, const char* value)
{
    char key[] = "UNIT_SERIAL";
    char text[32];
    std::snprintf(text, sizeof text, "%s", value);
    const auto start = std::chrono::steady_clock::now();
    const Halvix::eErr err = service.setEepromProperty(0, key, text);
    const Milliseconds taken = std::chrono::steady_clock::now() - start;
    return err == Halvix::ERR_SUCCESS ? taken.count() : -1.0;
}

} // namespace

int main(int count, char** words)
{
    Halvix::HXAuxPrivate* service = GetHXAuxPrivate();
    std::array<double, 7> times{};
    std::array<double, times.size()> floors{};
    for (std::size_t i = 0; i < times.size(); ++i) {
        floors[i] = bareMs();
        times[i] = changeMs(*service, i % 2 == 0 ? "BENCH-0001" : "BENCH-0002");
        if (times[i] < 0) {
            std::fprintf(stderr, "the property cannot be changed; is this a simulated unit?\n");
            return 2;
        }
    }
    service->Release();

    std::sort(times.begin(), times.end());
    std::sort(floors.begin(), floors.end());
    const double median = times[times.size() / 2];
    const double floor = floors[floors.size() / 2];
    const double over = (median / floor - 1.0) * 100.0;
    std::printf("  %-28s %10.1f ms\n  %-28s %10.1f ms\n  %-28s %10.1f ms, %.2f %% over that\n", "sum of pauses and bus",
                kFloorMs, "waiting as long, bare", floor, "change of a property", median, over);
    return count > 1 && std::strcmp(words[1], "--check") == 0 && over > 3.0 ? 1 : 0;
}
