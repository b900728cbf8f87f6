// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/Jida.h"

#include "platform/LinuxWrapper.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace Halvix {

namespace {

constexpr unsigned long kBus = 0;
constexpr unsigned int kReadChunk = 128;
constexpr unsigned int kPage = 32; // of the EEPROM: a longer write would wrap to the page's start
constexpr unsigned long kPageWriteMs = 10;

/// What the board library reports about a sensor; the first field holds the record's size on entry.
struct TemperatureInfo {
    std::uint32_t size;
    std::uint32_t type;
    std::uint32_t others[9];
};
static_assert(sizeof(TemperatureInfo) == 44);

// The board library may write a handle or a value as 4 bytes where ours has 8: outputs are cleared before each call.

bool openBoard(const char* className, unsigned long number, unsigned long* board)
{
    *board = 0;
    return JidaBoardOpenA(className, number, 0, board) != 0;
}

unsigned char addressOf(EepromType which)
{
    return which == EepromTypeMain ? 0xAE : 0xA4;
}

unsigned char high(unsigned int offset)
{
    return static_cast<unsigned char>(offset >> 8);
}

unsigned char low(unsigned int offset)
{
    return static_cast<unsigned char>(offset);
}

} // namespace

bool LinuxWrapper::JidaInit(unsigned long* board)
{
    if (!JidaLinuxInitialize())
        return false;
    if (JidaDllInitialize() == 0) {
        if (JidaDllInstall(1) == 0)
            return false;
        (void)JidaDllInitialize(); // whether it succeeded shows when the boards are counted
    }
    const unsigned int boards = JidaBoardCountA(nullptr, 0);
    if (openBoard("CPU", 0, board))
        (void)JidaBoardClose(*board);
    // Callers get the last board's handle. The others stay open; without a board it is the one just closed.
    for (unsigned int i = 0; i < boards; ++i)
        if (!openBoard(nullptr, i, board))
            return false;
    return true;
}

bool LinuxWrapper::JidaGetTemperature(unsigned long board, unsigned long index, unsigned long* temperature,
                                      unsigned long* status, unsigned long* type)
{
    if (index >= JidaTemperatureCount(board))
        return false;
    unsigned long value = 0;
    if (JidaTemperatureGetCurrent(board, index, &value, status) != 1)
        return false;
    *temperature = value;
    TemperatureInfo info{};
    info.size = sizeof info;
    if (JidaTemperatureGetInfo(board, index, &info) != 1)
        return false;
    *type = info.type;
    return true;
}

bool LinuxWrapper::I2CWrite(unsigned long board, unsigned char address, char reg, unsigned char value)
{
    const auto writeAddress = static_cast<unsigned char>(address & 0xFE);
    if (JidaI2CWriteRegister(board, kBus, writeAddress, static_cast<unsigned short>(reg), value) != 0)
        return true;
    std::fputs("WindowsWrapper: I2CWrite error...", stdout); // the wrong name stays: log filters match it
    return false;
}

bool LinuxWrapper::I2CRead(unsigned long board, unsigned char address, char reg, unsigned char* value)
{
    // The address as the caller passed it, including the read bit.
    if (JidaI2CReadRegister(board, kBus, address, static_cast<unsigned short>(reg), value) != 0)
        return true;
    std::fputs("WindowsWrapper: I2CRead error...", stdout); // the wrong name stays: log filters match it
    return false;
}

bool LinuxWrapper::EepromRead(unsigned long board, EepromType which, char* buffer, unsigned int length,
                              unsigned int* count)
{
    for (unsigned int done = 0; done < length;) {
        const unsigned int chunk = std::min(kReadChunk, length - done);
        const unsigned char offset[] = {high(done), low(done)};
        if (JidaI2CWriteReadCombined(board, kBus, addressOf(which), offset, sizeof offset,
                                     reinterpret_cast<unsigned char*>(buffer) + done, chunk) == 0)
            return false;
        done += chunk;
        *count = done;
    }
    return true;
}

bool LinuxWrapper::EepromWrite(unsigned long board, EepromType which, const char* buffer, unsigned int length)
{
    const auto address = static_cast<unsigned char>(addressOf(which) & 0xFE);
    for (unsigned int done = 0; done < length;) {
        const unsigned int chunk = std::min(kPage, length - done);
        unsigned char block[2 + kPage] = {high(done), low(done)};
        std::memcpy(block + 2, buffer + done, chunk);
        SleepFully(kPageWriteMs); // the part does not answer while it writes the previous page
        if (JidaI2CWrite(board, kBus, address, block, chunk + 2) == 0)
            return false;
        done += chunk;
    }
    return true;
}

} // namespace Halvix
