// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/doctor/Doctor.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace hxaux::doctor {

namespace {

constexpr std::array kDevices = {
    "/dev/adc-id",        "/dev/fpga-version", "/dev/backlight",    "/dev/buzzer",
    "/dev/diag-id",       "/dev/conf-id",      "/dev/dig-io",       "/dev/frontled",
    "/dev/lightsensor",   "/dev/power-id",     "/dev/front-mcu-id", "/dev/analog-video1",
    "/dev/analog-video2", "/dev/fpgaflash",    "/dev/uart-redir",   "/dev/ttyS0",
};

// Only the permissions are checked: opening a device can change its state.
Finding look(const std::string& path)
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

Findings devices()
{
    Findings findings;
    for (const char* path : kDevices)
        findings.push_back(look(path));
    return findings;
}

} // namespace hxaux::doctor
