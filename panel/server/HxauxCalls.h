// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

namespace hxpanel {

/// What a call of hxaux from the page comes to.
struct HxauxCall {
    enum class Kind { Reads, Changes, Refused };

    Kind kind = Kind::Refused;
    std::vector<std::string> words{}; ///< as hxaux gets them
    std::string why{};                ///< of a refused one
};

/// Checks the words of a call: only objects and verbs of a list, which end by themselves and touch no file.
HxauxCall checkedCall(const std::vector<std::string>& words);

/// The path of a program of this project: beside this one, or as the shell finds it.
std::string programNamed(const std::string& name);

} // namespace hxpanel
