// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace hxsim {

/// Names that mkstemp generated in the unit's root directory. They are random, so the journal shows their template, and
/// later calls on them go to the unit's directory.
void rememberGenerated(const std::string& name, const std::string& pattern);
[[nodiscard]] bool isGenerated(const std::string& name);
/// The template for a generated name, and the name itself for any other.
[[nodiscard]] std::string shownName(const std::string& name);

} // namespace hxsim
