// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/GpioExpander.h"
#include "simulator/model/Hardware.h"

#include <optional>

namespace hxsim {

/// The add-on board: the GPIO expander at 0x40, and behind it the GSM/GPRS module, the WLAN module and the GPS antenna.
///
/// The GSM module has a power key: held for a second it switches the module on, held for two it switches it off, and
/// one press does one of the two. The board's production data says which modules are fitted, and whether the board has
/// the status line of the GSM module (hardware versions 1 to 9).
class TelematicsBoard : public Hardware {
public:
    explicit TelematicsBoard(Unit& unit);

    GpioExpander expander;
    bool gsmOn = false;
    bool keyHeld = false;
    Time lastPress{0}; ///< how long the power key was held last
    bool antennaShort = false;

    [[nodiscard]] bool wlanPowered() const;
    /// It runs when it has power and its auxiliary line is held low.
    [[nodiscard]] bool wlanRuns() const;
    [[nodiscard]] bool hasStatusLine() const;
    [[nodiscard]] bool isFitted(const char* key) const;

private:
    [[nodiscard]] std::uint8_t inputs() const;
    void follow(Time now);
    void press(Time now);
    void release(Time now);
    void describe();

    Unit& unit_;
    Time pressed_{0};
    std::optional<Clock::Key> key_;
};

} // namespace hxsim
