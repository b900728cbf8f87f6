// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Verb.h"
#include "tools/hxaux/doctor/Doctor.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <unistd.h>

namespace hxaux::doctor {

namespace {

Finding lookAtNetwork(int network)
{
    const std::string interface = "can" + std::to_string(network - 1);
    const std::string path = "/sys/class/net/" + interface + "/can_bittiming/bitrate";
    const std::string item = "CAN network " + std::to_string(network);
    if (access(path.c_str(), R_OK | W_OK) != 0)
        return errno == ENOENT
                   ? Finding{item, path + " is missing: the driver of " + interface + " is not loaded",
                             "sudo systemctl restart systemd-modules-load && ip link show " + interface}
                   : Finding{item, path + ": " + std::strerror(errno), "sudo udevadm trigger --subsystem-match=net"};
    std::ifstream file(path);
    std::string text;
    std::getline(file, text);
    if (!toInteger(text))
        return {item, path + " holds '" + text + "', which is not a bit rate",
                "hxaux can set " + std::to_string(network) + " 250"};
    return {item, "", ""};
}

} // namespace

Findings can()
{
    return {lookAtNetwork(1), lookAtNetwork(2), lookAtNetwork(3), lookAtNetwork(4)};
}

} // namespace hxaux::doctor
