// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <string_view>

namespace hxpanel {

/// The token in a file: its first line. Throws hxsim::BadText for a file that others can read, or a weak token.
std::string tokenFrom(const std::string& file);

/// Compares in a time that does not depend on where the texts differ.
bool isSameSecret(std::string_view given, std::string_view wanted);

constexpr std::size_t kShortestToken = 16;

} // namespace hxpanel
