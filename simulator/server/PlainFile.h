// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// The content of a file that somebody named. Throws BadText, and never waits, for what is not a plain file (a device,
/// a FIFO, a folder) or larger than any file of ours.
std::string contentOf(const std::string& path);

/// Throws BadText when this exists and is not a plain file: opening it for writing could wait or do something else.
void checkWritable(const std::string& path);

} // namespace hxsim
