// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace hxsim {

/// The completion script of a shell ("bash"), or the candidates for an unfinished command line ("words" and its words;
/// the last is unfinished): a word, a tab and its help on each line. Throws BadText for another shell.
std::string completionFor(const CLI::App& app, const std::vector<std::string>& words);

} // namespace hxsim
