// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace hxsim {

/// The manual page hx-sim(1), made from the commands and their options.
std::string manualPage(const CLI::App& app);

} // namespace hxsim
