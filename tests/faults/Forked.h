// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>

namespace faults {

/// Runs `deed` in a child of this process, where nothing was used before and where it may crash, hang or be killed, and
/// waits for its end. `told` is what it answers: a text of any length; `errors` what it wrote to standard error.
struct Ended {
    std::string told{};
    std::string errors{};
    int signal = 0; ///< that ended it, or 0
};
Ended inAChild(const std::function<std::string()>& deed);

} // namespace faults
