// SPDX-License-Identifier: LicenseRef-HXAux
// The buzzer: a beep, unless another program is beeping.

#include <hx-aux/Buzzer.h>

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
    Buzzer* buzzer = GetBuzzer();
    worked("frequency", buzzer->setFrequency(2000));
    worked("volume", buzzer->setVolume(30));
    unsigned short hertz = 0;
    if (worked("frequency", buzzer->getFrequency(&hertz)))
        std::printf("frequency: %d Hz\n", hertz);

    const eErr err = buzzer->buzze(100, true); // returns when the beep is over
    if (err == ERR_IN_PROGRESS)
        std::printf("another program is beeping\n");
    else if (worked("beep", err))
        std::printf("beeped for 100 ms\n");
    buzzer->Release();
    return 0;
}
