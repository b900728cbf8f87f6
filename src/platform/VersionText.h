// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <array>

namespace Halvix {

/// Major, minor, release, build.
using VersionParts = std::array<int, 4>;

/// Reads "%d.%d.%d.%d" from the start of the text; the rest after the fourth number is ignored. False when there are
/// fewer than four numbers; `parts` is then unchanged. Numbers too large for an int become the largest one.
[[nodiscard]] bool scanVersion(const char* text, VersionParts& parts);

} // namespace Halvix
