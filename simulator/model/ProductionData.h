// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Eeprom.h"
#include "simulator/model/Hardware.h"

#include <string>
#include <string_view>

namespace hxsim {

/// The two EEPROMs with the production data, as production left them on a healthy unit with every module fitted.
class ProductionData : public Hardware {
public:
    explicit ProductionData(Unit& unit);

    Eeprom main;
    Eeprom addOn;

    /// The value of a line "KEY:value"; empty when there is none.
    [[nodiscard]] static std::string value(const Eeprom& part, std::string_view key);
    /// Changes the value or adds a line.
    static void setValue(Eeprom& part, const std::string& key, const std::string& value);
    /// Removes the line.
    static void forget(Eeprom& part, const std::string& key);

private:
    static void describe(Unit& unit, const std::string& name, Eeprom& part);
    Eeprom& named(const std::string& word);
    void addActions(Unit& unit);
};

} // namespace hxsim
