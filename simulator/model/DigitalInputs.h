// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <array>
#include <cstdint>

namespace hxsim {

/// The four digital inputs. The driver gives them in the low four bits of a byte whose upper bits carry other lines of
/// the same port.
class DigitalInputs : public Hardware {
public:
    explicit DigitalInputs(Unit& unit);

    std::array<bool, 4> inputs{};
    std::uint8_t otherLines = 0;

private:
    [[nodiscard]] std::uint8_t port() const;
};

} // namespace hxsim
