// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/interpose/Link.h"

#include <string>

namespace hxsim {

/// Resolves a program's path on the unit: relative to the working directory or to an open one, through "." and "..",
/// through symbolic links of the machine.
struct UnitPath {
    Link* link = nullptr; ///< null: not a path of the unit; the call goes to the machine
    std::string path{};
    Link::Where where{};
    bool asFolder = false; ///< a slash stands behind it

    [[nodiscard]] explicit operator bool() const { return link != nullptr; }
    /// The errno of a call on a missing path, or 0.
    [[nodiscard]] int error() const;
};

/// `folder` is a descriptor of a directory, or AT_FDCWD.
UnitPath findPath(int folder, const char* path);

} // namespace hxsim
