// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>
#include <string>
#include <vector>

namespace hxsim {

/// Records light and backlight: each reading and each written level with its time.
class LightTrace : public Hardware {
public:
    struct Reading {
        double seconds;
        double luxSet;
        double luxReported;
    };
    struct Level {
        double seconds;
        int level;
    };

    explicit LightTrace(Unit& unit);

    bool recording = false;
    std::vector<Reading> readings;
    std::vector<Level> levels;

    /// How often the level turned from rising to falling or back.
    [[nodiscard]] int reversals() const;
    /// Seconds from `from` until the level has completed 90 % of its change from there to its value at `to`;
    /// negative when it did not move.
    [[nodiscard]] double secondsToNinety(double from, double to) const;

private:
    [[nodiscard]] double levelAt(double seconds) const;
};

} // namespace hxsim
