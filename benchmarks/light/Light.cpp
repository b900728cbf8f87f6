// SPDX-License-Identifier: LicenseRef-HXAux
// The cost of the arithmetic of light and backlight: one sample and one control pass, without their requests.
#include "backlight/ControlLaw.h"
#include "backlight/Illuminance.h"
#include "backlight/SampleRing.h"

#include <benchmark/benchmark.h>

using namespace Halvix;

namespace {

/// One sample: two bytes to lux, rejection over a window of `range(0)`, average over the same.
void sample(benchmark::State& state)
{
    const auto window = static_cast<std::uint32_t>(state.range(0));
    SampleRing* const reject = makeSampleRing(window);
    SampleRing* const average = makeSampleRing(window);
    fill(*reject, 100);
    fill(*average, 100);
    std::uint32_t sum = 100 * window;
    unsigned char step = 0;
    for (auto _ : state) {
        unsigned short lux = 0;
        const auto channel0 = static_cast<unsigned char>(0xC0 | (++step & 15U));
        benchmark::DoNotOptimize(measureToLux(&lux, {channel0, 0xA3}));
        push(*reject, lux);
        benchmark::DoNotOptimize(spread(*reject));
        sum = exchange(*average, lux, sum);
        advanceHead(*average);
        benchmark::DoNotOptimize(sum / window);
    }
    freeSampleRing(reject);
    freeSampleRing(average);
}

/// One pass of the control loop with a measurement and a step.
void controlPass(benchmark::State& state)
{
    law::Run run;
    std::uint16_t lux = 0;
    for (auto _ : state) {
        run.averageLux = ++lux;
        run.x = law::curveArgument(run.averageLux);
        run.y = law::curveLevel(28.1184, run.x, 255);
        law::aim(run);
        law::move(run, law::Transition::Soft);
        benchmark::DoNotOptimize(run);
    }
}

BENCHMARK(sample)->Name("Light::sample")->Arg(5)->Arg(50);
BENCHMARK(controlPass)->Name("Light::controlPass");

} // namespace

BENCHMARK_MAIN();
