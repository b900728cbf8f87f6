// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>
#include <vector>

namespace hxsim {

/// The panel's buzzer. Its driver stores any frequency and volume.
class Buzzer : public Hardware {
public:
    /// One beep, from switching on to switching off.
    struct Beep {
        Time begin;
        Time duration;
        std::uint16_t frequency; ///< hertz, when it was switched on
        std::uint16_t volume;
    };

    explicit Buzzer(Unit& unit);

    std::uint16_t frequency = 2000; ///< hertz
    std::uint16_t volume = 25;
    std::uint8_t trigger = 0;
    std::uint64_t sounded = 0; ///< beeps that are over
    std::vector<Beep> beeps;   ///< the last thousand of them

private:
    void sound(std::uint8_t wanted);

    Unit& unit_;
    Beep current_{};
};

} // namespace hxsim
