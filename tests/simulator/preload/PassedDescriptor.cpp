// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/simulator/preload/PassedDescriptor.h"

#include <cstring>
#include <sys/socket.h>

namespace {

/// A message of one byte with space for one descriptor.
struct Message {
    Message()
    {
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
    }

    char byte = 0;
    iovec part{&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
    msghdr header{};
};

} // namespace

void sendDescriptor(int socket, int fd)
{
    Message message;
    cmsghdr* const control = CMSG_FIRSTHDR(&message.header);
    control->cmsg_level = SOL_SOCKET;
    control->cmsg_type = SCM_RIGHTS;
    control->cmsg_len = CMSG_LEN(sizeof fd);
    std::memcpy(CMSG_DATA(control), &fd, sizeof fd);
    (void)!sendmsg(socket, &message.header, 0);
}

int receiveDescriptor(int socket)
{
    Message message;
    if (recvmsg(socket, &message.header, 0) < 0)
        return -1;
    const cmsghdr* const control = CMSG_FIRSTHDR(&message.header);
    int fd = -1;
    if (control != nullptr)
        std::memcpy(&fd, CMSG_DATA(control), sizeof fd);
    return fd;
}
