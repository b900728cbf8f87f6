// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"
#include "simulator/model/SupervisorRegisters.h"

namespace hxsim {

/// Register files of the supervisor's devices that need no behaviour of their own: what is written can be read back.
class Supervisor : public Hardware {
public:
    explicit Supervisor(Unit& unit);

    SupervisorRegisters configuration; ///< "/dev/conf-id"
    SupervisorRegisters diagnostics;   ///< "/dev/diag-id"
    SupervisorRegisters power;         ///< "/dev/power-id"
    SupervisorRegisters front;         ///< "/dev/front-mcu-id"
};

} // namespace hxsim
