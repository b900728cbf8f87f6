// SPDX-License-Identifier: LicenseRef-HXAux
// The telematics modules: which are fitted, and their power.

#include <hx-aux/Telematics.h>

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
    Telematics* telematics = GetTelematics();
    HXStatus status = HXStatusDisabled;
    if (worked("available", telematics->getTelematicsAvailable(&status)))
        std::printf("modules: %s\n", status == HXStatusEnabled ? "fitted" : "none");
    const eErr err = telematics->setGPRSPowerStatus(HXStatusEnabled);
    if (err == ERR_TELEMATICS_GPRS_NOT_AVAILABLE)
        std::printf("no GSM/GPRS module\n");
    else if (worked("GSM/GPRS on", err) && worked("GSM/GPRS", telematics->getGPRSPowerStatus(&status)))
        std::printf("GSM/GPRS: %s\n", status == HXStatusEnabled ? "on" : "off");
    if (worked("GPS antenna", telematics->getGPSAntennaStatus(&status)))
        std::printf("GPS antenna: %d\n", static_cast<int>(status));
    telematics->Release();
    return 0;
}
