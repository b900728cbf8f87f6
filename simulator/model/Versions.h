// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace hxsim {

/// The versions that the driver of "/dev/fpga-version" reports, and the operating system's version file.
class Versions : public Hardware {
public:
    explicit Versions(Unit& unit);

    /// major, minor, release, build
    using Version = std::array<std::uint8_t, 4>;
    Version fpga{3, 2, 0, 1};
    Version supervisor{2, 4, 0, 7};
    Version front{1, 6, 0, 2};
    Version drivers{1, 3, 0, 0};
    /// The whole text of "/etc/firmware.ver".
    std::string osText = "2.1.0.5\n";

private:
    void version(Unit& unit, Node& node, std::uint32_t code, const std::string& name, Version& version,
                 std::function<bool()> isThere, const std::string& help);
};

} // namespace hxsim
