// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/errors.h"

#include <cstddef>

namespace Halvix {

/// Whether a HEX file of that many bytes can be firmware for the supervisor (0) or the front-panel controller (1).
[[nodiscard]] bool isFirmwareSize(std::size_t size, int deviceType);

/// Whether the text of a HEX file can be firmware for the supervisor (0) or the front-panel controller (1): its size is
/// in the target's range, and it does not contain the other target's name. 0 or 4.
///
/// `text` holds `size` characters followed by a zero byte; it is searched up to its first zero byte.
[[nodiscard]] eErr checkFirmwareText(const char* text, std::size_t size, int deviceType);

} // namespace Halvix
