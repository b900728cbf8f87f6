// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/Channel.h"

#include "simulator/interpose/Real.h"
#include "simulator/interpose/TimeValues.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

namespace hxsim {

namespace {

sockaddr_un hostAddress(const std::string& folder)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder + wire::kSocket;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

/// Abstract addresses (a NUL in front) need no file, and vanish with the socket.
bool giveName(int fd, const std::string& name)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path + 1, name.data(), std::min(name.size(), sizeof address.sun_path - 1));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    return bind(fd, reinterpret_cast<const sockaddr*>(&address), size) == 0;
}

bool connectThrough(int fd, const sockaddr_un& address)
{
    for (;;) {
        if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}

std::int64_t millisecondsNow()
{
    return machineTime(CLOCK_MONOTONIC) / 1000000;
}

} // namespace

int connectTo(const std::string& folder, const std::string& name)
{
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return -errno;
    const timeval patience{kPatienceSeconds, 0};
    (void)setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience); // of connect and sendmsg
    const sockaddr_un address = hostAddress(folder);
    if ((name.empty() || giveName(fd, name)) && connectThrough(fd, address))
        return fd;
    const int error = errno;
    HXSIM_REAL(close)(fd);
    return -error;
}

std::string connectionName(int fd, const std::string& folder)
{
    sockaddr_un peer{};
    socklen_t size = sizeof peer;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) != 0 || peer.sun_family != AF_UNIX ||
        std::strcmp(peer.sun_path, hostAddress(folder).sun_path) != 0)
        return {};
    sockaddr_un own{};
    size = sizeof own;
    constexpr std::size_t kBefore = offsetof(sockaddr_un, sun_path) + 1;
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&own), &size) != 0 || size <= kBefore)
        return {};
    return {own.sun_path + 1, size - kBefore};
}

std::string newConnectionName()
{
    static std::atomic<unsigned> made{0};
    return "hxsim-" + std::to_string(getpid()) + '-' + std::to_string(++made) + '-' +
           std::to_string(machineTime(CLOCK_MONOTONIC));
}

namespace {

/// The header of a message with a buffer for one descriptor. It has pointers to its own members, so it is not copied.
struct WithDescriptor {
    explicit WithDescriptor(wire::Head& head) : part{&head, sizeof head}
    {
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
    }
    WithDescriptor(const WithDescriptor&) = delete;
    WithDescriptor& operator=(const WithDescriptor&) = delete;

    iovec part;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    msghdr message{};
};

bool sendWhole(int fd, const msghdr& message)
{
    return TEMP_FAILURE_RETRY(HXSIM_REAL(sendmsg)(fd, &message, MSG_NOSIGNAL)) >= 0;
}

} // namespace

bool sendPacket(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes)
{
    iovec parts[2] = {{const_cast<wire::Head*>(&head), sizeof head},
                      {const_cast<std::uint8_t*>(bytes.data()), bytes.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    return sendWhole(fd, message);
}

bool sendDescriptor(int fd, wire::Head head, int descriptor)
{
    WithDescriptor sent{head};
    cmsghdr* const header = CMSG_FIRSTHDR(&sent.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    return sendWhole(fd, sent.message);
}

std::optional<wire::Head> receiveDescriptor(int fd, int& descriptor)
{
    wire::Head head{};
    WithDescriptor received{head};
    descriptor = -1;
    if (!comesInTime(fd) || TEMP_FAILURE_RETRY(HXSIM_REAL(recvmsg)(fd, &received.message, MSG_CMSG_CLOEXEC)) <
                                static_cast<ssize_t>(sizeof head))
        return std::nullopt;
    const cmsghdr* const header = CMSG_FIRSTHDR(&received.message);
    if (header != nullptr && header->cmsg_type == SCM_RIGHTS)
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
    return head;
}

Received receivePacket(int fd, wire::Head& head, std::span<std::uint8_t> bytes, std::size_t& size, bool retry)
{
    iovec parts[2] = {{&head, sizeof head}, {bytes.data(), bytes.size()}};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 2;
    for (;;) {
        const ssize_t got = HXSIM_REAL(recvmsg)(fd, &message, 0);
        if (got >= static_cast<ssize_t>(sizeof head)) {
            size = static_cast<std::size_t>(got) - sizeof head;
            return Received::Packet;
        }
        if (got < 0 && errno == EAGAIN)
            return Received::Nothing;
        if (got < 0 && errno == EFAULT)
            return Received::Unplaced;
        if (got >= 0 || errno != EINTR)
            return Received::Gone;
        if (!retry)
            return Received::Interrupted;
    }
}

bool comesInTime(int fd, int seconds)
{
    const std::int64_t until = millisecondsNow() + std::int64_t{seconds} * 1000;
    pollfd watched{fd, POLLIN, 0};
    for (;;) {
        const std::int64_t left = until - millisecondsNow();
        const int ready = HXSIM_REAL(poll)(&watched, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return false;
        if (left <= 0) {
            errno = EAGAIN;
            return false;
        }
    }
}

bool exchange(int fd, const wire::Head& head, std::span<const std::uint8_t> bytes, Packet& answer, int seconds)
{
    if (!sendPacket(fd, head, bytes))
        return false;
    answer.bytes.resize(wire::kLargestPacket);
    std::size_t size = 0;
    const bool good =
        comesInTime(fd, seconds) && receivePacket(fd, answer.head, answer.bytes, size, true) == Received::Packet;
    const int error = errno;
    answer.bytes.resize(good ? size : 0);
    errno = error;
    return good;
}

} // namespace hxsim
