// SPDX-License-Identifier: LicenseRef-HXAux
// C streams, and temporary files.
#include "simulator/interpose/Descriptors.h"
#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Generated.h"
#include "simulator/interpose/Paths.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace hxsim {

namespace {

/// The pattern on this machine for one in the unit's root directory, which is the unit's folder, or in a directory of
/// the unit; `unit` is then where.
std::string realPattern(const char* pattern, UnitPath& unit)
{
    Link* const link = Link::current();
    if (link != nullptr && pattern[0] == '/' && std::strchr(pattern + 1, '/') == nullptr) {
        unit = {link, pattern};
        return link->root() + pattern;
    }
    unit = findPath(AT_FDCWD, pattern);
    return unit.where.file;
}

/// `make(pattern)` creates a file, or a directory, and writes its name over the pattern; its result is a descriptor or
/// 0, or -1.
template <typename Make>
int makeTemporary(char* pattern, const char* call, Make make)
{
    UnitPath unit;
    std::string real = realPattern(pattern, unit);
    if (real.empty())
        return make(pattern);
    KeepErrno keep;
    const std::string shown = unit.path;
    int result = -unit.link->fault(shown, call);
    if (result == 0) {
        result = make(real.data());
        if (result < 0)
            result = -errno;
        const std::string name = real.substr(real.rfind('/') + 1);
        std::memcpy(pattern + std::strlen(pattern) - name.size(), name.data(), name.size());
        rememberGenerated(shown.substr(0, shown.size() - name.size()) + name, shown);
    }
    unit.link->note(shown, call, result < 0 ? -result : 0);
    return keep.answer(result);
}

/// An attribute's text in a stream of its own: C++ streams need a stream with a descriptor.
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
        std::fwrite(text.data(), 1, static_cast<std::size_t>(size), stream);
        std::rewind(stream);
    }
    return stream;
}

/// Failures can then be injected into programs that use the stream's descriptor.
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

FILE* openStream(const UnitPath& unit, const char* mode)
{
    Link& link = *unit.link;
    const std::string action = std::string{"fopen "} + mode;
    const bool isFile = unit.where.place == Link::Place::File;
    const int absent = unit.error();
    const int error = absent != 0 ? absent : link.fault(unit.path, "fopen");
    FILE* stream = nullptr;
    bool recorded = false;
    if (error != 0)
        errno = error;
    else if (isFile)
        stream = streamOfFile(unit.path, mode, unit.where.file);
    else if (unit.where.text && mode[0] == 'r' && std::strchr(mode, '+') == nullptr)
        stream = streamOfAttribute(link, unit.path, recorded);
    else
        errno = EACCES;
    if (!recorded)
        link.note(unit.path, action, stream == nullptr ? errno : 0);
    return stream;
}

/// The mode without 'x': the file exists by now.
std::string withoutExclusion(std::string mode)
{
    std::erase(mode, 'x');
    return mode;
}

/// The program's stream gets the file of another one, which is gone afterwards.
FILE* takeOver(FILE* stream, FILE* opened, const char* mode)
{
    const int from = fileno(opened);
    const std::string file = "/proc/self/fd/" + std::to_string(from);
    FILE* const result = HXSIM_REAL(freopen64)(file.c_str(), withoutExclusion(mode).c_str(), stream);
    if (result != nullptr)
        Descriptors::table().copy(from, fileno(result));
    (void)Descriptors::table().remove(from);
    HXSIM_REAL(fclose)(opened);
    return result;
}

template <typename Forward>
FILE* freopenOr(const char* path, const char* mode, FILE* stream, Forward forward)
{
    const UnitPath unit = findPath(AT_FDCWD, path);
    if (!unit && path != nullptr)
        guardTheMachine(path);
    const Descriptors::Removed replaced =
        path == nullptr ? Descriptors::Removed{} : Descriptors::table().remove(fileno(stream));
    if (!unit) {
        FILE* const result = forward();
        replaced.release();
        return result;
    }
    KeepErrno keep;
    FILE* const opened = openStream(unit, mode);
    const int error = opened == nullptr ? errno : 0;
    FILE* const result = opened == nullptr ? nullptr : takeOver(stream, opened, mode);
    if (opened == nullptr)
        HXSIM_REAL(fclose)(stream);
    replaced.release();
    if (error != 0)
        errno = error;
    return result == nullptr ? keep.pass(result) : result;
}

template <typename Forward>
FILE* fopenOr(const char* path, const char* mode, Forward forward)
{
    const UnitPath unit = findPath(AT_FDCWD, path);
    if (!unit) {
        guardTheMachine(path);
        return forward();
    }
    KeepErrno keep;
    FILE* const stream = openStream(unit, mode);
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

HXSIM_ENTRY FILE* freopen(const char* path, const char* mode, FILE* stream)
{
    return freopenOr(path, mode, stream, [&] { return HXSIM_REAL(freopen)(path, mode, stream); });
}

HXSIM_ENTRY FILE* freopen64(const char* path, const char* mode, FILE* stream)
{
    return freopenOr(path, mode, stream, [&] { return HXSIM_REAL(freopen64)(path, mode, stream); });
}

HXSIM_ENTRY int fclose(FILE* stream)
{
    const Descriptors::Removed removed =
        stream == nullptr ? Descriptors::Removed{} : Descriptors::table().remove(fileno(stream));
    if (removed.descriptor == nullptr)
        return HXSIM_REAL(fclose)(stream);
    KeepErrno keep;
    Link* const link = Link::current();
    const bool isFile = removed.descriptor->device == nullptr;
    const int error = link == nullptr || !isFile ? 0 : link->fault(removed.descriptor->path, "fclose");
    const int result = HXSIM_REAL(fclose)(stream);
    if (result < 0)
        (void)keep.pass(result);
    removed.release();
    return error != 0 ? keep.answer(-error) : result;
}

#define HXSIM_MKSTEMP(name, parameters, forwarded)                                                                     \
    HXSIM_ENTRY int name parameters                                                                                    \
    {                                                                                                                  \
        return makeTemporary(pattern, "mkstemp", [&](char* real) { return HXSIM_REAL(name) forwarded; });              \
    }

HXSIM_MKSTEMP(mkstemp, (char* pattern), (real))
HXSIM_MKSTEMP(mkstemp64, (char* pattern), (real))
HXSIM_MKSTEMP(mkostemp, (char* pattern, int flags), (real, flags))
HXSIM_MKSTEMP(mkostemp64, (char* pattern, int flags), (real, flags))
HXSIM_MKSTEMP(mkstemps, (char* pattern, int suffix), (real, suffix))
HXSIM_MKSTEMP(mkstemps64, (char* pattern, int suffix), (real, suffix))
HXSIM_MKSTEMP(mkostemps, (char* pattern, int suffix, int flags), (real, suffix, flags))
HXSIM_MKSTEMP(mkostemps64, (char* pattern, int suffix, int flags), (real, suffix, flags))

HXSIM_ENTRY char* mkdtemp(char* pattern) noexcept
{
    const auto make = [](char* real) { return HXSIM_REAL(mkdtemp)(real) == nullptr ? -1 : 0; };
    return makeTemporary(pattern, "mkdtemp", make) < 0 ? nullptr : pattern;
}
