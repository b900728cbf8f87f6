// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that create, change or remove files by path: on the unit's own files, never on the machine's. The unit's
// devices stay unchanged.
#include "simulator/interpose/OnPath.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

namespace hxsim {

namespace {

/// The same for a path to create: it exists on the unit, or can be created in the unit's directory.
template <typename Forward, typename Call>
int changeOr(int folder, const char* path, const char* action, Forward forward, Call call)
{
    const UnitPath unit = findPath(folder, path);
    if (!unit || unit.where.place == Link::Place::File)
        return onPathOr(folder, path, action, forward, call);
    return onPathOr(folder, path, action, forward, [](const char*) {
        errno = EPERM;
        return -1;
    });
}

/// Within the unit's files, or within the machine's; across the two it fails as across file systems.
template <typename Forward, typename Call>
int changeBothOr(int fromFolder, const char* from, int toFolder, const char* to, const char* action, Forward forward,
                 Call call)
{
    const UnitPath source = findPath(fromFolder, from);
    const UnitPath target = findPath(toFolder, to);
    if (!source && !target)
        return forward();
    return changeOr(source ? fromFolder : toFolder, source ? from : to, action, forward, [&](const char* /*real*/) {
        if (source.where.place == Link::Place::File && target.where.place == Link::Place::File)
            return call(source.where.file.c_str(), target.where.file.c_str());
        errno = EXDEV;
        return -1;
    });
}

} // namespace

} // namespace hxsim

using namespace hxsim;

// NOLINTBEGIN(bugprone-macro-parentheses): lists of arguments, in parentheses already
#define HXSIM_CHANGE_BY(callOr, name, parameters, folder, action, forwarded, onUnit)                                   \
    HXSIM_ENTRY int name parameters noexcept                                                                           \
    {                                                                                                                  \
        return callOr(                                                                                                 \
            folder, path, action, [&] { return HXSIM_REAL(name) forwarded; },                                          \
            [&](const char* real) { return HXSIM_REAL(name) onUnit; });                                                \
    }
// NOLINTEND(bugprone-macro-parentheses)

#define HXSIM_CHANGE(...) HXSIM_CHANGE_BY(changeOr, __VA_ARGS__)
/// A device is in the way.
#define HXSIM_CREATE(...) HXSIM_CHANGE_BY(onPathOr, __VA_ARGS__)

// Programs built with an older C library pass the version of the device's number.
extern "C" int __xmknod(int form, const char* path, mode_t mode, dev_t* device) noexcept;
extern "C" int __xmknodat(int form, int folder, const char* path, mode_t mode, dev_t* device) noexcept;

HXSIM_CREATE(mkfifoat, (int folder, const char* path, mode_t mode), folder, "mkfifo", (folder, path, mode),
             (AT_FDCWD, real, mode))
HXSIM_CREATE(mknod, (const char* path, mode_t mode, dev_t device), AT_FDCWD, "mknod", (path, mode, device),
             (real, mode, device))
HXSIM_CREATE(mknodat, (int folder, const char* path, mode_t mode, dev_t device), folder, "mknod",
             (folder, path, mode, device), (AT_FDCWD, real, mode, device))
HXSIM_CREATE(__xmknod, (int form, const char* path, mode_t mode, dev_t* device), AT_FDCWD, "mknod",
             (form, path, mode, device), (form, real, mode, device))
HXSIM_CREATE(__xmknodat, (int form, int folder, const char* path, mode_t mode, dev_t* device), folder, "mknod",
             (form, folder, path, mode, device), (form, AT_FDCWD, real, mode, device))
HXSIM_CHANGE(mkdir, (const char* path, mode_t mode), AT_FDCWD, "mkdir", (path, mode), (real, mode))
HXSIM_CHANGE(mkdirat, (int folder, const char* path, mode_t mode), folder, "mkdir", (folder, path, mode),
             (AT_FDCWD, real, mode))
HXSIM_CHANGE(chmod, (const char* path, mode_t mode), AT_FDCWD, "chmod", (path, mode), (real, mode))
HXSIM_CHANGE(fchmodat, (int folder, const char* path, mode_t mode, int flags), folder, "chmod",
             (folder, path, mode, flags), (AT_FDCWD, real, mode, flags))
HXSIM_CHANGE(chown, (const char* path, uid_t user, gid_t group), AT_FDCWD, "chown", (path, user, group),
             (real, user, group))
HXSIM_CHANGE(lchown, (const char* path, uid_t user, gid_t group), AT_FDCWD, "chown", (path, user, group),
             (real, user, group))
HXSIM_CHANGE(fchownat, (int folder, const char* path, uid_t user, gid_t group, int flags), folder, "chown",
             (folder, path, user, group, flags), (AT_FDCWD, real, user, group, flags))
HXSIM_CHANGE(truncate, (const char* path, off_t size), AT_FDCWD, "truncate", (path, size), (real, size))
HXSIM_CHANGE(truncate64, (const char* path, off64_t size), AT_FDCWD, "truncate", (path, size), (real, size))
HXSIM_CHANGE(rmdir, (const char* path), AT_FDCWD, "rmdir", (path), (real))
HXSIM_CHANGE(unlink, (const char* path), AT_FDCWD, "unlink", (path), (real))
HXSIM_CHANGE(remove, (const char* path), AT_FDCWD, "unlink", (path), (real))
HXSIM_CHANGE(unlinkat, (int folder, const char* path, int flags), folder, flags == AT_REMOVEDIR ? "rmdir" : "unlink",
             (folder, path, flags), (AT_FDCWD, real, flags))
