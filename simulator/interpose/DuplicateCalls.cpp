// SPDX-License-Identifier: LicenseRef-HXAux
// More descriptors for the same open file: dup and its variants, fcntl, and descriptors in messages.
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"

#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace hxsim {

namespace {

int copied(int from, int to)
{
    if (to >= 0)
        Descriptors::table().copy(from, to);
    return to;
}

/// dup2 and dup3: the previous file of the new number is closed.
template <typename Forward>
int copiedOver(int from, int to, Forward forward)
{
    if (from == to)
        return forward();
    if (Descriptors::table().isProtected(to)) {
        errno = EBUSY;
        return -1;
    }
    Descriptors::table().announce(to);
    const int result = forward();
    if (result < 0)
        return result;
    const KeepErrno keep;
    const Descriptors::Removed replaced = Descriptors::table().remove(to);
    Descriptors::table().copy(from, to);
    replaced.release();
    return result;
}

/// The kernel keeps the flags that all holders of the file share; it does not know the flags of the opening.
template <typename Forward>
int fcntlOr(int fd, int command, long argument, Forward forward)
{
    if (command == F_DUPFD || command == F_DUPFD_CLOEXEC)
        return copied(fd, forward(argument));
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    if (descriptor == nullptr)
        return forward(argument);
    if ((descriptor->flags & O_PATH) != 0 && command != F_GETFL && command != F_GETFD && command != F_SETFD) {
        errno = EBADF;
        return -1;
    }
    if (command == F_SETFL)
        return forward(argument & ~long{O_ASYNC}); // no driver of the unit supports signals
    if (command != F_GETFL)
        return forward(argument);
    constexpr int kShared = O_APPEND | O_NONBLOCK | O_DIRECT | O_NOATIME;
    const int shared = forward(argument);
    return shared < 0 ? shared : (descriptor->flags & ~kShared) | (shared & kShared);
}

/// Descriptors received in a message.
void adoptFrom(msghdr& message)
{
    Link* const link = Link::current();
    if (link == nullptr)
        return;
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int fd = -1;
            std::memcpy(&fd, CMSG_DATA(part) + i * sizeof fd, sizeof fd);
            Descriptors::table().adopt(*link, fd);
        }
    }
}

template <typename Forward>
ssize_t receiveOr(msghdr* message, Forward forward)
{
    const ssize_t result = forward();
    if (result >= 0 && message->msg_controllen > 0)
        adoptFrom(*message);
    return result;
}

template <typename Forward>
int receiveAllOr(mmsghdr* messages, Forward forward)
{
    const int result = forward();
    for (int i = 0; i < result; ++i)
        if (messages[i].msg_hdr.msg_controllen > 0)
            adoptFrom(messages[i].msg_hdr);
    return result;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int dup(int fd) noexcept
{
    return copied(fd, HXSIM_REAL(dup)(fd));
}

HXSIM_ENTRY int dup2(int from, int to) noexcept
{
    return copiedOver(from, to, [&] { return HXSIM_REAL(dup2)(from, to); });
}

HXSIM_ENTRY int dup3(int from, int to, int flags) noexcept
{
    return copiedOver(from, to, [&] { return HXSIM_REAL(dup3)(from, to, flags); });
}

#define HXSIM_FCNTL(name)                                                                                              \
    HXSIM_ENTRY int name(int fd, int command, ...)                                                                     \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, command);                                                                                  \
        const long argument = va_arg(arguments, long);                                                                 \
        va_end(arguments);                                                                                             \
        return fcntlOr(fd, command, argument,                                                                          \
                       [&](long given) { return HXSIM_REAL_AS(int (*)(int, int, ...), #name)(fd, command, given); });  \
    }

HXSIM_FCNTL(fcntl)
HXSIM_FCNTL(fcntl64)
#if defined(__i386__)
HXSIM_FCNTL(__fcntl_time64)
#endif

#define HXSIM_RECVMSG(name)                                                                                            \
    HXSIM_ENTRY ssize_t name(int fd, msghdr* message, int flags)                                                       \
    {                                                                                                                  \
        return receiveOr(message,                                                                                      \
                         [&] { return HXSIM_REAL_AS(ssize_t(*)(int, msghdr*, int), #name)(fd, message, flags); });     \
    }

HXSIM_RECVMSG(recvmsg)

// NOLINTBEGIN(bugprone-macro-parentheses): a type
#define HXSIM_RECVMMSG(name, Timeout)                                                                                  \
    HXSIM_ENTRY int name(int fd, mmsghdr* messages, unsigned count, int flags, Timeout* timeout)                       \
    {                                                                                                                  \
        return receiveAllOr(messages, [&] {                                                                            \
            using Call = int (*)(int, mmsghdr*, unsigned, int, Timeout*);                                              \
            return HXSIM_REAL_AS(Call, #name)(fd, messages, count, flags, timeout);                                    \
        });                                                                                                            \
    }
// NOLINTEND(bugprone-macro-parentheses)

HXSIM_RECVMMSG(recvmmsg, timespec)
#if defined(__i386__)
HXSIM_RECVMSG(__recvmsg64)
HXSIM_RECVMMSG(__recvmmsg64, Timespec64)
#endif
