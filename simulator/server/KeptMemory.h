// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Unit.h"

#include <string>

namespace hxsim {

/// Keeps the memories of a unit in files of a directory, NAME.bin each: an EEPROM has the same contents when a unit is
/// started again with that directory, even after a kill.
class KeptMemory {
public:
    /// Loads existing files. Throws BadText when the directory cannot be used.
    KeptMemory(Unit& unit, const std::string& folder);

    /// Writes the changes since the last call; each file is replaced as a whole.
    void save();

private:
    [[nodiscard]] std::string fileOf(const std::string& memory) const { return folder_ + '/' + memory + ".bin"; }

    Unit& unit_;
    std::string folder_;
};

} // namespace hxsim
