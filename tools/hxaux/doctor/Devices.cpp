// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/doctor/Doctor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace hxaux::doctor {

namespace {

constexpr const char* kSerialPort = "/dev/ttyS0"; // a PC has it too

constexpr std::array kDevices = {
    "/dev/adc-id",        "/dev/fpga-version", "/dev/backlight",    "/dev/buzzer",
    "/dev/diag-id",       "/dev/conf-id",      "/dev/dig-io",       "/dev/frontled",
    "/dev/lightsensor",   "/dev/power-id",     "/dev/front-mcu-id", "/dev/analog-video1",
    "/dev/analog-video2", "/dev/fpgaflash",    "/dev/uart-redir",   kSerialPort,
};

// Only the permissions are checked: opening a device can change its state.
Finding lookAtDevice(const std::string& path)
{
    if (access(path.c_str(), R_OK | W_OK) == 0)
        return {path, "", ""};
    if (errno == ENOENT)
        return {path, "missing: its driver is not loaded",
                "sudo systemctl restart systemd-modules-load && sudo udevadm trigger"};
    if (errno == EACCES)
        return {path, "this user may not use it", "sudo adduser \"$USER\" hxaux   # and log in again"};
    return {path, std::strerror(errno), "ls -l " + path};
}

} // namespace

bool isUnit()
{
    return std::ranges::any_of(kDevices, [](const char* path) {
        struct stat found {};
        return std::string_view(path) != kSerialPort && stat(path, &found) == 0 && S_ISCHR(found.st_mode);
    });
}

Findings devices()
{
    Findings findings;
    for (const char* path : kDevices)
        findings.push_back(lookAtDevice(path));
    return findings;
}

} // namespace hxaux::doctor
