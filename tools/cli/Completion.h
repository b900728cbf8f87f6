// SPDX-License-Identifier: LicenseRef-HXAux
// Completion of command lines in bash, zsh and fish. The shells query the program for candidates, so their scripts
// contain no commands.
#pragma once

#include "tools/cli/Command.h"

namespace cli {

/// The words behind the program's name; the last one is unfinished and may be empty. No candidate: any text, or a
/// file's name.
Candidates candidates(const Program& program, const Words& words);

/// `completion bash`, `fish`, `words` and `zsh`, for the table of a program of this name.
Object completionObject(std::string_view program);

} // namespace cli
