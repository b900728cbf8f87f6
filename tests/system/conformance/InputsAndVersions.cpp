// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

#include <array>
#include <cstdio>

namespace conformance {

using namespace Halvix;

namespace {

std::string volts(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

Check voltage(const char* operation, int number, const char* expected)
{
    return {operation, expected, [number] {
                Held adc{GetAdc()};
                double value = 0;
                const eErr err = adc->getVoltage(VoltageEnum(number), &value);
                return answer(err, volts(value));
            }};
}

using VersionGetter = eErr (AuxVersion::*)(unsigned char*, unsigned char*, unsigned char*, unsigned char*);

Check version(const char* operation, VersionGetter getter, const char* expected)
{
    return {operation, expected, [getter] {
                AuxVersion* versions = GetAuxVersion();
                std::array<unsigned char, 4> part{};
                const eErr err = (versions->*getter)(&part[0], &part[1], &part[2], &part[3]);
                versions->Release();
                return answer(err, std::to_string(part[0]) + "." + std::to_string(part[1]) + "." +
                                       std::to_string(part[2]) + "." + std::to_string(part[3]));
            }};
}

} // namespace

Checks inputsAndVersions()
{
    return {
        voltage("Adc.getVoltage(0)", 0, "0 24.0"),
        voltage("Adc.getVoltage(2)", 2, "0 5.0"),
        voltage("Adc.getVoltage(7)", 7, "0 1.2"),
        {"DigIO.getDigIO", "0 0",
         [] {
             Held inputs{GetDigIO()};
             unsigned char state = 0xFF;
             const eErr err = inputs->getDigIO(&state);
             return answer(err, std::to_string(state));
         }},
        version("AuxVersion.getHXAuxVersion", &AuxVersion::getHXAuxVersion, "0 1.3.1.0"),
        version("AuxVersion.getSSVersion", &AuxVersion::getSSVersion, "0 2.4.0.7"),
    };
}

} // namespace conformance
