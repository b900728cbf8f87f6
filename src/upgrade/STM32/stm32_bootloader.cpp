// SPDX-License-Identifier: LicenseRef-HXAux
#include "stm32_bootloader.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint8_t kAck = 0x79;
constexpr uint8_t kSynchronise = 0x7F;
constexpr int kSynchroniseTries = 5;
constexpr unsigned kLongestBlock = 256;

constexpr char kUnknownCommands[] = "Seems this bootloader returns more then we understand in the GET command, "
                                    "we will skip the unknown bytes\n";
constexpr char kUnknownProductId[] = "More then two bytes sent in the PID, unknown/unsupported device\n";

template <size_t size>
void complain(const char (&message)[size])
{
    std::fwrite(message, 1, size - 1, stderr);
}

// A frame that could not be sent is detected by its missing acknowledgement, so the results of sends are ignored.

void send(const stm32_target* h, const uint8_t* frame, size_t length)
{
    (void)serial_write(h->serial, frame, length);
}

bool acknowledged(const stm32_target* h)
{
    return stm32_read_byte(h) == kAck;
}

bool sendNamed(const stm32_target* h, stm32_command command)
{
    return stm32_send_command(h, h->commands[command], true);
}

bool sendAddress(const stm32_target* h, uint32_t address)
{
    uint8_t frame[5];
    const uint32_t onTheWire = be_u32(address);
    std::memcpy(frame, &onTheWire, sizeof onTheWire);
    frame[4] = stm32_gen_cs(address);
    send(h, frame, sizeof frame);
    return acknowledged(h);
}

bool validBlock(uint32_t address, unsigned length)
{
    return address % 4 == 0 && length >= 1 && length <= kLongestBlock;
}

bool synchronise(const stm32_target* h)
{
    for (int i = 0; i < kSynchroniseTries; ++i)
        if (stm32_send_command(h, kSynchronise, false))
            return true;
    return false;
}

bool readCommandTable(stm32_target* h)
{
    if (!stm32_send_command(h, 0x00, true))
        return false;
    const int following = stm32_read_byte(h) + 1;
    h->bootloader_version = stm32_read_byte(h);
    for (int i = 0; i < STM32_COMMANDS; ++i)
        h->commands[i] = stm32_read_byte(h);
    constexpr int kUnderstood = STM32_COMMANDS + 1;
    if (following != kUnderstood) {
        complain(kUnknownCommands);
        for (int i = kUnderstood; i < following; ++i)
            (void)stm32_read_byte(h);
    }
    return acknowledged(h);
}

bool readVersion(stm32_target* h)
{
    if (!sendNamed(h, STM32_GET_VERSION))
        return false;
    h->version = stm32_read_byte(h);
    h->option1 = stm32_read_byte(h);
    h->option2 = stm32_read_byte(h);
    return acknowledged(h);
}

bool readProductId(stm32_target* h)
{
    if (!sendNamed(h, STM32_GET_ID))
        return false;
    if (stm32_read_byte(h) + 1 != 2) {
        complain(kUnknownProductId);
        return false;
    }
    const unsigned high = stm32_read_byte(h);
    h->product_id = static_cast<uint16_t>((high << 8) | stm32_read_byte(h));
    return acknowledged(h);
}

const stm32_device* deviceOf(uint16_t id)
{
    const stm32_device* row = stm32_devices;
    while (row->id != 0 && row->id != id)
        ++row;
    return row;
}

stm32_target* allocate(serial_port* serial)
{
    auto* h = static_cast<stm32_target*>(std::calloc(1, sizeof(stm32_target)));
    if (h == nullptr)
        return nullptr;
    h->serial = serial;
    h->commands = static_cast<uint8_t*>(std::calloc(STM32_COMMANDS, 1));
    return h;
}

} // namespace

stm32_target* stm32_init(serial_port* serial, unsigned mode)
{
    stm32_target* h = allocate(serial);
    const bool identified =
        h != nullptr && h->commands != nullptr && (mode == STM32_INIT_SYNCHRONISE || mode == STM32_INIT_CONTINUE) &&
        (mode == STM32_INIT_CONTINUE || synchronise(h)) && readCommandTable(h) && readVersion(h) && readProductId(h);
    if (!identified) {
        stm32_close(h);
        return nullptr;
    }
    h->device = deviceOf(h->product_id);
    return h;
}

void stm32_close(stm32_target* h)
{
    if (h != nullptr)
        std::free(h->commands);
    std::free(h);
}

int stm32_send_byte(const stm32_target* h, uint8_t byte)
{
    return serial_write(h->serial, &byte, 1);
}

uint8_t stm32_read_byte(const stm32_target* h)
{
    uint8_t byte = 0; // never an acknowledgement left over from before
    (void)serial_read(h->serial, &byte, 1);
    return byte;
}

bool stm32_send_command(const stm32_target* h, uint8_t command, bool withComplement)
{
    const uint8_t frame[] = {command, static_cast<uint8_t>(~command)};
    send(h, frame, withComplement ? 2 : 1);
    return acknowledged(h);
}

bool stm32_read_memory(const stm32_target* h, uint32_t address, void* buffer, unsigned length)
{
    if (!validBlock(address, length))
        return false;
    if (!sendNamed(h, STM32_READ_MEMORY) || !sendAddress(h, address) ||
        !stm32_send_command(h, static_cast<uint8_t>(length - 1), true))
        return false;
    return serial_read(h->serial, buffer, length) == SERIAL_OK;
}

bool stm32_write_memory(const stm32_target* h, uint32_t address, const void* data, unsigned length)
{
    if (!validBlock(address, length))
        return false;
    if (!sendNamed(h, STM32_WRITE_MEMORY) || !sendAddress(h, address))
        return false;
    // The padding is the length modulo 4, not the number of bytes missing to the next multiple: targets in the field
    // rely on it. A block of 255 bytes thus announces 1, the low byte of 257.
    const unsigned pad = length % 4;
    uint8_t frame[1 + kLongestBlock + 3 + 1];
    frame[0] = static_cast<uint8_t>(length + pad - 1);
    std::memcpy(frame + 1, data, length);
    std::memset(frame + 1 + length, 0xFF, pad);
    uint8_t checksum = 0;
    for (unsigned i = 0; i < 1 + length + pad; ++i)
        checksum ^= frame[i];
    frame[1 + length + pad] = checksum;
    send(h, frame, 1 + length + pad + 1);
    return acknowledged(h);
}

bool stm32_erase_memory(const stm32_target* h)
{
    return sendNamed(h, STM32_ERASE) && stm32_send_command(h, 0xFF, true);
}

bool stm32_go(const stm32_target* h, uint32_t address)
{
    return sendNamed(h, STM32_GO) && sendAddress(h, address);
}

bool stm32_reset_device(const stm32_target* h)
{
    const uint32_t start = h->device->ram_start;
    for (uint32_t done = 0; done < stmreset_length; done += kLongestBlock) {
        const unsigned piece = std::min(kLongestBlock, stmreset_length - done);
        if (!stm32_write_memory(h, start + done, stmreset_binary + done, piece))
            return false;
    }
    return stm32_go(h, start);
}

uint8_t stm32_gen_cs(uint32_t value)
{
    return static_cast<uint8_t>(value ^ (value >> 8) ^ (value >> 16) ^ (value >> 24));
}

bool cpu_le(void)
{
    const uint16_t one = 1;
    uint8_t first = 0;
    std::memcpy(&first, &one, 1);
    return first == 1;
}

uint32_t be_u32(uint32_t value)
{
    return cpu_le() ? __builtin_bswap32(value) : value;
}
