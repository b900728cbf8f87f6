// SPDX-License-Identifier: LicenseRef-HXAux
#include "benchmarks/requests/Requests.h"

#include "hx-aux/Adc.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

void measureRequests(const char* backend)
{
    constexpr int kTurns = 101;
    constexpr int kRequests = 200;
    Halvix::Adc* adc = GetAdc();
    std::vector<double> microseconds(kTurns);
    for (double& each : microseconds) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < kRequests; ++i) {
            double volts = 0;
            if (adc->getVoltage(Halvix::Voltage0, &volts) != Halvix::ERR_SUCCESS) {
                std::fprintf(stderr, "cannot read a voltage; run this on a simulated unit\n");
                std::exit(2);
            }
        }
        const std::chrono::duration<double, std::micro> taken = std::chrono::steady_clock::now() - start;
        each = taken.count() / kRequests;
    }
    adc->Release();
    std::sort(microseconds.begin(), microseconds.end());
    std::printf("  %-28s %10.2f us a request %12.0f a second %10.2f us at best\n", backend, microseconds[kTurns / 2],
                1e6 / microseconds[kTurns / 2], microseconds[0]);
}
