// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <string>
#include <string_view>

namespace hxsim {

/// "20ms", "2s", "1.5s", "1m": a number and its unit without a space. Throws BadText.
Time parseDuration(std::string_view text);
/// Whether a text reads as a duration.
bool isDuration(std::string_view text);
/// "1.234 s"
std::string inSeconds(Time time);

} // namespace hxsim
