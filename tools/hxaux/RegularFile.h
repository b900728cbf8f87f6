// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxaux {

/// Appends a file's contents to a text. Returns the reason for a failure, or nothing. FIFOs, devices, directories and
/// files above 64 MiB are refused: they must neither block the tool nor exhaust memory.
std::string readRegularFile(const std::string& name, std::string& text);

} // namespace hxaux
