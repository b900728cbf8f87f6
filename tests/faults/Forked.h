// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>

namespace faults {

/// Runs `action` in a child of this process, where nothing was used before and where it may crash, hang or be killed,
/// and waits for its end. `output` is the text that it returns, of any length; `errors` its standard error.
struct Ended {
    std::string output{};
    std::string errors{};
    int signal = 0; ///< that terminated it, or 0
};
Ended inAChild(const std::function<std::string()>& action);

} // namespace faults
