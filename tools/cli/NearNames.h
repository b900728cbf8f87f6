// SPDX-License-Identifier: LicenseRef-HXAux
// Suggestions for mistyped words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cli {

/// Edit distance: letters to change, insert, delete or swap to turn one word into the other.
std::size_t editDistance(std::string_view from, std::string_view to);

/// The candidates closest to a word, closest first, at most three.
std::vector<std::string> nearNames(std::string_view word, const std::vector<std::string>& candidates);

/// "; did you mean 'a' or 'b'?", or nothing.
std::string suggestion(std::string_view word, const std::vector<std::string>& candidates);

} // namespace cli
