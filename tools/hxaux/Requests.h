// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

namespace hxaux {

/// From now on each device that the library opens, and each request to one, is a line on standard error.
void printRequests(bool on);

} // namespace hxaux
