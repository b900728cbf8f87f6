// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <span>
#include <string_view>

namespace hxpanel {

/// A file of the page; CMake compiles them in.
struct PageFile {
    std::string_view path; ///< "/style.css"
    std::string_view type;
    std::string_view text;
};

std::span<const PageFile> pageFiles();

} // namespace hxpanel
