// SPDX-License-Identifier: LicenseRef-HXAux
// A firmware upgrade of the supervisor, with its progress: firmware-upgrade FILE

#include <hx-aux/FirmwareUpgrade.h>

#include <cstdio>

using namespace Halvix;

// Prints an error; true on success.
static bool worked(const char* what, eErr err)
{
    if (err != ERR_SUCCESS)
        std::printf("%s: %s (%d)\n", what, GetErrorStringA(err), static_cast<int>(err));
    return err == ERR_SUCCESS;
}

int main(int count, char** words)
{
    if (count != 2) {
        std::printf("usage: firmware-upgrade FILE\n");
        return 2;
    }
    static const char* const kPhases[] = {"prepare", "connect", "", "read file", "write", "verify", "done", "failed"};
    FirmwareUpgrade* upgrade = GetFirmwareUpgrade();
    if (!worked("start", upgrade->startSSUpgrade(words[1], false))) {
        upgrade->Release();
        return 1;
    }
    // From now on the run must not be stopped: the supervisor would be left without firmware.
    UpgradeStatus status;
    UpgradeAction last = UpgradeActionReserved;
    do {
        upgrade->getUpgradeStatus(&status, true); // waits for the next change
        if (status.action != last)
            std::printf("%s\n", kPhases[status.action]);
        last = status.action;
    } while (status.action != UpgradeActionFinished && status.action != UpgradeActionFailed);
    worked("upgrade", status.error);
    upgrade->Release();
    return status.error == ERR_SUCCESS ? 0 : 1;
}
