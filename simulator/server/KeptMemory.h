// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>

#include "simulator/model/Unit.h"

namespace hxsim {

/// The memories of a unit in files of a folder, NAME.bin each, so that they outlast it: what an EEPROM held when the
/// unit was stopped, or killed, it holds when a unit is started with the same folder.
class KeptMemory {
public:
    /// Takes over what is there already. Throws BadText when the folder cannot be used.
    KeptMemory(Unit& unit, const std::string& folder);

    /// Writes what has changed since the last time; each file is replaced whole.
    void save();

private:
    [[nodiscard]] std::string fileOf(const std::string& memory) const { return folder_ + '/' + memory + ".bin"; }

    Unit& unit_;
    std::string folder_;
};

} // namespace hxsim
