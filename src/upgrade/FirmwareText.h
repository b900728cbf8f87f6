// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

#include <cstddef>

namespace Halvix {

/// Whether a HEX file of that many bytes can be firmware for the supervisor (0) or the front-panel controller (1).
[[nodiscard]] bool isFirmwareSize(std::size_t size, int deviceType);

/// Whether the text of a HEX file can be firmware for the supervisor (0) or the front-panel controller (1): its size
/// lies in the target's range, and it does not carry the other one's name. 0 or 4.
///
/// `text` holds `size` characters and a zero byte behind them; it is searched up to its first zero byte.
[[nodiscard]] eErr checkFirmwareText(const char* text, std::size_t size, int deviceType);

} // namespace Halvix
