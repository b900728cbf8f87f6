// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/GpioExpander.h"

namespace hxsim {

void GpioExpander::write(std::span<const std::uint8_t> bytes, Time end)
{
    if (bytes.empty())
        return;
    pointer_ = bytes[0];
    for (const std::uint8_t value : bytes.subspan(1)) {
        const std::uint8_t target = pointer_ == kPins ? kLatch : pointer_; // writing the pins sets the latch
        if (target < registers.size())
            registers[target] = value;
        next();
    }
    if (bytes.size() > 1)
        changed(end);
}

void GpioExpander::read(std::span<std::uint8_t> bytes)
{
    for (std::uint8_t& byte : bytes) {
        byte = 0xFF; // nothing pulls the line low after the last register
        if (pointer_ == kPins)
            byte = pins();
        else if (pointer_ < registers.size())
            byte = registers[pointer_];
        next();
    }
}

void GpioExpander::next()
{
    pointer_ = static_cast<std::uint8_t>((pointer_ + 1U) % registers.size());
}

std::uint8_t GpioExpander::pins() const
{
    const unsigned directions = registers[kDirections];
    const unsigned outside = inputs ? inputs() : 0U;
    return static_cast<std::uint8_t>((registers[kLatch] & ~directions) | (outside & directions));
}

bool GpioExpander::drives(unsigned pin, bool high) const
{
    const unsigned bit = 1U << pin;
    return (registers[kDirections] & bit) == 0 && ((registers[kLatch] & bit) != 0) == high;
}

} // namespace hxsim