HXSIM_CHANGE(symlink, (const char* to, const char* path), AT_FDCWD, "symlink", (to, path), (to, real))
HXSIM_CHANGE(symlinkat, (const char* to, int folder, const char* path), folder, "symlink", (to, folder, path),
             (to, AT_FDCWD, real))
HXSIM_CHANGE(lchmod, (const char* path, mode_t mode), AT_FDCWD, "chmod", (path, mode), (real, mode))
HXSIM_CHANGE(setxattr, (const char* path, const char* attribute, const void* value, std::size_t size, int flags),
             AT_FDCWD, "setxattr", (path, attribute, value, size, flags), (real, attribute, value, size, flags))
HXSIM_CHANGE(lsetxattr, (const char* path, const char* attribute, const void* value, std::size_t size, int flags),
             AT_FDCWD, "setxattr", (path, attribute, value, size, flags), (real, attribute, value, size, flags))
HXSIM_CHANGE(removexattr, (const char* path, const char* attribute), AT_FDCWD, "removexattr", (path, attribute),
             (real, attribute))
HXSIM_CHANGE(lremovexattr, (const char* path, const char* attribute), AT_FDCWD, "removexattr", (path, attribute),
             (real, attribute))
HXSIM_CHANGE(utimensat, (int folder, const char* path, const timespec* times, int flags), folder, "utime",
             (folder, path, times, flags), (AT_FDCWD, real, times, flags))
HXSIM_CHANGE(futimesat, (int folder, const char* path, const timeval* times), folder, "utime", (folder, path, times),
             (AT_FDCWD, real, times))
HXSIM_CHANGE(utimes, (const char* path, const timeval* times), AT_FDCWD, "utime", (path, times), (real, times))
HXSIM_CHANGE(lutimes, (const char* path, const timeval* times), AT_FDCWD, "utime", (path, times), (real, times))
HXSIM_CHANGE(utime, (const char* path, const utimbuf* times), AT_FDCWD, "utime", (path, times), (real, times))
#if defined(__i386__)
extern "C" int __utimensat64(int folder, const char* path, const void* times, int flags) noexcept;
extern "C" int __futimesat64(int folder, const char* path, const void* times) noexcept;
extern "C" int __utimes64(const char* path, const void* times) noexcept;
extern "C" int __lutimes64(const char* path, const void* times) noexcept;
extern "C" int __utime64(const char* path, const void* times) noexcept;
HXSIM_CHANGE(__utimensat64, (int folder, const char* path, const void* times, int flags), folder, "utime",
             (folder, path, times, flags), (AT_FDCWD, real, times, flags))
HXSIM_CHANGE(__futimesat64, (int folder, const char* path, const void* times), folder, "utime", (folder, path, times),
             (AT_FDCWD, real, times))
HXSIM_CHANGE(__utimes64, (const char* path, const void* times), AT_FDCWD, "utime", (path, times), (real, times))
HXSIM_CHANGE(__lutimes64, (const char* path, const void* times), AT_FDCWD, "utime", (path, times), (real, times))
HXSIM_CHANGE(__utime64, (const char* path, const void* times), AT_FDCWD, "utime", (path, times), (real, times))
#endif

HXSIM_ENTRY int rename(const char* from, const char* to) noexcept
{
    return changeBothOr(
        AT_FDCWD, from, AT_FDCWD, to, "rename", [&] { return HXSIM_REAL(rename)(from, to); },
        [](const char* source, const char* target) { return HXSIM_REAL(rename)(source, target); });
}

HXSIM_ENTRY int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept
{
    return changeBothOr(
        fromFolder, from, toFolder, to, "rename", [&] { return HXSIM_REAL(renameat)(fromFolder, from, toFolder, to); },
        [](const char* source, const char* target) { return HXSIM_REAL(rename)(source, target); });
}

HXSIM_ENTRY int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept
{
    return changeBothOr(
        fromFolder, from, toFolder, to, "rename",
        [&] { return HXSIM_REAL(renameat2)(fromFolder, from, toFolder, to, flags); },
        [&](const char* source, const char* target) {
            return HXSIM_REAL(renameat2)(AT_FDCWD, source, AT_FDCWD, target, flags);
        });
}

HXSIM_ENTRY int link(const char* from, const char* to) noexcept
{
    return changeBothOr(
        AT_FDCWD, from, AT_FDCWD, to, "link", [&] { return HXSIM_REAL(link)(from, to); },
        [](const char* source, const char* target) { return HXSIM_REAL(link)(source, target); });
}

HXSIM_ENTRY int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept
{
    return changeBothOr(
        fromFolder, from, toFolder, to, "link",
        [&] { return HXSIM_REAL(linkat)(fromFolder, from, toFolder, to, flags); },
        [&](const char* source, const char* target) {
            return HXSIM_REAL(linkat)(AT_FDCWD, source, AT_FDCWD, target, flags);
        });
}
