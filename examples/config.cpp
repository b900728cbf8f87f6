// SPDX-License-Identifier: LicenseRef-HXAux
// Start-up configuration: what the supervisor keeps over power cycles.

#include <hx-aux/Config.h>

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
    Config* config = GetConfig();
    double volts = 0;
    if (worked("set voltage", config->setStartupVoltageConfig(11.0)) &&
        worked("voltage", config->getStartupVoltageConfig(&volts)))
        std::printf("starts at %.1f V or more\n", volts);
    short celsius = 0;
    if (worked("set heating", config->setHeatingTempLimit(-10)) &&
        worked("heating", config->getHeatingTempLimit(&celsius)))
        std::printf("heats below %d degrees Celsius\n", celsius);
    if (config->setHeatingTempLimit(30) == ERR_INVALID_DATA)
        std::printf("30 degrees are refused: -25 to 5 are allowed\n");
    HXStatus atStartup = HXStatusDisabled;
    if (worked("CAN power", config->getCanStartupPowerConfig(&atStartup)))
        std::printf("CAN power at start-up: %s\n", atStartup == HXStatusEnabled ? "on" : "off");
    config->Release();
    return 0;
}
