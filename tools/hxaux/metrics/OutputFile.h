// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxaux::metrics {

/// Replaces a file at once: a reader, or the next start after a power cut, finds the old text or the new one. Returns
/// the reason for a failure, or nothing.
std::string replaceFile(const std::string& name, const std::string& text);

} // namespace hxaux::metrics
