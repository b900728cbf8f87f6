// SPDX-License-Identifier: LicenseRef-HXAux
// The backlight: manual, then automatic.

#include <hx-aux/Backlight.h>

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
    Backlight* backlight = GetBacklight();
    unsigned char level = 0;
    if (worked("set level", backlight->setIntensity(128)) && worked("level", backlight->getIntensity(&level)))
        std::printf("level: %d of 255\n", level);

    // These are settings: the unit's service process acts on them. They are kept over a restart.
    worked("filter", backlight->setAutomaticBLFilter(5, 5, 50, SamplingModeAuto));
    worked("soft transitions", backlight->setAutomaticBLParams(true));
    worked("automatic on", backlight->startAutomaticBL());
    unsigned char automatic = 0;
    if (worked("automatic", backlight->getAutomaticBLStatus(&automatic)))
        std::printf("automatic: %s\n", automatic != 0 ? "on" : "off");
    worked("automatic off", backlight->stopAutomaticBL());
    backlight->Release(); // the object is shared: it lives until its last release
    return 0;
}
