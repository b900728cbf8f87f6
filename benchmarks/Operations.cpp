// SPDX-License-Identifier: LicenseRef-HXAux
// What an operation costs on top of the requests that it makes: each pair is the operation and its bare requests.
#include "benchmarks/CheapDriver.h"
#include "hx-aux/hx-aux.h"

#include <benchmark/benchmark.h>
#include <sys/ioctl.h>

#include <cstdint>
#include <cstdlib>

namespace {

struct RegisterBlock {
    std::uint16_t reg;
    std::uint16_t value;
};

void require(Halvix::eErr err)
{
    if (err != Halvix::ERR_SUCCESS)
        std::abort();
}

void bareRegister(benchmark::State& state)
{
    for (auto _ : state) {
        RegisterBlock block{0, 0};
        if (ioctl(cheap_driver::descriptor(), 0xC004003A, &block) < 0)
            std::abort();
        benchmark::DoNotOptimize(block);
    }
}

void bareByte(benchmark::State& state)
{
    for (auto _ : state) {
        char block[2] = {};
        if (ioctl(cheap_driver::descriptor(), 0x80010051, block) < 0)
            std::abort();
        benchmark::DoNotOptimize(block);
    }
}

void voltage(benchmark::State& state)
{
    Halvix::Adc* adc = GetAdc();
    double volts = 0;
    for (auto _ : state) {
        require(adc->getVoltage(Halvix::Voltage0, &volts));
        benchmark::DoNotOptimize(volts);
    }
    adc->Release();
}

void voltageBare(benchmark::State& state)
{
    Halvix::Adc* adc = GetAdc();
    bareRegister(state);
    adc->Release();
}

void inputs(benchmark::State& state)
{
    Halvix::DigIO* digital = GetDigIO();
    unsigned char bits = 0;
    for (auto _ : state) {
        require(digital->getDigIO(&bits));
        benchmark::DoNotOptimize(bits);
    }
    digital->Release();
}

void inputsBare(benchmark::State& state)
{
    Halvix::DigIO* digital = GetDigIO();
    bareByte(state);
    digital->Release();
}

void power(benchmark::State& state)
{
    Halvix::Power* switches = GetPower();
    Halvix::HXStatus status = Halvix::HXStatusDisabled;
    for (auto _ : state) {
        require(switches->getBLPowerStatus(&status));
        benchmark::DoNotOptimize(status);
    }
    switches->Release();
}

void powerBare(benchmark::State& state)
{
    voltageBare(state); // the same single request
}

} // namespace

BENCHMARK(voltage)->Name("Adc::getVoltage/library");
BENCHMARK(voltageBare)->Name("Adc::getVoltage/bare");
BENCHMARK(inputs)->Name("DigIO::getDigIO/library");
BENCHMARK(inputsBare)->Name("DigIO::getDigIO/bare");
BENCHMARK(power)->Name("Power::getBLPowerStatus/library");
BENCHMARK(powerBare)->Name("Power::getBLPowerStatus/bare");

BENCHMARK_MAIN();
