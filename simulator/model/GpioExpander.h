// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/I2cBus.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>

namespace hxsim {

/// An I2C expander with eight pins and eleven byte registers. A message selects a register and may continue with values
/// for it and the following ones; a read begins at the register selected last.
class GpioExpander : public I2cDevice {
public:
    static constexpr std::uint8_t kDirections = 0; ///< a one for an input
    static constexpr std::uint8_t kPins = 9;
    static constexpr std::uint8_t kLatch = 10;

    void write(std::span<const std::uint8_t> bytes, Time end) override;
    void read(std::span<std::uint8_t> bytes) override;

    /// Levels of all eight pins: the latch drives outputs, the board drives inputs.
    [[nodiscard]] std::uint8_t pins() const;
    [[nodiscard]] bool drives(unsigned pin, bool high) const;

    std::array<std::uint8_t, 11> registers{0xFF};    ///< as after power-on: all pins are inputs
    std::function<std::uint8_t()> inputs;            ///< the board's effect on the pins
    std::function<void(Time)> changed = [](Time) {}; ///< after each write, with its time

private:
    void next();

    std::uint8_t pointer_ = 0;
};

} // namespace hxsim
