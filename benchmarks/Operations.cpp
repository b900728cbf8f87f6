// SPDX-License-Identifier: LicenseRef-HXAux
// The overhead of an operation over its driver calls: each pair is the operation and the same calls without the
// library.
#include "benchmarks/CheapDriver.h"
#include "hx-aux/hx-aux.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using namespace Halvix;

namespace {

// Never released until the program ends.
Adc* const adc = GetAdc();
DigIO* const inputs = GetDigIO();
Power* const power = GetPower();
Config* const config = GetConfig();
Diagnostic* const diagnostic = GetDiagnostic();
FrontLED* const led = GetFrontLED();
Buzzer* const buzzer = GetBuzzer();
AuxVersion* const version = GetAuxVersion();

void require(eErr err)
{
    if (err != ERR_SUCCESS)
        std::abort();
}

/// Interruptions only add time: the fastest run shows the cost of an operation.
double fastest(const std::vector<double>& times)
{
    return *std::min_element(times.begin(), times.end());
}

template <class Action>
void pair(const std::string& name, Action action)
{
    require(action()); // the first use may open the device
    const auto calls = cheap_driver::callsOf([&] { require(action()); });
    const auto count = static_cast<double>(calls.size());
    benchmark::RegisterBenchmark((name + "/library").c_str(), [action, count](benchmark::State& state) {
        for (auto _ : state)
            require(action());
        state.counters["calls"] = count; // a table of CSV has the same columns for all
    })->ComputeStatistics("fastest", fastest);
    benchmark::RegisterBenchmark((name + "/bare").c_str(), [calls, count](benchmark::State& state) {
        for (auto _ : state)
            cheap_driver::repeat(calls);
        state.counters["calls"] = count;
    })->ComputeStatistics("fastest", fastest);
}

double volts = 0;
double hertz = 0;
unsigned char byte = 0;
unsigned char part[4] = {};
unsigned short word = 0;
short celsius = 0;
HXStatus status = HXStatusDisabled;
TimerType timers{};

} // namespace

int main(int count, char** words)
{
    // One request each, of every kind: registers and bytes, read and written, and blocks.
    pair("Adc::getVoltage", [] { return adc->getVoltage(Voltage0, &volts); });
    pair("DigIO::getDigIO", [] { return inputs->getDigIO(&byte); });
    pair("Power::getBLPowerStatus", [] { return power->getBLPowerStatus(&status); });
    pair("Power::setBLPowerStatus", [] { return power->setBLPowerStatus(HXStatusEnabled); });
    pair("FrontLED::getOnTime", [] { return led->getOnTime(&byte); });
    pair("FrontLED::setOnTime", [] { return led->setOnTime(10); });
    pair("FrontLED::getSignal", [] { return led->getSignal(&hertz, &byte); });
    pair("FrontLED::setColor", [] { return led->setColor(1, 2, 3); });
    pair("Buzzer::getFrequency", [] { return buzzer->getFrequency(&word); });
    pair("Buzzer::setFrequency", [] { return buzzer->setFrequency(1000); });
    pair("Diagnostic::getPCBTemp", [] { return diagnostic->getPCBTemp(&celsius); });
    // Several requests.
    pair("Diagnostic::getTimer", [] { return diagnostic->getTimer(&timers); });
    pair("AuxVersion::getSSVersion", [] { return version->getSSVersion(&part[0], &part[1], &part[2], &part[3]); });
    // A gate first reads the firmware's version, each time with its own object.
    pair("gated: Config::setPowerOnStartup", [] { return config->setPowerOnStartup(HXStatusEnabled); });

    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
