// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Supervisor.h"

namespace hxsim {

Supervisor::Supervisor(Unit& unit)
    : configuration{unit, "/dev/conf-id"},
      diagnostics{unit, "/dev/diag-id"}, power{unit, "/dev/power-id"}, front{unit, "/dev/front-mcu-id"}
{
}

HXSIM_HARDWARE(Supervisor)

} // namespace hxsim
