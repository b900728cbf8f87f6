// SPDX-License-Identifier: LicenseRef-HXAux
// The names of the unit's error codes as the headers spell them, for readers of JSON.
#pragma once

#include <string>

namespace hxaux {

std::string errorName(int code); ///< the number as text for a code that has no name

} // namespace hxaux
