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

bool isPlain(std::string_view path)
{
    return path.find("//") == std::string_view::npos && path.find("/.") == std::string_view::npos;
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
    const std::string_view name = text.substr(text.rfind('/') + 1);
    if (!link->hasName(name))
        return {};
    std::string full = absolute(folder, text);
    if (full.empty())
        return {};
    Link::Where where;
    if (isPlain(full))
        where = link->locate(full);
    if (where.place == Link::Place::Outside) {
        const std::string parent = resolved(full.substr(0, full.rfind('/') + 1));
        full = parent == "/" ? "/" : parent + '/';
        full += name;
        where = link->locate(full);
    }
    if (where.place == Link::Place::Outside)
        return {};
    // A directory of the unit may have a trailing slash.
    return {link, full, where, asFolder && where.place == Link::Place::Device};
}

} // namespace hxsim
