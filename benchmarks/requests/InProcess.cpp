// SPDX-License-Identifier: LicenseRef-HXAux
// Requests through the in-process backend, and how fast virtual time runs while the averaging sampler works.
#include "benchmarks/requests/Requests.h"
#include "hx-aux/Lightsensor.h"
#include "testing/SimulatedUnit.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

void measureVirtualTime()
{
    constexpr int kUnitMinutes = 10;
    SimulatedUnit unit;
    Halvix::Lightsensor* sensor = GetLightsensor();
    if (sensor->startAverageCalc(50, 50, 50, Halvix::SamplingModeAuto) != Halvix::ERR_SUCCESS)
        std::abort();
    const auto start = std::chrono::steady_clock::now();
    unit.sleepFor(kUnitMinutes * 60'000);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    (void)sensor->stopAverageCalc();
    unit.sleepFor(1000);
    sensor->Release();
    std::printf("  %-28s %10.0f times real time\n", "virtual time, sampling", kUnitMinutes * 60 / seconds);
}

} // namespace

int main()
{
    {
        SimulatedUnit unit;
        measureRequests("in-process backend");
    }
    measureVirtualTime();
    return 0;
}
