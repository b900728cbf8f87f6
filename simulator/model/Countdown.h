// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdint>

namespace hxsim {

/// Counts an event of an injected fault; true if this is the one to fail. 0 means no fault.
inline bool countsDown(std::int64_t& counter)
{
    return counter > 0 && --counter == 0;
}

} // namespace hxsim
