// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Paths.h"

#include "simulator/interpose/Entry.h"

#include <climits>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace hxsim {

namespace {

/// Where a relative path begins; empty when that is not a directory.
std::string directory(int folder)
{
    std::array<char, PATH_MAX> text{};
    if (folder == AT_FDCWD)
        return getcwd(text.data(), text.size()) == nullptr ? "" : text.data();
    const std::string link = "/proc/self/fd/" + std::to_string(folder);
    const ssize_t size = HXSIM_REAL(readlink)(link.c_str(), text.data(), text.size());
    return size > 0 && text[0] == '/' ? std::string(text.data(), static_cast<std::size_t>(size)) : "";
}

bool isPlain(const std::string& path)
{
    const std::string text = path + '/';
    for (const char* part : {"//", "/./", "/../"})
        if (text.find(part) != std::string::npos)
            return false;
    return true;
}

/// Resolves a directory on this machine; a missing one is resolved lexically.
std::string resolved(const std::string& parent)
{
    std::array<char, PATH_MAX> text{};
    if (HXSIM_REAL(realpath)(parent.c_str(), text.data()) != nullptr)
        return text.data();
    std::string normal = std::filesystem::path{parent}.lexically_normal();
    while (normal.size() > 1 && normal.back() == '/')
        normal.pop_back();
    return normal;
}

/// Whether a path may be the unit's: ends in one of its names, or leads through one of its own files.
bool mayBeOn(Link& link, std::string_view path)
{
    std::size_t end = path.rfind('/');
    if (link.hasName(path.substr(end + 1)))
        return true;
    for (; end != std::string_view::npos && end != 0; end = path.rfind('/', end - 1)) {
        const std::size_t begin = path.rfind('/', end - 1) + 1;
        if (link.hasFileName(path.substr(begin, end - begin)))
            return true;
    }
    return false;
}

bool isDirectoryItself(std::string_view name)
{
    return name == "." || name == "..";
}

/// The directory that contains one of the unit's, which a list of all entries shows.
Link::Where above(Link::Where directory)
{
    if (directory.place != Link::Place::File)
        return {};
    directory.file += "/..";
    return directory;
}

std::string absolute(int folder, std::string_view path)
{
    if (path.front() == '/')
        return std::string{path};
    const std::string base = directory(folder);
    return base.empty() ? "" : base + '/' + std::string{path};
}

} // namespace

int UnitPath::error() const
{
    if (where.refused != 0)
        return where.refused;
    if (!where.present)
        return ENOENT;
    return asFolder ? ENOTDIR : 0;
}

UnitPath findPath(int folder, const char* path)
{
    Link* const link = path != nullptr && *path != '\0' ? Link::current() : nullptr;
    if (link == nullptr)
        return {};
    const KeepErrno keep;
    std::string_view text{path};
    bool asFolder = false;
    for (; text.size() > 1 && text.back() == '/'; text.remove_suffix(1))
        asFolder = true;
    if (!mayBeOn(*link, text))
        return {};
    std::string full = absolute(folder, text);
    if (full.empty())
        return {};
    Link::Where where;
    if (isPlain(full))
        where = link->locate(full);
    if (where.place == Link::Place::Outside) {
        const std::string before = full.substr(0, full.rfind('/') + 1);
        const std::string name = full.substr(before.size());
        full = resolved(isDirectoryItself(name) ? full : before);
        if (!isDirectoryItself(name))
            full += (full == "/" ? "" : "/") + name;
        where = link->locate(full);
        if (where.place == Link::Place::Outside && name == "..")
            where = above(link->locate(resolved(before)));
    }
    if (where.place == Link::Place::Outside)
        return {};
    // A directory of the unit may have a trailing slash.
    return {link, full, where, asFolder && where.place == Link::Place::Device};
}

} // namespace hxsim
