// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that read or walk directories. The C library's own calls in them do not come here: they get a path of this
// machine, and the program sees the unit's.
#include "simulator/interpose/OnPath.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <functional>
#include <glob.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

// In StatCalls.cpp.
extern "C" int __stat64_time64(const char* path, void* record) noexcept;
extern "C" int __lstat64_time64(const char* path, void* record) noexcept;

namespace hxsim {

namespace {

/// `call(directory of this machine)`, or fails with -1 for what is not a directory of the unit.
template <typename Forward, typename Call>
int inDirectoryOr(int folder, const char* path, Forward forward, Call call)
{
    const UnitPath unit = findPath(folder, path);
    if (!unit)
        return forward();
    if (unit.where.place == Link::Place::File && unit.where.present)
        return call(unit.where.file.c_str());
    errno = unit.error() != 0 ? unit.error() : ENOTDIR;
    return -1;
}

/// glob makes the calls below, which come here.
template <typename Found, typename Entry, typename Record, typename Call>
int globOnUnit(Found* found, int flags, Entry* (*next)(DIR*), int (*status)(const char*, Record*) noexcept,
               int (*linkStatus)(const char*, Record*) noexcept, Call call)
{
    const Found before = *found;
    found->gl_opendir = [](const char* path) -> void* { return ::opendir(path); };
    found->gl_closedir = [](void* folder) { ::closedir(static_cast<DIR*>(folder)); };
    found->gl_readdir = reinterpret_cast<decltype(found->gl_readdir)>(next);
    found->gl_stat = reinterpret_cast<decltype(found->gl_stat)>(status);
    found->gl_lstat = reinterpret_cast<decltype(found->gl_lstat)>(linkStatus);
    const int result = call(flags | GLOB_ALTDIRFUNC);
    found->gl_opendir = before.gl_opendir;
    found->gl_closedir = before.gl_closedir;
    found->gl_readdir = before.gl_readdir;
    found->gl_stat = before.gl_stat;
    found->gl_lstat = before.gl_lstat;
    found->gl_flags &= ~GLOB_ALTDIRFUNC;
    return result;
}

/// One walk of a thread through a directory; its callback may start another one.
template <typename Record>
class Walk {
public:
    using Visitor = std::function<int(const char*, const Record*, int, FTW*)>;
    using Real = int (*)(const char*, int (*)(const char*, const Record*, int, FTW*), int, int);

