// SPDX-License-Identifier: LicenseRef-HXAux
// The four digital inputs.

#include <hx-aux/DigIO.h>

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
    DigIO* inputs = GetDigIO();
    if (inputs == nullptr)
        return 1; // out of memory
    unsigned char state = 0;
    if (worked("inputs", inputs->getDigIO(&state))) {
        for (int i = 0; i < 4; ++i)
            std::printf("input %d: %s\n", i + 1, (state >> i & 1) != 0 ? "active" : "not active");
    }
    inputs->Release();
    return 0;
}
