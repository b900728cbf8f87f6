// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that name a path without opening it, and C streams.
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Generated.h"

namespace hxsim {

namespace {

/// The machine's file whose properties a file of the unit shows: a character device, or a small file.
std::string standIn(Link& link, bool text)
{
    if (!text)
        return "/dev/null";
    const std::string file = link.folder() + "/attribute";
    const int fd = HXSIM_REAL(open64)(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd >= 0) {
        (void)!ftruncate(fd, 4096); // the size that sysfs gives its attributes
        HXSIM_REAL(close)(fd);
    }
    return file;
}

/// Does `call(path on this machine)` for a path of the unit; `outside` tells that it is none.
template <typename Call>
int onPath(const char* path, const std::string& action, bool& outside, Call call)
{
    outside = true;
    Link* const link = path != nullptr && path[0] == '/' ? Link::current() : nullptr;
    if (link == nullptr)
        return -1;
    KeepErrno keep;
    const Link::Where where = link->locate(path);
    const bool generated = where.place == Link::Place::Outside && isGenerated(path);
    if (where.place == Link::Place::Outside && !generated)
        return -1;
    outside = false;
    int result = where.present ? -link->fault(path, action.substr(0, action.find(' '))) : -ENOENT;
    if (result == 0) {
        const std::string real = generated            ? link->root() + path
                                 : where.file.empty() ? standIn(*link, where.text)
                                                      : where.file;
        result = call(real.c_str()) == 0 ? 0 : -errno;
    }
    link->note(shownName(path), action, -result);
    return keep.answer(result);
}

template <typename Forward, typename Call>
int onPathOr(const char* path, const std::string& action, Forward forward, Call call)
{
    bool outside = false;
    const int result = onPath(path, action, outside, call);
    return outside ? forward() : result;
}

std::string octal(const char* call, unsigned mode)
{
    char text[32];
    std::snprintf(text, sizeof text, "%s %#o", call, mode);
    return text;
}

/// The file whose properties a descriptor shows, or empty when the descriptor itself does.
std::string shownBy(int fd)
{
    const std::shared_ptr<Descriptor> descriptor = Descriptors::table().find(fd);
    Link* const link = Link::current();
    if (descriptor == nullptr || descriptor->device == nullptr || link == nullptr)
        return {};
    return standIn(*link, descriptor->text);
}

/// mkstemp in the unit's root directory makes the file in the unit's folder.
int makeTemporary(char* pattern, bool& outside)
{
    Link* const link = Link::current();
    outside = link == nullptr || pattern[0] != '/' || std::strchr(pattern + 1, '/') != nullptr;
    if (outside)
        return -1;
    KeepErrno keep;
    const std::string shown = pattern;
    std::string real = link->root() + pattern;
    int result = -link->fault(shown, "mkstemp");
    if (result == 0) {
        result = HXSIM_REAL(mkstemp64)(real.data());
        if (result < 0)
            result = -errno;
        std::memcpy(pattern, real.data() + link->root().size(), shown.size());
        rememberGenerated(pattern, shown);
    }
    link->note(shown, "mkstemp", result < 0 ? -result : 0);
    return keep.answer(result);
}

/// An attribute's text in a stream of its own: C++ streams ask a stream for its descriptor, so it must have one.
FILE* streamOfAttribute(Link& link, const std::string& path, bool& refused)
{
    Link::Opened opened = link.open(path, O_RDONLY);
    refused = opened.descriptor < 0;
    if (refused) {
        errno = -opened.descriptor;
        return nullptr;
    }
    std::string text(65536, '\0');
    const std::int64_t size = opened.file->read({reinterpret_cast<std::uint8_t*>(text.data()), text.size()}, true);
    opened.file->close();
    HXSIM_REAL(close)(opened.descriptor);
    FILE* const stream = HXSIM_REAL(tmpfile64)();
    if (stream != nullptr && size > 0) {
        std::fwrite(text.data(), 1, std::size_t(size), stream);
        std::rewind(stream);
    }
    return stream;
}

/// Programs that read and write by the stream's descriptor can then be made to fail.
FILE* streamOfFile(const std::string& path, const char* mode, const std::string& file)
{
    FILE* const stream = HXSIM_REAL(fopen64)(file.c_str(), mode);
    if (stream == nullptr)
        return nullptr;
    auto descriptor = std::make_shared<Descriptor>(path, 0);
    descriptor->text = true;
    descriptor->stream = true;
    Descriptors::table().add(fileno(stream), std::move(descriptor));
    return stream;
}

FILE* openStream(Link& link, const std::string& path, const char* mode, const Link::Where& where)
{
    const std::string action = std::string{"fopen "} + mode;
    const int error = where.present ? link.fault(path, "fopen") : ENOENT;
    FILE* stream = nullptr;
    bool recorded = false;
    if (error != 0)
        errno = error;
    else if (where.place == Link::Place::File)
        stream = streamOfFile(path, mode, where.file);
    else if (where.text && mode[0] == 'r' && std::strchr(mode, '+') == nullptr)
        stream = streamOfAttribute(link, path, recorded);
    else
        errno = EACCES;
    if (!recorded)
        link.note(path, action, stream == nullptr ? errno : 0);
    return stream;
}

template <typename Forward>
FILE* fopenOr(const char* path, const char* mode, Forward forward)
{
    Link* const link = path != nullptr && path[0] == '/' ? Link::current() : nullptr;
    if (link == nullptr) {
        if (path != nullptr && isProductPath(path))
            dieOutsideAUnit(path);
        return forward();
    }
    KeepErrno keep;
    const Link::Where where = link->locate(path);
    if (where.place == Link::Place::Outside)
        return keep.pass(forward());
    FILE* const stream = openStream(*link, path, mode, where);
    return stream == nullptr ? keep.pass(stream) : stream;
}

} // namespace

} // namespace hxsim

