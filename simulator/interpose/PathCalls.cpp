// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that name a path without opening it.
#include "simulator/interpose/OnPath.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace hxsim {

std::string standIn(Link& link, bool text)
{
    if (!text)
        return "/dev/null";
    std::string file = link.folder() + "/attribute";
    const int fd = HXSIM_REAL(open64)(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd >= 0) {
        (void)!ftruncate(fd, 4096); // the size that sysfs gives its attributes
        HXSIM_REAL(close)(fd);
    }
    return file;
}

namespace {

std::string octal(const char* call, unsigned mode)
{
    char text[32];
    std::snprintf(text, sizeof text, "%s %#o", call, mode);
    return text;
}

/// No path of the unit is a symbolic link.
template <typename Forward>
ssize_t readlinkOr(int folder, const char* path, Forward forward)
{
    const UnitPath unit = findPath(folder, path);
    if (!unit)
        return forward();
    errno = unit.error() != 0 ? unit.error() : EINVAL;
    return -1;
}

/// `into` null: a string that the caller frees.
template <typename Forward>
char* realpathOr(const char* path, char* into, Forward forward)
{
    const UnitPath unit = findPath(AT_FDCWD, path);
    if (!unit)
        return forward();
    if (unit.error() != 0) {
        errno = unit.error();
        return nullptr;
    }
    // NOLINTNEXTLINE(clang-analyzer-security.insecureAPI.strcpy): callers of realpath bring PATH_MAX bytes
    return into == nullptr ? strdup(unit.path.c_str()) : std::strcpy(into, unit.path.c_str());
}

template <typename Forward, typename Call>
int accessOr(int folder, const char* path, int mode, Forward forward, Call call)
{
    return onPathOr(folder, path, "access " + std::to_string(mode), forward, call);
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY int access(const char* path, int mode) noexcept
{
    return accessOr(
        AT_FDCWD, path, mode, [&] { return HXSIM_REAL(access)(path, mode); },
        [&](const char* real) { return HXSIM_REAL(access)(real, mode); });
}

HXSIM_ENTRY int faccessat(int folder, const char* path, int mode, int flags) noexcept
{
    return accessOr(
        folder, path, mode, [&] { return HXSIM_REAL(faccessat)(folder, path, mode, flags); },
        [&](const char* real) { return HXSIM_REAL(faccessat)(AT_FDCWD, real, mode, flags); });
}

HXSIM_ENTRY int euidaccess(const char* path, int mode) noexcept
{
    return accessOr(
        AT_FDCWD, path, mode, [&] { return HXSIM_REAL(euidaccess)(path, mode); },
        [&](const char* real) { return HXSIM_REAL(euidaccess)(real, mode); });
}

HXSIM_ENTRY int eaccess(const char* path, int mode) noexcept
{
    return accessOr(
        AT_FDCWD, path, mode, [&] { return HXSIM_REAL(eaccess)(path, mode); },
        [&](const char* real) { return HXSIM_REAL(eaccess)(real, mode); });
}

HXSIM_ENTRY int mkfifo(const char* path, mode_t mode) noexcept
{
    return onPathOr(
        AT_FDCWD, path, octal("mkfifo", mode),
        [&] {
            guardTheMachine(path);
            return HXSIM_REAL(mkfifo)(path, mode);
        },
        [&](const char* real) { return HXSIM_REAL(mkfifo)(real, mode); });
}

HXSIM_ENTRY ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept
{
    return readlinkOr(AT_FDCWD, path, [&] { return HXSIM_REAL(readlink)(path, buffer, size); });
}

HXSIM_ENTRY ssize_t readlinkat(int folder, const char* path, char* buffer, std::size_t size) noexcept
{
    return readlinkOr(folder, path, [&] { return HXSIM_REAL(readlinkat)(folder, path, buffer, size); });
}

HXSIM_ENTRY ssize_t __readlink_chk(const char* path, char* buffer, std::size_t size, std::size_t space)
{
    return readlinkOr(AT_FDCWD, path, [&] {
        using Call = ssize_t (*)(const char*, char*, std::size_t, std::size_t);
        return HXSIM_REAL_AS(Call, "__readlink_chk")(path, buffer, size, space);
    });
}

HXSIM_ENTRY ssize_t __readlinkat_chk(int folder, const char* path, char* buffer, std::size_t size, std::size_t space)
{
    return readlinkOr(folder, path, [&] {
        using Call = ssize_t (*)(int, const char*, char*, std::size_t, std::size_t);
        return HXSIM_REAL_AS(Call, "__readlinkat_chk")(folder, path, buffer, size, space);
    });
}

// NOLINTBEGIN(bugprone-macro-parentheses): a type, and lists of arguments in parentheses
#define HXSIM_QUERY(Result, name, parameters, forwarded, onUnit)                                                       \
    HXSIM_ENTRY Result name parameters noexcept                                                                        \
    {                                                                                                                  \
        return queryOr(                                                                                                \
            path, [&] { return HXSIM_REAL(name) forwarded; },                                                          \
            [&](const char* real, const std::string&) { return HXSIM_REAL(name) onUnit; });                            \
    }
// NOLINTEND(bugprone-macro-parentheses)

// Extended attributes, which `ls -l` reads.
HXSIM_QUERY(ssize_t, getxattr, (const char* path, const char* attribute, void* value, std::size_t size),
            (path, attribute, value, size), (real, attribute, value, size))
HXSIM_QUERY(ssize_t, lgetxattr, (const char* path, const char* attribute, void* value, std::size_t size),
            (path, attribute, value, size), (real, attribute, value, size))
HXSIM_QUERY(ssize_t, listxattr, (const char* path, char* list, std::size_t size), (path, list, size),
            (real, list, size))
HXSIM_QUERY(ssize_t, llistxattr, (const char* path, char* list, std::size_t size), (path, list, size),
            (real, list, size))
HXSIM_QUERY(int, statfs, (const char* path, struct statfs* record), (path, record), (real, record))
HXSIM_QUERY(int, statfs64, (const char* path, struct statfs64* record), (path, record), (real, record))
HXSIM_QUERY(int, statvfs, (const char* path, struct statvfs* record), (path, record), (real, record))
HXSIM_QUERY(int, statvfs64, (const char* path, struct statvfs64* record), (path, record), (real, record))
HXSIM_QUERY(long, pathconf, (const char* path, int name), (path, name), (real, name))
HXSIM_QUERY(int, inotify_add_watch, (int watch, const char* path, std::uint32_t events), (watch, path, events),
            (watch, real, events))

HXSIM_ENTRY char* realpath(const char* path, char* into) noexcept
{
    return realpathOr(path, into, [&] { return HXSIM_REAL(realpath)(path, into); });
}

HXSIM_ENTRY char* __realpath_chk(const char* path, char* into, std::size_t space)
{
    return realpathOr(path, into, [&] {
        return HXSIM_REAL_AS(char* (*)(const char*, char*, std::size_t), "__realpath_chk")(path, into, space);
    });
}

HXSIM_ENTRY char* canonicalize_file_name(const char* path) noexcept
{
    return realpathOr(path, nullptr, [&] { return HXSIM_REAL(canonicalize_file_name)(path); });
}
