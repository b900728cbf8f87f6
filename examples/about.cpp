// SPDX-License-Identifier: LicenseRef-HXAux
// Production data: identity of the unit and fitted modules.

#include <hx-aux/About.h>

#include <cstddef>
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
    About* about = GetAbout();
    if (about == nullptr)
        return 1; // out of memory
    char text[256] = "";
    if (worked("serial number", about->getUnitSerial(text, sizeof text - 1)))
        std::printf("serial number: %s\n", text);
    if (worked("made on", about->getMainManufacturingDate(text, sizeof text - 1)))
        std::printf("made on: %s\n", text);
    unsigned char count = 0;
    if (worked("CAN connectors", about->getNrOfCANConnections(&count)))
        std::printf("CAN connectors: %d\n", count);
    bool fitted = false;
    if (worked("GPS", about->getIsGPSMounted(&fitted)))
        std::printf("GPS: %s\n", fitted ? "fitted" : "not fitted");
    about->Release();
    return 0;
}
