// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/SupervisorRegisters.h"

namespace hxsim {

/// The register map of "/dev/conf-id": what the supervisor keeps over restarts, and which values it refuses.
///
/// The meaning of the firmware's values is an assumption of this simulation: times of the button and the signal
/// are milliseconds and the suspend time minutes; start-up trigger 1 is the button, 2 the signal, 3 both; action 0 does
/// nothing, 1 suspends, 2 shuts down.
class SupervisorSettings : public SupervisorRegisters {
public:
    enum Number : std::uint8_t {
        ButtonDebounce = 0,
        ButtonTime = 1,
        SignalTimeLow = 3,
        SuspendTime = 4,
        Can = 7,
        Video1 = 8,
        ExternalFan = 9,
        Voltage = 10,
        Video2 = 11,
        Video3 = 12,
        Video4 = 13,
        HeatingLimit = 14,
        ShortPress = 16,
        LongPress = 17,
        OnOffSignal = 18,
        StartupTrigger = 19,
        SignalTimeHigh = 20,
        PowerOn = 21,
    };

    explicit SupervisorSettings(Unit& unit);

    [[nodiscard]] Time buttonTime() const;
    [[nodiscard]] Time signalTime() const;
    [[nodiscard]] Time suspendTime() const;
    /// The supply voltage below which the unit does not start.
    [[nodiscard]] double startupVolts() const;
    /// The temperature below which the unit is heated before it starts.
    [[nodiscard]] int heatingCelsius() const;
};

} // namespace hxsim