    Walk(const char* real, const std::string& shown, Visitor visitor)
        : shown_{shown}, real_{real}, visitor_{std::move(visitor)}, outer_{running}
    {
        running = this;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk() { running = outer_; }

    int run(Real walk, int descriptors, int flags) { return walk(real_.c_str(), &Walk::visit, descriptors, flags); }

private:
    static int visit(const char* file, const Record* record, int kind, FTW* position)
    {
        const Walk& walk = *running;
        const std::string path = walk.shown_ + (file + walk.real_.size());
        FTW shown = *position; // the C library continues with its own
        shown.base += static_cast<int>(path.size()) - static_cast<int>(std::strlen(file));
        if (shown.level == 0)
            shown.base = static_cast<int>(path.rfind('/')) + 1;
        return walk.visitor_(path.c_str(), record, kind, &shown);
    }

    static inline thread_local const Walk* running = nullptr;
    std::string shown_;
    std::string real_;
    Visitor visitor_;
    const Walk* outer_;
};

template <typename Record, typename Forward>
int walkOr(const char* path, typename Walk<Record>::Visitor visitor, int descriptors, int flags,
           typename Walk<Record>::Real walk, Forward forward)
{
    return queryOr(path, forward, [&](const char* real, const std::string& shown) {
        return Walk<Record>{real, shown, std::move(visitor)}.run(walk, descriptors, flags);
    });
}

/// ftw has no kind for links to nothing.
int kindOfFtw(int kind)
{
    return kind == FTW_SLN ? FTW_NS : kind;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY DIR* opendir(const char* path)
{
    DIR* result = nullptr;
    const auto open = [&](const char* real) {
        result = HXSIM_REAL(opendir)(real);
        return 0;
    };
    (void)inDirectoryOr(
        AT_FDCWD, path, [&] { return open(path); }, open);
    return result;
}

HXSIM_ENTRY int chdir(const char* path) noexcept
{
    return inDirectoryOr(
        AT_FDCWD, path, [&] { return HXSIM_REAL(chdir)(path); },
        [](const char* real) { return HXSIM_REAL(chdir)(real); });
}

// NOLINTBEGIN(bugprone-macro-parentheses): types
#define HXSIM_SCANDIR(name, Entry)                                                                                     \
    HXSIM_ENTRY int name(const char* path, Entry*** entries, int (*filter)(const Entry*),                              \
                         int (*compare)(const Entry**, const Entry**))                                                 \
    {                                                                                                                  \
        return inDirectoryOr(                                                                                          \
            AT_FDCWD, path, [&] { return HXSIM_REAL(name)(path, entries, filter, compare); },                          \
            [&](const char* real) { return HXSIM_REAL(name)(real, entries, filter, compare); });                       \
    }

HXSIM_SCANDIR(scandir, dirent)
HXSIM_SCANDIR(scandir64, dirent64)

#define HXSIM_SCANDIRAT(name, Entry)                                                                                   \
    HXSIM_ENTRY int name(int folder, const char* path, Entry*** entries, int (*filter)(const Entry*),                  \
                         int (*compare)(const Entry**, const Entry**))                                                 \
    {                                                                                                                  \
        return inDirectoryOr(                                                                                          \
            folder, path, [&] { return HXSIM_REAL(name)(folder, path, entries, filter, compare); },                    \
            [&](const char* real) { return HXSIM_REAL(name)(AT_FDCWD, real, entries, filter, compare); });             \
    }

HXSIM_SCANDIRAT(scandirat, dirent)
HXSIM_SCANDIRAT(scandirat64, dirent64)

#define HXSIM_GLOB(name, Found, next, status, linkStatus)                                                              \
    HXSIM_ENTRY int name(const char* pattern, int flags, int (*failed)(const char*, int), Found* found)                \
    {                                                                                                                  \
        using Call = int (*)(const char*, int, int (*)(const char*, int), Found*);                                     \
        const auto call = [&](int used) { return HXSIM_REAL_AS(Call, #name)(pattern, used, failed, found); };          \
        if ((flags & GLOB_ALTDIRFUNC) != 0 || Link::current() == nullptr)                                              \
            return call(flags);                                                                                        \
        return globOnUnit(found, flags, next, status, linkStatus, call);                                               \
    }

HXSIM_GLOB(glob, glob_t, ::readdir, ::stat, ::lstat)
HXSIM_GLOB(glob64, glob64_t, ::readdir64, ::stat64, ::lstat64)

#define HXSIM_NFTW(name, Record)                                                                                       \
    HXSIM_ENTRY int name(const char* path, int (*visitor)(const char*, const Record*, int, FTW*), int descriptors,     \
                         int flags)                                                                                    \
    {                                                                                                                  \
        const auto real = HXSIM_REAL_AS(Walk<Record>::Real, #name);                                                    \
        return walkOr<Record>(path, visitor, descriptors, flags, real,                                                 \
                              [&] { return real(path, visitor, descriptors, flags); });                                \
    }

#define HXSIM_FTW(name, walkName, Record)                                                                              \
    HXSIM_ENTRY int name(const char* path, int (*visitor)(const char*, const Record*, int), int descriptors)           \
    {                                                                                                                  \
        using Call = int (*)(const char*, int (*)(const char*, const Record*, int), int);                              \
        return walkOr<Record>(                                                                                         \
            path,                                                                                                      \
            [visitor](const char* file, const Record* record, int kind, FTW* /*position*/) {                           \
                return visitor(file, record, kindOfFtw(kind));                                                         \
            },                                                                                                         \
            descriptors, 0, HXSIM_REAL_AS(Walk<Record>::Real, #walkName),                                              \
            [&] { return HXSIM_REAL_AS(Call, #name)(path, visitor, descriptors); });                                   \
    }
// NOLINTEND(bugprone-macro-parentheses)

HXSIM_NFTW(nftw, struct stat)
HXSIM_NFTW(nftw64, struct stat64)
HXSIM_FTW(ftw, nftw, struct stat)
HXSIM_FTW(ftw64, nftw64, struct stat64)
#if defined(__i386__)
HXSIM_GLOB(__glob64_time64, glob64_t, ::readdir64, ::__stat64_time64, ::__lstat64_time64)
HXSIM_NFTW(__nftw64_time64, void)
HXSIM_FTW(__ftw64_time64, __nftw64_time64, void)
#endif
