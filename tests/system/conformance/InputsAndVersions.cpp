// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

using namespace Halvix;

namespace {

Check voltage(const char* operation, int number, const char* expected)
{
    return {operation, expected, [number] {
                Held adc{GetAdc()};
                double volts = 0;
                const eErr err = adc->getVoltage(static_cast<VoltageEnum>(number), &volts);
                return answer(err, volts);
            }};
}

Check gate(const char* operation, bool (*function)(unsigned char, unsigned char, unsigned char, unsigned char),
           unsigned char major, const char* expected)
{
    return {operation, expected, [=] { return std::string{function(major, 0, 0, 0) ? "yes" : "no"}; }};
}

} // namespace

Checks inputsAndVersions()
{
    return {
        voltage("Adc.getVoltage 0", 0, "0 24.00"),
        voltage("Adc.getVoltage 2", 2, "0 5.00"),
        voltage("Adc.getVoltage 7", 7, "0 1.20"),
        gets("DigIO.getDigIO", GetDigIO, &DigIO::getDigIO, "0 0"),
        gets("AuxVersion.getFPGAVersion", GetAuxVersion, &AuxVersion::getFPGAVersion, "0 3 2 0 1"),
        gets("AuxVersion.getSSVersion", GetAuxVersion, &AuxVersion::getSSVersion, "0 2 4 0 7"),
        gets("AuxVersion.getFrontVersion", GetAuxVersion, &AuxVersion::getFrontVersion, "0 1 6 0 2"),
        gets("AuxVersion.getHXAuxVersion", GetAuxVersion, &AuxVersion::getHXAuxVersion, "0 1 3 1 0"),
        gets("AuxVersion.getOSVersion", GetAuxVersion, &AuxVersion::getOSVersion, "0 2 1 0 5"),
        gets("AuxVersion.getHXAuxDrvVersion", GetAuxVersion, &AuxVersion::getHXAuxDrvVersion, "0 1 3 0 0"),
        gate("DoesSystemHaveAtLeastSSVersion 2", DoesSystemHaveAtLeastSSVersion, 2, "yes"),
        gate("DoesSystemHaveAtLeastSSVersion 3", DoesSystemHaveAtLeastSSVersion, 3, "no"),
        gate("DoesSystemHaveAtLeastFPGAVersion 1", DoesSystemHaveAtLeastFPGAVersion, 1, "yes"),
        gate("DoesSystemHaveAtLeastFrontVersion 9", DoesSystemHaveAtLeastFrontVersion, 9, "no"),
    };
}

} // namespace conformance
