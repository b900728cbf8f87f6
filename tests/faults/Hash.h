// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace faults {

/// Of a whole memory, thousands of times: computed by the C++ runtime, because loops in tests are not optimised.
inline std::size_t hashOf(const std::vector<std::uint8_t>& bytes)
{
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace faults
