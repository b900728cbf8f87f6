// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Unit.h"

#include <map>
#include <string>

namespace hxsim {

/// Properties that change evenly over the unit's time.
class Ramps {
public:
    explicit Ramps(Unit& unit) : unit_{unit} {}

    /// Replaces a ramp of the same property. Throws BadText for a property or an end that the unit refuses; then
    /// nothing has changed.
    void start(const std::string& property, double from, double to, Time over);

private:
    struct Ramp {
        double from;
        double to;
        Time begin;
        Time over;
        bool isWhole; ///< the property refuses fractions
    };

    void step(const std::string& property);
    void set(const std::string& property, double value, bool isWhole);

    Unit& unit_;
    std::map<std::string, Ramp> ramps_;
    std::map<std::string, Clock::Key> steps_;
};

} // namespace hxsim
