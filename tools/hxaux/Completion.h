// SPDX-License-Identifier: LicenseRef-HXAux
// Candidates for the last word of an unfinished command line.
#pragma once

#include <string>
#include <vector>

namespace hxaux {

struct Candidate {
    std::string word;
    std::string help;
    auto operator<=>(const Candidate&) const = default;
};

/// The words behind "hxaux"; the last one is unfinished and may be empty. No candidate: any text, or a file's name.
std::vector<Candidate> candidates(const std::vector<std::string>& words);

} // namespace hxaux
