// SPDX-License-Identifier: LicenseRef-HXAux
// CAN bit rates of all networks, and a new one for the first.

#include <hx-aux/CanSetting.h>

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
    CanSetting* can = GetCanSetting();
    // The kernel accepts a new rate only while the interface is down; ERR_IOCTRL_FAILED means that it is up.
    worked("set CAN 1", can->setBaudrate(1, 500));
    for (int network = CanSetting_Imp::CAN_NET_MIN; network <= CanSetting_Imp::CAN_NET_MAX; ++network) {
        unsigned short kbit = 0;
        if (worked("CAN", can->getBaudrate(static_cast<unsigned char>(network), &kbit)))
            std::printf("CAN %d: %d kbit/s\n", network, kbit);
    }
    can->Release();
    return 0;
}
