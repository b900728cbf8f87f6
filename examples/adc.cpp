// SPDX-License-Identifier: LicenseRef-HXAux
// Supply voltages: reads all eight and warns when the first is low.

#include <hx-aux/Adc.h>

#include <cstdio>

using namespace Halvix;

// Prints an error; true on success.
static bool worked(const char* what, eErr err)
{
    if (err != ERR_SUCCESS)
        std::printf("%s: %s (%d)\n", what, GetErrorStringA(err), static_cast<int>(err));
    return err == ERR_SUCCESS;
}

int main()
{
    const double kLow = 18.0;
    Adc* adc = GetAdc();
    for (int i = 0; i < 8; ++i) {
        double volts = 0;
        if (!worked("voltage", adc->getVoltage(static_cast<VoltageEnum>(i), &volts)))
            continue;
        std::printf("voltage %d: %.2f V%s\n", i, volts, i == 0 && volts < kLow ? ", low" : "");
    }
    adc->Release();
    return 0;
}
