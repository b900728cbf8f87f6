// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/SamplingModes.h"

namespace hxaux {

const Names kSamplingModes = namesOf<Halvix::LightSensorSamplingMode>({{Halvix::SamplingModeStandard, "standard"},
                                                                       {Halvix::SamplingModeExtended, "extended"},
                                                                       {Halvix::SamplingModeAuto, "auto"}});

} // namespace hxaux
