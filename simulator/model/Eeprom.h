// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "simulator/model/I2cBus.h"
#include "simulator/model/Memory.h"

#include <chrono>
#include <string>
#include <string_view>

namespace hxsim {

/// A serial EEPROM of 8 KB: 16-bit offsets, pages of 32 bytes inside which a write wraps, and 5 ms after each write
/// during which it does not answer.
class Eeprom : public I2cDevice {
public:
    static constexpr std::size_t kSize = 8192;
    static constexpr std::size_t kPage = 32;
    static constexpr Time kWriteTime = std::chrono::milliseconds{5};

    explicit Eeprom(Memory& memory) : memory_{memory} {}

    [[nodiscard]] bool answers(Time now) const override { return now >= busyUntil_; }
    void write(std::span<const std::uint8_t> bytes, Time end) override;
    void read(std::span<std::uint8_t> bytes) override;

    /// The stored bytes, to inspect or prepare the part.
    [[nodiscard]] std::vector<std::uint8_t>& bytes() { return memory_.bytes; }
    /// The text at the start, up to the first 0x00 or 0xFF.
    [[nodiscard]] std::string text() const;
    /// Erases the part and puts a text at its start.
    void setText(std::string_view text);
    /// Fills the whole part with one value, as a blank one is with 0xFF.
    void fill(std::uint8_t value);

private:
    Memory& memory_;
    std::size_t position_ = 0;
    Time busyUntil_{0};
};

} // namespace hxsim
