// SPDX-License-Identifier: LicenseRef-HXAux
// The four video channels in text form: "1,3", "none", "all".
#pragma once

#include "tools/hxaux/Call.h"

#include <string>

namespace hxaux {

/// One bit per channel, bit 0 for channel 1. Ends the verb with status 2 when the text names no channels.
unsigned char channelsOf(Call& call, const std::string& name);
/// The numbers of the channels; bits above the fourth are numbers above 4.
Value listOfChannels(unsigned char bits);

} // namespace hxaux
