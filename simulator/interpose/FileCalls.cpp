// SPDX-License-Identifier: LicenseRef-HXAux
// open and close, in every variant that programs use.
#include "simulator/file/Terminal.h"
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Paths.h"
#include "simulator/jida/Protocol.h"
#include "simulator/model/CallWatch.h"
#include "simulator/model/Text.h"

#include <cstdarg>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace hxsim {

namespace {

/// Requests that the kernel refuses before it calls a driver.
int refusal(const UnitPath& unit, int flags)
{
    if (const int error = unit.error(); error != 0)
        return error == ENOENT ? 0 : error; // the unit itself reports, and records, absent devices
    if ((flags & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL))
        return EEXIST;
    if ((flags & O_DIRECTORY) != 0)
        return ENOTDIR;
    return !unit.where.text && (flags & O_DIRECT) != 0 ? EINVAL : 0;
}

int openDevice(const UnitPath& unit, int flags)
{
    if (const int error = refusal(unit, flags); error != 0)
        return -error;
    Link::Opened opened = unit.link->open(unit.path, flags);
    const int fd = opened.descriptor;
    if (fd < 0)
        return fd;
    (void)shutdown(fd, SHUT_RD); // a program without this library reads an end of file from it, and does not wait
    HXSIM_REAL(fcntl)(fd, F_SETFL, flags & (O_NONBLOCK | O_APPEND));
    if ((flags & O_CLOEXEC) == 0)
        HXSIM_REAL(fcntl)(fd, F_SETFD, 0);
    auto descriptor = std::make_shared<Descriptor>(unit.path, keptFlags(flags));
    descriptor->device = std::move(opened.file);
    descriptor->text = unit.where.text;
    descriptor->serial = unit.where.serial;
    if (unit.where.serial && !descriptor->device->terminal())
        descriptor->device->setTerminal(freshTerminal());
    Descriptors::table().add(fd, std::move(descriptor));
    return fd;
}

int openFile(const UnitPath& unit, int flags, unsigned mode)
{
    int result = -unit.link->fault(unit.path, "open");
    if (result == 0) {
        result = HXSIM_REAL(open64)(unit.where.file.c_str(), flags, mode);
        if (result < 0)
            result = -errno;
    }
    unit.link->note(unit.path, openAction(flags), result < 0 ? -result : 0);
    if (result < 0)
        return result;
    auto descriptor = std::make_shared<Descriptor>(unit.path, flags);
    descriptor->text = unit.where.text;
    Descriptors::table().add(result, std::move(descriptor));
    return result;
}

bool needsMode(int flags)
{
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

template <typename Forward>
int openOr(int folder, const char* path, int flags, unsigned mode, Forward forward)
{
    const UnitPath unit = findPath(folder, path);
    if (!unit) {
        guardTheMachine(path);
        return forward();
    }
    KeepErrno keep;
    return keep.answer(unit.where.place == Link::Place::Device ? openDevice(unit, flags) : openFile(unit, flags, mode));
}

/// Reports a call to the unit; the errno with which it must fail, or 0.
int closing(const Descriptor& descriptor)
{
    if (descriptor.device != nullptr) // the board library's hardware has calls of its own
        return descriptor.path == jida::kNode ? 0 : watched(descriptor.path, "close");
    Link* const link = Link::current();
    if (link == nullptr || descriptor.stream)
        return 0;
    const int error = link->fault(descriptor.path, "close");
    link->note(descriptor.path, "close", error);
    return error;
}

template <typename Forward>
int closeOr(int fd, Forward forward)
{
    if (Descriptors::table().isProtected(fd)) {
        errno = EBADF;
        return -1;
    }
    Descriptors::table().announce(fd);
    const Descriptors::Removed removed = Descriptors::table().remove(fd);
    if (!removed.last)
        return forward();
    KeepErrno keep;
    const int error = closing(*removed.descriptor);
    const int result = forward();
    removed.release();
    return error != 0 ? keep.answer(-error) : result;
}

/// Closes a range of numbers but for our own.
template <typename Range>
int closeRange(unsigned first, unsigned last, Range range)
{
    Descriptors& table = Descriptors::table();
    const std::vector<Descriptors::Removed> all = table.removeAll(first, last);
    for (const Descriptors::Removed& one : all)
        if (one.last)
            (void)closing(*one.descriptor);
    int result = 0;
    for (const unsigned own : table.protectedIn(first, last)) {
        if (own > first)
            result = range(first, own - 1);
        first = own + 1;
    }
    if (result == 0 && first <= last)
        result = range(first, last);
    for (const Descriptors::Removed& one : all)
        one.release();
    return result;
}

unsigned modeArgument(int flags, va_list arguments)
{
    return needsMode(flags) ? va_arg(arguments, unsigned) : 0;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

#define HXSIM_OPEN(name, size)                                                                                         \
    HXSIM_ENTRY int name(const char* path, int flags, ...)                                                             \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const unsigned mode = modeArgument(flags, arguments);                                                          \
        va_end(arguments);                                                                                             \
        return openOr(AT_FDCWD, path, flags | (size), mode, [&] { return HXSIM_REAL(name)(path, flags, mode); });      \
    }

HXSIM_OPEN(open, 0)
HXSIM_OPEN(open64, O_LARGEFILE)

#define HXSIM_OPENAT(name, size)                                                                                       \
    HXSIM_ENTRY int name(int folder, const char* path, int flags, ...)                                                 \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        const unsigned mode = modeArgument(flags, arguments);                                                          \
        va_end(arguments);                                                                                             \
        return openOr(folder, path, flags | (size), mode,                                                              \
                      [&] { return HXSIM_REAL(name)(folder, path, flags, mode); });                                    \
    }

HXSIM_OPENAT(openat, 0)
HXSIM_OPENAT(openat64, O_LARGEFILE)

// _FORTIFY_SOURCE turns an open without a mode into these.
#define HXSIM_OPEN_2(name, size)                                                                                       \
    HXSIM_ENTRY int name(const char* path, int flags)                                                                  \
    {                                                                                                                  \
        return openOr(AT_FDCWD, path, flags | (size), 0,                                                               \
                      [&] { return HXSIM_REAL_AS(int (*)(const char*, int), #name)(path, flags); });                   \
    }

HXSIM_OPEN_2(__open_2, 0)
HXSIM_OPEN_2(__open64_2, O_LARGEFILE)

#define HXSIM_OPENAT_2(name, size)                                                                                     \
    HXSIM_ENTRY int name(int folder, const char* path, int flags)                                                      \
    {                                                                                                                  \
        return openOr(folder, path, flags | (size), 0,                                                                 \
                      [&] { return HXSIM_REAL_AS(int (*)(int, const char*, int), #name)(folder, path, flags); });      \
    }

HXSIM_OPENAT_2(__openat_2, 0)
HXSIM_OPENAT_2(__openat64_2, O_LARGEFILE)

#define HXSIM_CREAT(name)                                                                                              \
    HXSIM_ENTRY int name(const char* path, mode_t mode)                                                                \
    {                                                                                                                  \
        return openOr(AT_FDCWD, path, O_CREAT | O_WRONLY | O_TRUNC, mode,                                              \
                      [&] { return HXSIM_REAL(name)(path, mode); });                                                   \
    }

HXSIM_CREAT(creat)
HXSIM_CREAT(creat64)

HXSIM_ENTRY int close(int fd)
{
    return closeOr(fd, [&] { return HXSIM_REAL(close)(fd); });
}

HXSIM_ENTRY int close_range(unsigned first, unsigned last, int flags) noexcept
{
    if (first > last || flags != 0) // refused, or nothing is closed yet
        return HXSIM_REAL(close_range)(first, last, flags);
    return closeRange(first, last, [](unsigned from, unsigned to) { return HXSIM_REAL(close_range)(from, to, 0); });
}

HXSIM_ENTRY void closefrom(int first) noexcept
{
    (void)close_range(static_cast<unsigned>(first < 0 ? 0 : first), ~0U, 0);
}
