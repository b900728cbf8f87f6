// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <vector>

namespace hxsim {

/// Bytes that outlast the unit's power. The host of the unit may fill them before programs start (same size), and saves
/// them when `changed` is set; it then clears the flag.
struct Memory {
    std::vector<std::uint8_t> bytes{};
    bool changed = false;
};

} // namespace hxsim
