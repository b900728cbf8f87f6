// SPDX-License-Identifier: LicenseRef-HXAux
// The manual page and the reference in docs/, made from the verb table.
#pragma once

#include <string>

namespace hxaux {

std::string manualPage();        // in troff's man macros
std::string markdownReference(); ///< a section per object

} // namespace hxaux
