// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <vector>

namespace hxsim {

/// Bytes that outlast the unit's power. Whoever hosts the unit may fill them before programs start (same size), and
/// keep them wherever it keeps things when `changed` has been set; it then clears the flag.
struct Memory {
    std::vector<std::uint8_t> bytes{};
    bool changed = false;
};

} // namespace hxsim
