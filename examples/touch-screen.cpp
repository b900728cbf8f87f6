// SPDX-License-Identifier: LicenseRef-HXAux
// The touch screen: its mode and the time for a right click.

#include <hx-aux/TouchScreen.h>

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
    TouchScreen* screen = GetTouchScreen();
    worked("set mode", screen->setMode(TouchScreenMode1));
    TouchScreenModeSettings mode = TouchScreenMode0;
    if (worked("mode", screen->getMode(&mode)))
        std::printf("mode: %d\n", static_cast<int>(mode));
    unsigned short time = 0;
    if (worked("set time", screen->setMouseRightClickTime(800)) &&
        worked("time", screen->getMouseRightClickTime(&time)))
        std::printf("right click after: %d\n", time);
    unsigned short value = 0;
    const eErr err = screen->getAdvancedSetting(TSAdvancedSetting1, &value);
    if (err == ERR_NEWER_FRONT_VERSION_REQUIRED)
        std::printf("advanced settings need newer firmware in the front microcontroller\n");
    else if (worked("advanced setting 1", err))
        std::printf("advanced setting 1: %d\n", value);
    screen->Release();
    return 0;
}
