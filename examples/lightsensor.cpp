// SPDX-License-Identifier: LicenseRef-HXAux
// The light sensor: one measurement, then an average.

#include <hx-aux/Lightsensor.h>

#include <cstdio>
#include <unistd.h>

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
    Lightsensor* sensor = GetLightsensor();
    unsigned short lux = 0;
    if (worked("light", sensor->getIlluminance(&lux)))
        std::printf("light: %d lux\n", lux);

    // One program of the unit can average at a time; a sample is taken every 800 ms.
    const eErr err = sensor->startAverageCalc(2, 0, 50, SamplingModeAuto);
    if (err == ERR_AVERAGE_CALC_STARTED)
        std::printf("another program averages\n");
    if (worked("start", err)) {
        sleep(2);
        if (worked("average", sensor->getAverageIlluminance(&lux)))
            std::printf("average: %d lux\n", lux);
        worked("stop", sensor->stopAverageCalc()); // before the program ends; otherwise averaging stays locked
    }
    sensor->Release();
    return 0;
}
