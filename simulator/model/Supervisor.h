// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"
#include "simulator/model/OperatingTime.h"
#include "simulator/model/SupervisorRegisters.h"
#include "simulator/model/SupervisorSettings.h"

#include <array>
#include <optional>
#include <string>

namespace hxsim {

/// The supervisor microcontroller: its settings, the power of the loads, the unit's power states with the front button
/// and the external signal, and its diagnostics.
///
/// A request for a transition shows in register 4 of the power device: 1 and 2 for a short press that requests to
/// suspend or to shut down, 3 and 4 for a long press, 5 and 6 for the external signal. It is executed two seconds after
/// a program acknowledged it, or after a minute if none does. A unit that is off still answers requests, because the
/// simulated programs continue. One without its supply does not: its microcontrollers have no power.
class Supervisor : public Hardware {
public:
    enum class State { Running, Suspended, Heating, Off };
    /// Reasons of a start and of a shut-down.
    enum Reason : std::uint16_t { PowerApplied = 0x0F, FrontButton = 0x55, ExternalSignal = 0xAA, OsRestart = 0xF0 };

    explicit Supervisor(Unit& unit);

    void pressFrontButton(Time duration);
    void giveSignal(Time duration);
    void supply(bool on);
    void restart();
    [[nodiscard]] State state() const { return state_; }

    SupervisorSettings configuration; ///< "/dev/conf-id"
    SupervisorRegisters diagnostics;  ///< "/dev/diag-id"
    SupervisorRegisters power;        ///< "/dev/power-id"

private:
    /// The source of a transition request, as the first of its two numbers in the power device's register.
    enum class Requester : std::uint16_t { ShortPress = 1, LongPress = 3, Signal = 5 };

    void describeLoads();
    void describeDiagnostics();
    void describeTime(std::size_t which, int highWord, std::uint8_t minutes, std::uint8_t seconds, const char* help);
    void describeTemperature(std::uint8_t number, const std::string& name, int celsius, const char* help);
    void describeActions();
    int writeLoad(std::uint8_t number, bool on);
    int acknowledge(std::uint16_t value);

    void request(Requester requester, std::uint16_t action, Reason reason);
    void carryOut();
    void enter(State state);
    void start(Reason reason);
    void startWhenWarm();
    void run();
    void switchOff();
    void switchLoads();
    void followTemperature(std::int16_t celsius);
    void noteTimes();
    [[nodiscard]] bool mayStartBy(std::uint16_t trigger) const;

    Unit& unit_;
    State state_ = State::Running;
    bool supplied_ = true;
    std::optional<Clock::Key> timer_; ///< the next change of the power state
    std::uint16_t action_ = 0;        ///< the request: 1 suspend, 2 shut down
    Reason reason_ = FrontButton;     ///< of the request, or of a start that waits for the heating
    std::array<OperatingTime, 7> times_;
};

} // namespace hxsim
