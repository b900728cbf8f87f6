// SPDX-License-Identifier: LicenseRef-HXAux
// Names of the light sensor's sampling modes.
#ifndef HXAUX_SAMPLING_MODES_H
#define HXAUX_SAMPLING_MODES_H

#include "hx-aux/types.h"
#include "tools/hxaux/Names.h"

namespace hxaux {

extern const Names kSamplingModes;

} // namespace hxaux

#endif
