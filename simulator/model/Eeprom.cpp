// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Eeprom.h"

#include <algorithm>

namespace hxsim {

void Eeprom::write(std::span<const std::uint8_t> bytes, Time end)
{
    if (bytes.size() < 2)
        return; // an offset cut short changes nothing
    position_ = static_cast<std::size_t>(bytes[0] << 8 | bytes[1]) % kSize;
    const auto data = bytes.subspan(2);
    if (data.empty())
        return;
    const std::size_t page = position_ / kPage * kPage;
    for (const std::uint8_t byte : data) {
        memory_.bytes[position_] = byte;
        position_ = page + (position_ + 1) % kPage; // never leaves its page
    }
    memory_.changed = true;
    busyUntil_ = end + kWriteTime;
}

void Eeprom::read(std::span<std::uint8_t> bytes)
{
    for (std::uint8_t& byte : bytes) {
        byte = memory_.bytes[position_];
        position_ = (position_ + 1) % kSize;
    }
}

std::string Eeprom::text() const
{
    const auto end = std::find_if(memory_.bytes.begin(), memory_.bytes.end(),
                                  [](std::uint8_t byte) { return byte == 0x00 || byte == 0xFF; });
    return {memory_.bytes.begin(), end};
}

void Eeprom::setText(std::string_view text)
{
    fill(0xFF);
    std::copy_n(text.begin(), std::min(text.size(), kSize), memory_.bytes.begin());
}

void Eeprom::fill(std::uint8_t value)
{
    memory_.bytes.assign(kSize, value);
    memory_.changed = true;
}

} // namespace hxsim
