// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace hxsim {

/// The two requests that every supervisor device answers, on a block of two 16-bit words {register, value}.
constexpr std::uint32_t kGetRegister = 0xC004003A;
constexpr std::uint32_t kPutRegister = 0xC004003B;

} // namespace hxsim
