// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Hardware.h"

#include <cstdint>
#include <string>
#include <vector>

namespace hxsim {

/// The reading end of the daemon's FIFO. It records the commands and executes none.
class ServiceDaemon : public Hardware {
public:
    explicit ServiceDaemon(Unit& unit);

    bool running = true;
    bool plainFile = false; ///< a plain file exists there instead of the daemon's FIFO
    bool full = false;      ///< the FIFO is full: nothing is read from it
    std::vector<std::int32_t> commands;

private:
    std::vector<std::uint8_t> unread_;
    void take(std::span<const std::uint8_t> bytes);
    [[nodiscard]] std::string shown() const;
};

} // namespace hxsim
