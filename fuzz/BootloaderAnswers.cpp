// SPDX-License-Identifier: LicenseRef-HXAux
// A whole conversation with a bootloader that answers anything: connecting, erasing, writing, reading, starting. This
// file replaces the serial port: reads return the input, and writes must be frames of the protocol.
#include "fuzz/Require.h"
#include "upgrade/STM32/stm32_bootloader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

const std::uint8_t* answers = nullptr;
std::size_t left = 0;

constexpr std::size_t kLongestFrame = 1 + 256 + 3 + 1;

void converse(stm32_target* target, unsigned length)
{
    std::uint8_t block[256];
    std::memset(block, 0xA5, sizeof block);
    (void)stm32_erase_memory(target);
    (void)stm32_write_memory(target, target->device->flash_start, block, length);
    if (stm32_read_memory(target, target->device->flash_start, block, length))
        REQUIRE(length >= 1 && length <= sizeof block);
    (void)stm32_reset_device(target);
    (void)stm32_go(target, 0x08000000);
}

} // namespace

extern "C" {

int serial_write(const serial_port*, const void* buffer, size_t length)
{
    REQUIRE(length >= 1 && length <= kLongestFrame);
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    if (length == 2)
        REQUIRE((bytes[0] ^ bytes[1]) == 0xFF);
    if (length == 5)
        REQUIRE((bytes[0] ^ bytes[1] ^ bytes[2] ^ bytes[3]) == bytes[4]);
    return SERIAL_OK;
}

int serial_read(const serial_port*, void* buffer, size_t length)
{
    const std::size_t count = std::min(length, left);
    std::memcpy(buffer, answers, count);
    answers += count;
    left -= count;
    return count == length ? SERIAL_OK : SERIAL_NO_DATA;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 3)
        return 0;
    const unsigned mode = data[0] % 4;
    const unsigned length = data[1] | (data[2] & 1U) << 8; // 0 to 511: including refused lengths
    answers = data + 3;
    left = size - 3;
    stm32_target* target = stm32_init(nullptr, mode);
    if (target != nullptr) {
        REQUIRE(mode == STM32_INIT_SYNCHRONISE || mode == STM32_INIT_CONTINUE);
        REQUIRE(target->device->id == 0 || target->device->id == target->product_id);
        converse(target, length);
    }
    stm32_close(target);
    return 0;
}
}
