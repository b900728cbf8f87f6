// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Entry.h"
#include "simulator/interpose/Generated.h"
#include "simulator/interpose/Paths.h"

#include <cerrno>
#include <fcntl.h>
#include <string>

namespace hxsim {

/// The machine's file whose properties a file of the unit shows: a character device, or a small file.
std::string standIn(Link& link, bool text);

/// The path on this machine for one of the unit.
inline std::string realPath(const UnitPath& unit)
{
    return unit.where.file.empty() ? standIn(*unit.link, unit.where.text) : unit.where.file;
}

/// A question that is not recorded: `call(path on this machine, path on the unit)` for a path of the unit, else
/// `forward()`.
template <typename Forward, typename Call>
auto queryOr(const char* path, Forward forward, Call call) -> decltype(forward())
{
    const UnitPath unit = findPath(AT_FDCWD, path);
    if (!unit)
        return forward();
    if (const int error = unit.error(); error != 0) {
        errno = error;
        return -1;
    }
    return call(realPath(unit).c_str(), unit.path);
}

/// A call that names a path without opening it: `call(path on this machine)` for a path of the unit, else `forward()`.
template <typename Forward, typename Call>
int onPathOr(int folder, const char* path, const std::string& action, Forward forward, Call call)
{
    UnitPath unit = findPath(folder, path);
    const bool generated =
        !unit && path != nullptr && path[0] == '/' && isGenerated(path) && Link::current() != nullptr;
    if (generated)
        unit = {Link::current(), path};
    if (!unit)
        return forward();
    KeepErrno keep;
    const int error = unit.error();
    int result = error != 0 ? -error : -unit.link->fault(unit.path, action.substr(0, action.find(' ')));
    if (result == 0) {
        const std::string real = generated ? unit.link->root() + path : realPath(unit);
        result = call(real.c_str()) == 0 ? 0 : -errno;
    }
    unit.link->note(shownName(unit.path), action, -result);
    return keep.answer(result);
}

} // namespace hxsim
