// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// Reads a file that a user named. Throws BadText, and never blocks, for anything but a plain file (a device, a FIFO, a
/// directory) and for files above the size limit.
std::string contentOf(const std::string& path);

/// Throws BadText when this exists and is not a plain file: opening it for writing could block or have side effects.
void checkWritable(const std::string& path);

} // namespace hxsim
