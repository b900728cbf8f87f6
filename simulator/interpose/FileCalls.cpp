// SPDX-License-Identifier: LicenseRef-HXAux
// open, close, dup and fcntl, in every spelling that programs use.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Terminal.h"
#include "simulator/jida/Protocol.h"
#include "simulator/model/CallWatch.h"
#include "simulator/model/Text.h"

namespace hxsim {

namespace {

int openDevice(Link& link, const std::string& path, int flags, const Link::Where& where)
{
    Link::Opened opened = link.open(path, flags);
    if (opened.descriptor < 0)
        return opened.descriptor;
    auto descriptor = std::make_shared<Descriptor>(path, flags);
    descriptor->device = std::move(opened.file);
    descriptor->text = where.text;
    descriptor->serial = where.serial;
    if (where.serial) {
        descriptor->terminal = freshTerminal();
        descriptor->device->setLine(lineOf(descriptor->terminal));
    }
    Descriptors::table().add(opened.descriptor, std::move(descriptor));
    return opened.descriptor;
}

int openFile(Link& link, const std::string& path, int flags, unsigned mode, const Link::Where& where)
{
    int result = -link.fault(path, "open");
    if (result == 0) {
        result = HXSIM_REAL(open64)(where.file.c_str(), flags, mode);
        if (result < 0)
            result = -errno;
    }
    link.note(path, openAction(flags), result < 0 ? -result : 0);
    if (result < 0)
        return result;
    auto descriptor = std::make_shared<Descriptor>(path, flags);
    descriptor->text = where.text;
    Descriptors::table().add(result, std::move(descriptor));
    return result;
}

bool needsMode(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

} // namespace

int openAnywhere(const char* path, int flags, unsigned mode, bool& outside)
{
    outside = true;
    if (path == nullptr || path[0] != '/')
        return -1;
    KeepErrno keep;
    Link* const link = Link::current();
    if (link == nullptr) {
        if (isProductPath(path))
            dieOutsideAUnit(path);
        return -1;
    }
    const Link::Where where = link->locate(path);
    if (where.place == Link::Place::Outside)
        return -1;
    outside = false;
    if (where.place == Link::Place::Device)
        return keep.answer(openDevice(*link, path, flags, where));
    return keep.answer(openFile(*link, path, flags, mode, where));
}

namespace {

template <typename Forward>
int openOr(const char* path, int flags, unsigned mode, Forward forward)
{
    bool outside = false;
    const int result = openAnywhere(path, flags, mode, outside);
    return outside ? forward() : result;
}

template <typename Forward>
int closeOr(int fd, Forward forward)
{
    if (Descriptors::table().isProtected(fd)) {
        errno = EBADF;
        return -1;
    }
    bool last = false;
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().remove(fd, last);
    if (descriptor == nullptr || !last)
        return forward();
    KeepErrno keep;
    int error = 0;
    Link* const link = Link::current();
    if (descriptor->device != nullptr) {
        if (descriptor->path != jida::kNode) // its hardware has calls of its own
            error = -watched(descriptor->path, "close");
        descriptor->device->close();
    } else if (link != nullptr && !descriptor->stream) {
        error = -link->fault(descriptor->path, "close");
        link->note(descriptor->path, "close", -error);
    }
    const int result = forward();
    return error != 0 ? keep.answer(error) : result;
}

/// The new number stands for what the old one stands for.
int copied(int from, int to)
{
    if (to >= 0)
        if (auto descriptor = Descriptors::table().find(from))
            Descriptors::table().add(to, std::move(descriptor));
    return to;
}

void forget(int fd)
{
    bool last = false;
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().remove(fd, last);
    if (descriptor != nullptr && last && descriptor->device != nullptr)
        descriptor->device->close();
}

/// O_NONBLOCK and its like belong to the open file of the unit, not to the descriptor that carries it.
template <typename Forward>
int fcntlOr(int fd, int command, long argument, Forward forward)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    if (descriptor == nullptr || descriptor->device == nullptr)
        return forward();
    constexpr int kChangeable = O_APPEND | O_NONBLOCK | O_ASYNC | O_DIRECT | O_NOATIME;
    switch (command) {
    case F_GETFL:
        return descriptor->flags & ~(O_CREAT | O_EXCL | O_NOCTTY | O_TRUNC | O_CLOEXEC);
    case F_SETFL:
        descriptor->flags = (descriptor->flags & ~kChangeable) | (int(argument) & kChangeable);
        return 0;
    case F_DUPFD:
    case F_DUPFD_CLOEXEC:
        return copied(fd, forward());
    default:
        return forward();
    }
}

unsigned modeArgument(int flags, va_list arguments)
{
    return needsMode(flags) ? va_arg(arguments, unsigned) : 0;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

#define HXSIM_OPEN(name)                                                                                               \
    HXSIM_ENTRY int name(const char* path, int flags, ...)                                                             \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const unsigned mode = modeArgument(flags, arguments);                                                          \
        va_end(arguments);                                                                                             \
        return openOr(path, flags, mode, [&] { return HXSIM_REAL(name)(path, flags, mode); });                         \
    }

HXSIM_OPEN(open)
HXSIM_OPEN(open64)

#define HXSIM_OPENAT(name)                                                                                             \
    HXSIM_ENTRY int name(int folder, const char* path, int flags, ...)                                                 \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const unsigned mode = modeArgument(flags, arguments);                                                          \
        va_end(arguments);                                                                                             \
        return openOr(path, flags, mode, [&] { return HXSIM_REAL(name)(folder, path, flags, mode); });                 \
    }

HXSIM_OPENAT(openat)
HXSIM_OPENAT(openat64)

// What _FORTIFY_SOURCE makes of an open without a mode.
#define HXSIM_OPEN_2(name)                                                                                             \
    HXSIM_ENTRY int name(const char* path, int flags)                                                                  \
    {                                                                                                                  \
        return openOr(path, flags, 0, [&] { return HXSIM_REAL_AS(int (*)(const char*, int), #name)(path, flags); });   \
    }

HXSIM_OPEN_2(__open_2)
HXSIM_OPEN_2(__open64_2)

#define HXSIM_OPENAT_2(name)                                                                                           \
    HXSIM_ENTRY int name(int folder, const char* path, int flags)                                                      \
    {                                                                                                                  \
        return openOr(path, flags, 0,                                                                                  \
                      [&] { return HXSIM_REAL_AS(int (*)(int, const char*, int), #name)(folder, path, flags); });      \
    }

HXSIM_OPENAT_2(__openat_2)
HXSIM_OPENAT_2(__openat64_2)

#define HXSIM_CREAT(name)                                                                                              \
    HXSIM_ENTRY int name(const char* path, mode_t mode)                                                                \
    {                                                                                                                  \
        return openOr(path, O_CREAT | O_WRONLY | O_TRUNC, mode, [&] { return HXSIM_REAL(name)(path, mode); });         \
    }

HXSIM_CREAT(creat)
HXSIM_CREAT(creat64)

HXSIM_ENTRY int close(int fd)
{
    return closeOr(fd, [&] { return HXSIM_REAL(close)(fd); });
}

HXSIM_ENTRY int dup(int fd) noexcept
{
    return copied(fd, HXSIM_REAL(dup)(fd));
}

HXSIM_ENTRY int dup2(int from, int to) noexcept
{
    if (from != to)
        forget(to);
    return copied(from, HXSIM_REAL(dup2)(from, to));
}

HXSIM_ENTRY int dup3(int from, int to, int flags) noexcept
{
    if (from != to)
        forget(to);
    return copied(from, HXSIM_REAL(dup3)(from, to, flags));
}

#define HXSIM_FCNTL(name)                                                                                              \
    HXSIM_ENTRY int name(int fd, int command, ...)                                                                     \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, command);                                                                                  \
        const long argument = va_arg(arguments, long);                                                                 \
        va_end(arguments);                                                                                             \
        return fcntlOr(fd, command, argument,                                                                          \
                       [&] { return HXSIM_REAL_AS(int (*)(int, int, ...), #name)(fd, command, argument); });           \
    }

HXSIM_FCNTL(fcntl)
HXSIM_FCNTL(fcntl64)
#if defined(__i386__)
HXSIM_FCNTL(__fcntl_time64)
#endif
