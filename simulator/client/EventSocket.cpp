// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/EventSocket.h"

#include "simulator/protocol/UnitFolder.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace hxsim {

int connectToEvents(const std::string& unit, Waiting waiting)
{
    const std::string path = UnitFolder::pathOf(unit) + "/events";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        throw UnitGone{"the path of the unit's socket is too long: " + path};
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int kind = SOCK_STREAM | SOCK_CLOEXEC | (waiting == Waiting::NeverWaits ? SOCK_NONBLOCK : 0);
    const int fd = socket(AF_UNIX, kind, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return fd;
    const int error = errno;
    if (fd >= 0)
        close(fd);
    if (error == ENOENT || error == ECONNREFUSED)
        throw UnitGone{"no unit named '" + unit + "' is running"};
    throw UnitGone{"the unit '" + unit + "' cannot be reached: " + std::strerror(error)};
}

} // namespace hxsim
