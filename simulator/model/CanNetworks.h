// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <array>
#include <cstdint>
#include <string>

namespace hxsim {

/// The bit-rate attributes of the four CAN interfaces, can0 to can3. As in the kernel, an interface that is up refuses
/// a new rate with EBUSY, and a rate that the controller cannot make with EINVAL.
class CanNetworks : public Hardware {
public:
    explicit CanNetworks(Unit& unit);

    struct Network {
        std::uint32_t bitrate = 250000; ///< bit/s
        bool up = false;
        std::string text{}; ///< when not empty: what the attribute reads instead of the rate
    };
    std::array<Network, 4> networks; ///< [0] is network 1, can0

private:
    static int set(Network& network, const std::string& text);
};

} // namespace hxsim
