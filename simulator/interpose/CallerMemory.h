// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstddef>

namespace hxsim {

/// Memory at an address that the program gave. Like the kernel, the unit fails with EFAULT for an invalid address; all
/// functions return whether the address was valid.
[[nodiscard]] bool copyFromCaller(void* to, const void* from, std::size_t size);
[[nodiscard]] bool copyToCaller(void* to, const void* from, std::size_t size);
/// Looks at both ends of a block.
[[nodiscard]] bool isReachable(const void* block, std::size_t size);

} // namespace hxsim
