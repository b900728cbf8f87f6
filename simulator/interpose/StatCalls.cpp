// SPDX-License-Identifier: LicenseRef-HXAux
// Every variant of stat: a path of the unit shows its substitute's properties, and a descriptor those of its path.
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/OnPath.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>

namespace hxsim {

namespace {

/// The file whose properties a descriptor shows, or empty when the descriptor itself does.
std::string shownBy(int fd)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().findDevice(fd);
    Link* const link = Link::current();
    return descriptor == nullptr || link == nullptr ? "" : standIn(*link, descriptor->text);
}

/// fstatat and statx with an empty path mean the descriptor.
template <typename Forward, typename Call>
int statAt(int folder, const char* path, int flags, Forward forward, Call call)
{
    if ((flags & AT_EMPTY_PATH) == 0 || (path != nullptr && *path != '\0'))
        return onPathOr(folder, path, "stat", forward, call);
    const std::string shown = shownBy(folder);
    return shown.empty() ? forward() : call(shown.c_str());
}

} // namespace

} // namespace hxsim

using namespace hxsim;

// NOLINTBEGIN(bugprone-macro-parentheses): types
#define HXSIM_STAT(name, Record)                                                                                       \
    HXSIM_ENTRY int name(const char* path, Record* record) noexcept                                                    \
    {                                                                                                                  \
        using Call = int (*)(const char*, Record*);                                                                    \
        return onPathOr(                                                                                               \
            AT_FDCWD, path, "stat", [&] { return HXSIM_REAL_AS(Call, #name)(path, record); },                          \
            [&](const char* real) { return HXSIM_REAL_AS(Call, #name)(real, record); });                               \
    }

#define HXSIM_FSTAT(name, pathName, Record)                                                                            \
    HXSIM_ENTRY int name(int fd, Record* record) noexcept                                                              \
    {                                                                                                                  \
        const std::string shown = shownBy(fd);                                                                         \
        if (shown.empty())                                                                                             \
            return HXSIM_REAL_AS(int (*)(int, Record*), #name)(fd, record);                                            \
        return HXSIM_REAL_AS(int (*)(const char*, Record*), #pathName)(shown.c_str(), record);                         \
    }

// Programs built with an older C library pass the version of the record.
#define HXSIM_XSTAT(name, Record)                                                                                      \
    HXSIM_ENTRY int name(int form, const char* path, Record* record) noexcept                                          \
    {                                                                                                                  \
        using Call = int (*)(int, const char*, Record*);                                                               \
        return onPathOr(                                                                                               \
            AT_FDCWD, path, "stat", [&] { return HXSIM_REAL_AS(Call, #name)(form, path, record); },                    \
            [&](const char* real) { return HXSIM_REAL_AS(Call, #name)(form, real, record); });                         \
    }

#define HXSIM_FXSTAT(name, pathName, Record)                                                                           \
    HXSIM_ENTRY int name(int form, int fd, Record* record) noexcept                                                    \
    {                                                                                                                  \
        const std::string shown = shownBy(fd);                                                                         \
        if (shown.empty())                                                                                             \
            return HXSIM_REAL_AS(int (*)(int, int, Record*), #name)(form, fd, record);                                 \
        return HXSIM_REAL_AS(int (*)(int, const char*, Record*), #pathName)(form, shown.c_str(), record);              \
    }

#define HXSIM_STATAT(name, Record)                                                                                     \
    HXSIM_ENTRY int name(int folder, const char* path, Record* record, int flags) noexcept                             \
    {                                                                                                                  \
        using Call = int (*)(int, const char*, Record*, int);                                                          \
        return statAt(                                                                                                 \
            folder, path, flags, [&] { return HXSIM_REAL_AS(Call, #name)(folder, path, record, flags); },              \
            [&](const char* real) { return HXSIM_REAL_AS(Call, #name)(AT_FDCWD, real, record, 0); });                  \
    }

#define HXSIM_XSTATAT(name, Record)                                                                                    \
    HXSIM_ENTRY int name(int form, int folder, const char* path, Record* record, int flags) noexcept                   \
    {                                                                                                                  \
        using Call = int (*)(int, int, const char*, Record*, int);                                                     \
        return statAt(                                                                                                 \
            folder, path, flags, [&] { return HXSIM_REAL_AS(Call, #name)(form, folder, path, record, flags); },        \
            [&](const char* real) { return HXSIM_REAL_AS(Call, #name)(form, AT_FDCWD, real, record, 0); });            \
    }
// NOLINTEND(bugprone-macro-parentheses)

HXSIM_ENTRY int statx(int folder, const char* path, int flags, unsigned mask, struct statx* record) noexcept
{
    return statAt(
        folder, path, flags, [&] { return HXSIM_REAL(statx)(folder, path, flags, mask, record); },
        [&](const char* real) { return HXSIM_REAL(statx)(AT_FDCWD, real, 0, mask, record); });
}

HXSIM_STATAT(fstatat, struct stat)
HXSIM_STATAT(fstatat64, struct stat64)
HXSIM_XSTATAT(__fxstatat, struct stat)
HXSIM_XSTATAT(__fxstatat64, struct stat64)
HXSIM_STAT(stat, struct stat)
HXSIM_STAT(lstat, struct stat)
HXSIM_STAT(stat64, struct stat64)
HXSIM_STAT(lstat64, struct stat64)
HXSIM_FSTAT(fstat, stat, struct stat)
HXSIM_FSTAT(fstat64, stat64, struct stat64)
HXSIM_XSTAT(__xstat, struct stat)
HXSIM_XSTAT(__lxstat, struct stat)
HXSIM_XSTAT(__xstat64, struct stat64)
HXSIM_XSTAT(__lxstat64, struct stat64)
HXSIM_FXSTAT(__fxstat, __xstat, struct stat)
HXSIM_FXSTAT(__fxstat64, __xstat64, struct stat64)
#if defined(__i386__)
HXSIM_STAT(__stat64_time64, void)
HXSIM_STAT(__lstat64_time64, void)
HXSIM_FSTAT(__fstat64_time64, __stat64_time64, void)
HXSIM_STATAT(__fstatat64_time64, void)
#endif
