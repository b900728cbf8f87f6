// SPDX-License-Identifier: LicenseRef-HXAux
// Names of the light sensor's sampling modes.
#pragma once

#include "hx-aux/types.h"
#include "tools/hxaux/Verb.h"

namespace hxaux {

extern const Names kSamplingModes;

} // namespace hxaux
