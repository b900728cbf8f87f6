// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"
#include "simulator/model/SupervisorRegisters.h"

namespace hxsim {

/// The supervisor's converter: eight supply voltages as raw counts of 3.3 V / 4096 behind a divider, in registers 0 to
/// 7 of "/dev/adc-id". Property "voltage.N" is in volts, "voltage.N.raw" in counts.
class Voltages : public Hardware {
public:
    explicit Voltages(Unit& unit);

    SupervisorRegisters registers;
};

} // namespace hxsim
