// SPDX-License-Identifier: LicenseRef-HXAux
// Power of the loads, and the request of the front button.

#include <hx-aux/Power.h>

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
    Power* power = GetPower();
    worked("CAN on", power->setCanPowerStatus(HXStatusEnabled));
    HXStatus status = HXStatusDisabled;
    if (worked("CAN", power->getCanPowerStatus(&status)))
        std::printf("CAN power: %s\n", status == HXStatusEnabled ? "on" : "off");
    worked("video on", power->setVideoPowerStatus(1 | 4)); // a bit per channel: the first and the third
    unsigned char channels = 0;
    if (worked("video", power->getVideoPowerStatus(&channels)))
        std::printf("video power: channels 0x%X\n", channels);

    // An application polls this, finishes its work and then acknowledges.
    ButtonPowerTransitionStatus request = ButtonPowerTransition0;
    if (worked("request", power->getButtonPowerTransitionStatus(&request))) {
        std::printf("power request: %d\n", static_cast<int>(request));
        if (request != ButtonPowerTransition0 && worked("acknowledge", power->ackPowerRequest()))
            std::printf("acknowledged\n");
    }
    power->Release();
    return 0;
}