using namespace hxsim;

HXSIM_ENTRY FILE* fopen(const char* path, const char* mode)
{
    return fopenOr(path, mode, [&] { return HXSIM_REAL(fopen)(path, mode); });
}

HXSIM_ENTRY FILE* fopen64(const char* path, const char* mode)
{
    return fopenOr(path, mode, [&] { return HXSIM_REAL(fopen64)(path, mode); });
}

HXSIM_ENTRY int fclose(FILE* stream)
{
    bool last = false;
    const std::shared_ptr<Descriptor> descriptor =
        stream == nullptr ? nullptr : Descriptors::table().remove(fileno(stream), last);
    if (descriptor == nullptr)
        return HXSIM_REAL(fclose)(stream);
    KeepErrno keep;
    Link* const link = Link::current();
    const int error = link == nullptr ? 0 : link->fault(descriptor->path, "fclose");
    const int result = HXSIM_REAL(fclose)(stream);
    return error != 0 ? keep.answer(-error) : keep.pass(result);
}

HXSIM_ENTRY int mkstemp(char* pattern)
{
    bool outside = false;
    const int result = makeTemporary(pattern, outside);
    return outside ? HXSIM_REAL(mkstemp)(pattern) : result;
}

HXSIM_ENTRY int mkstemp64(char* pattern)
{
    bool outside = false;
    const int result = makeTemporary(pattern, outside);
    return outside ? HXSIM_REAL(mkstemp64)(pattern) : result;
}

HXSIM_ENTRY int access(const char* path, int mode) noexcept
{
    return onPathOr(
        path, "access " + std::to_string(mode), [&] { return HXSIM_REAL(access)(path, mode); },
        [&](const char* real) { return HXSIM_REAL(access)(real, mode); });
}

HXSIM_ENTRY int unlink(const char* path) noexcept
{
    return onPathOr(
        path, "unlink", [&] { return HXSIM_REAL(unlink)(path); },
        [&](const char* real) {
            if (std::strcmp(real, "/dev/null") != 0)
                return HXSIM_REAL(unlink)(real);
            errno = EPERM; // the unit's devices stay
            return -1;
        });
}

HXSIM_ENTRY int mkfifo(const char* path, mode_t mode) noexcept
{
    return onPathOr(
        path, octal("mkfifo", mode),
        [&] {
            if (Link::current() == nullptr && isProductPath(path))
                dieOutsideAUnit(path);
            return HXSIM_REAL(mkfifo)(path, mode);
        },
        [&](const char* real) { return HXSIM_REAL(mkfifo)(real, mode); });
}

// Every spelling of stat: a path of the unit shows its stand-in's properties.

#define HXSIM_STAT(name, Record)                                                                                       \
    HXSIM_ENTRY int name(const char* path, Record* record) noexcept                                                    \
    {                                                                                                                  \
        using Call = int (*)(const char*, Record*);                                                                    \
        return onPathOr(                                                                                               \
            path, "stat", [&] { return HXSIM_REAL_AS(Call, #name)(path, record); },                                    \
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

// Programs built with an older C library say which form of the record they mean.
#define HXSIM_XSTAT(name, Record)                                                                                      \
    HXSIM_ENTRY int name(int form, const char* path, Record* record) noexcept                                          \
    {                                                                                                                  \
        using Call = int (*)(int, const char*, Record*);                                                               \
        return onPathOr(                                                                                               \
            path, "stat", [&] { return HXSIM_REAL_AS(Call, #name)(form, path, record); },                              \
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
#endif
