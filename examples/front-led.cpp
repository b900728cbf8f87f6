// SPDX-License-Identifier: LicenseRef-HXAux
// The front LED: a color and a blink pattern.

#include <hx-aux/FrontLED.h>

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
    FrontLED* led = GetFrontLED();
    worked("color", led->setColor(ColorOrange));
    worked("blink", led->setSignal(2.0, 50));
    unsigned char red = 0, green = 0, blue = 0;
    if (worked("color", led->getColor(&red, &green, &blue)))
        std::printf("red %d, green %d, blue %d of 15\n", red, green, blue);
    double hertz = 0;
    unsigned char duty = 0;
    if (worked("signal", led->getSignal(&hertz, &duty)))
        std::printf("blinks %.1f times a second, %d %% on\n", hertz, duty);
    if (led->setColor(16, 0, 0) == ERR_INVALID_PARAMETER)
        std::printf("a red of 16 is refused: 0 to 15 are allowed\n");
    led->Release();
    return 0;
}
