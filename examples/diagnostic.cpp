// SPDX-License-Identifier: LicenseRef-HXAux
// Diagnostics: temperatures, reasons, counters.

#include <hx-aux/Diagnostic.h>
#include <hx-aux/status-texts.h>

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
    Diagnostic* diagnostic = GetDiagnostic();
    short celsius = 0;
    if (worked("board", diagnostic->getPCBTemp(&celsius)))
        std::printf("board: %d\n", celsius);
    unsigned short word = 0;
    if (worked("started by", diagnostic->getStartupReason(&word)))
        std::printf("started by: %s\n", GetStartupReasonStringA(word));
    if (worked("hardware error", diagnostic->getHwErrorStatus(&word)))
        std::printf("hardware error: %s\n", GetHwErrorStatusStringA(word));
    if (worked("power cycles", diagnostic->getPowerCycles(&word)))
        std::printf("power cycles: %d\n", word);
    TimerType timers;
    if (worked("operating time", diagnostic->getTimer(&timers)))
        std::printf("operating time: %u s\n", timers.seconds[0]);
    diagnostic->Release();
    return 0;
}
