// SPDX-License-Identifier: LicenseRef-HXAux
// The service interface: settings file, production data, supervisor registers.

#include <hx-aux/HXAuxPrivate.h>

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
    HXAuxPrivate* service = GetHXAuxPrivate();
    char text[256] = "";
    if (worked("set", service->setFileSetting("EXAMPLE_KEY", "42")) &&
        worked("get", service->getFileSetting("EXAMPLE_KEY", text, sizeof text)))
        std::printf("EXAMPLE_KEY in the settings file: %s\n", text);

    char key[] = "PCB_REV"; // the operation takes a writable text
    const unsigned char kMainBoard = 0;
    if (worked("PCB_REV", service->getEepromProperty(kMainBoard, key, text, sizeof text)))
        std::printf("PCB_REV of the main board: %s\n", text);
    char missing[] = "NO_SUCH_KEY";
    if (service->getEepromProperty(kMainBoard, missing, text, sizeof text) == ERR_JIDA_EEPROM)
        std::printf("NO_SUCH_KEY is not there\n");
    service->Release();
    return 0;
}
