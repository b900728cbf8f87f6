// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// Why a program, or the interpreter of a script, would run on this machine instead of the unit, as the end of a
/// sentence ("is statically linked"); empty when it sees the unit, or cannot be started at all. `preload` is the folder
/// that holds lib/<ABI>/ with the preload libraries.
std::string whyNotSimulated(const std::string& program, const std::string& preload);

/// Resolves the name of a program like the shell.
std::string findProgram(const std::string& name);

} // namespace hxsim
