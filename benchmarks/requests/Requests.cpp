// SPDX-License-Identifier: LicenseRef-HXAux
#include "benchmarks/requests/Requests.h"

#include "hx-aux/Adc.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

void readVoltage(Halvix::Adc& adc)
{
    double volts = 0;
    if (adc.getVoltage(Halvix::Voltage0, &volts) == Halvix::ERR_SUCCESS)
        return;
    std::fprintf(stderr, "cannot read a voltage; run this on a simulated unit\n");
    std::exit(2);
}

/// KiB that no other process shares.
long ownMemory(pid_t process)
{
    std::ifstream file{"/proc/" + std::to_string(process) + "/smaps_rollup"};
    long sum = 0;
    for (std::string word; file >> word;)
        if (long size = 0; (word == "Private_Clean:" || word == "Private_Dirty:") && file >> size)
            sum += size;
    return sum;
}

} // namespace

void measureFirstRequest(const char* since)
{
    Halvix::Adc* adc = GetAdc();
    readVoltage(*adc);
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::printf("%.3f %ld\n", std::chrono::duration<double, std::milli>(now).count() - std::atof(since),
                ownMemory(getppid()));
    adc->Release();
}

void measureRequests(const char* backend)
{
    constexpr int kTurns = 101;
    constexpr int kRequests = 200;
    Halvix::Adc* adc = GetAdc();
    std::vector<double> microseconds(kTurns);
    for (double& each : microseconds) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < kRequests; ++i)
            readVoltage(*adc);
        const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
        each = taken.count() / kRequests;
    }
    adc->Release();
    std::sort(microseconds.begin(), microseconds.end());
    std::printf("  %-28s %10.2f us a request %12.0f a second %10.2f us at best\n", backend, microseconds[kTurns / 2],
                1e6 / microseconds[kTurns / 2], microseconds[0]);
}
