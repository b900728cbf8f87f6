// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/Clock.h"

#include <cstdint>
#include <map>
#include <span>

namespace hxsim {

/// A part on the bus.
class I2cDevice {
public:
    I2cDevice() = default;
    I2cDevice(const I2cDevice&) = delete;
    I2cDevice& operator=(const I2cDevice&) = delete;
    virtual ~I2cDevice() = default;

    /// Whether it acknowledges its address at that time.
    [[nodiscard]] virtual bool answers(Time /*now*/) const { return true; }
    /// One message to the part; `end` is the time of its stop condition.
    virtual void write(std::span<const std::uint8_t> bytes, Time end) = 0;
    /// One message from the part, directly after the write of the same transfer, if there was one.
    virtual void read(std::span<std::uint8_t> bytes) = 0;
};

/// The board's I2C bus 0. Programs wait as long as a transfer takes on the wire; its effect happens at its start.
class I2cBus {
public:
    explicit I2cBus(Clock& clock) : clock_{clock} {}

    /// Attaches a part under its 8-bit address, whose lowest bit is ignored.
    void attach(std::uint8_t address, I2cDevice& device)
    {
        devices_[static_cast<std::uint8_t>(address & 0xFE)] = &device;
    }

    struct Transfer {
        bool acknowledged;
        Time end; ///< when the bus is free again
    };
    /// Writes, then reads after a repeated start; either may be empty. Waits for a transfer that is under way.
    Transfer transfer(std::uint8_t address, std::span<const std::uint8_t> written, std::span<std::uint8_t> read);

    std::uint32_t hertz = 100000;

private:
    [[nodiscard]] Time duration(std::size_t bytes, std::size_t starts) const;

    Clock& clock_;
    Time freeAt_{0};
    std::map<std::uint8_t, I2cDevice*> devices_;
};

} // namespace hxsim
