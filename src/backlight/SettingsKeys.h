// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

/// Names of the settings that the backlight reads and writes. All values are decimal text.
namespace Halvix::keys {

// NOLINTBEGIN(readability-identifier-naming): read with their namespace, as keys::softTransitions
inline constexpr const char* status = "ABL_status";
inline constexpr const char* softTransitions = "ABL_bSoftTransitions";
inline constexpr const char* slope = "ABL_k";
inline constexpr const char* averageWndSize = "ABL_averageWndSize";
inline constexpr const char* rejectWndSize = "ABL_rejectWndSize";
inline constexpr const char* rejectDeltaInLux = "ABL_rejectDeltaInLux";
inline constexpr const char* mode = "ABL_mode";
inline constexpr const char* ledDimming = "UseLEDDimming";
// NOLINTEND(readability-identifier-naming)

} // namespace Halvix::keys
