// SPDX-License-Identifier: LicenseRef-HXAux
// Versions, and a function that is used only where the firmware has it.

#include <hx-aux/AuxVersion.h>
#include <hx-aux/version-gates.h>

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
    AuxVersion* versions = GetAuxVersion();
    unsigned char a = 0, b = 0, c = 0, d = 0;
    if (worked("library", versions->getHXAuxVersion(&a, &b, &c, &d)))
        std::printf("library: %d.%d.%d.%d\n", a, b, c, d);
    if (worked("supervisor", versions->getSSVersion(&a, &b, &c, &d)))
        std::printf("supervisor: %d.%d.%d.%d\n", a, b, c, d);
    versions->Release();

    // Check before offering a function to the user; otherwise the function answers ERR_NEWER_SS_VERSION_REQUIRED.
    const bool canStartWithPower = DoesSystemHaveAtLeastSSVersion(1, 0, 3, 0);
    std::printf("power on at start-up: %s\n", canStartWithPower ? "offered" : "not offered");
    return 0;
}
