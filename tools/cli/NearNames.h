// SPDX-License-Identifier: LicenseRef-HXAux
// Suggestions for mistyped words.
#ifndef HXAUX_NEAR_NAMES_H
#define HXAUX_NEAR_NAMES_H

#include <string>
#include <string_view>
#include <vector>

namespace hxaux {

// How many letters must be changed, put in, left out or swapped to make one word the other.
std::size_t editDistance(std::string_view from, std::string_view to);

// The candidates near a word, nearest first, at most three.
std::vector<std::string> nearNames(std::string_view word, const std::vector<std::string>& candidates);

// "; did you mean 'a' or 'b'?", or nothing.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

} // namespace hxaux

#endif
