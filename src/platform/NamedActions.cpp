// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/ControlCodeTable.h"
#include "platform/Registers.h"

namespace Halvix::actions {

namespace {

constexpr unsigned kSmartBase = 32; // the supervisor's free registers start here

constexpr unsigned kFlashBlock = 536; // u32 length, u32 position, 528 bytes of data

bool counted(const Call& call, int count)
{
    *call.returned = count;
    return true;
}

/// Gathers one bit of each of four registers; `bitOf` returns whether a register's value counts as set.
template <class BitOf>
bool gatherBits(const Call& call, const std::uint8_t (&numbers)[4], BitOf bitOf, unsigned& bits)
{
    bits = 0;
    for (unsigned i = 0; i < 4; ++i) {
        std::uint16_t value = 0;
        if (!registers::read(call.handle, numbers[i], value))
            return false;
        bits |= (bitOf(value) ? 1U : 0U) << i;
    }
    return true;
}

} // namespace

bool readVoltage(const Call& call)
{
    if (call.in == nullptr || call.out == nullptr)
        return false;
    const auto number = load<std::uint32_t>(call.in, 0);
    std::uint16_t value = 0;
    if (!registers::read(call.handle, static_cast<std::uint8_t>(number), value))
        return false;
    store(call.out, 0, number);
    store(call.out, 4, value);
    return counted(call, call.outLength);
}

/// Seven operating times of the supervisor in seconds, each kept as minutes (or half-words of them) and seconds.
bool readTimers(const Call& call)
{
    // In the order in which the supervisor's registers are read: minutes before seconds, but in field 1 the other way
    // round.
    static constexpr std::uint8_t kOrder[] = {8, 7, 9, 11, 10, 23, 24, 15, 16, 17, 18, 19, 20, 21, 22};
    if (call.out == nullptr)
        return false;
    std::uint16_t value[32] = {};
    for (const std::uint8_t reg : kOrder)
        if (!registers::read(call.handle, reg, value[reg]))
            return false;
    const auto seconds = [&](std::uint32_t minutes, int reg) { return minutes * 60U + value[reg]; };
    const std::uint32_t total = (static_cast<std::uint32_t>(value[8]) << 16) | value[7];
    const std::uint32_t fields[7] = {seconds(total, 9),      seconds(value[10], 11), seconds(value[23], 24),
                                     seconds(value[15], 16), seconds(value[17], 18), seconds(value[19], 20),
                                     seconds(value[21], 22)};
    std::memcpy(call.out, fields, sizeof fields);
    return counted(call, call.outLength);
}

bool readSmart(const Call& call)
{
    if (call.out == nullptr)
        return false;
    const auto index = load<std::uint16_t>(call.out, 0);
    std::uint16_t value = 0;
    if (!registers::read(call.handle, static_cast<std::uint8_t>(index + kSmartBase), value))
        return false;
    store(call.out, 2, value);
    return counted(call, call.outLength);
}

bool writeSmart(const Call& call)
{
    if (call.in == nullptr)
        return false;
    const auto index = load<std::uint16_t>(call.in, 0);
    return registers::write(call.handle, static_cast<std::uint8_t>(index + kSmartBase),
                            load<std::uint16_t>(call.in, 2)) &&
           counted(call, call.inLength);
}

bool readVideoPower(const Call& call)
{
    unsigned bits = 0;
    if (call.out == nullptr || !gatherBits(
                                   call, {2, 5, 6, 7}, [](unsigned value) { return (value & 1U) != 0; }, bits))
        return false;
    store(call.out, 0, static_cast<std::uint8_t>(bits));
    return counted(call, call.outLength);
}

bool readVideoStartup(const Call& call)
{
    unsigned bits = 0;
    if (call.out == nullptr || !gatherBits(
                                   call, {8, 11, 12, 13}, [](unsigned value) { return value != 0; }, bits))
        return false;
    store(call.out, 0, static_cast<std::uint16_t>(bits));
    return counted(call, call.outLength);
}

bool readFrontRegister(const Call& call)
{
    if (call.in == nullptr || call.out == nullptr)
        return false;
    std::uint16_t value = 0;
    if (!registers::read(call.handle, load<std::uint8_t>(call.in, 0), value))
        return false;
    store(call.out, 2, value); // the register number's bytes in the answer stay unchanged
    return counted(call, call.outLength);
}

bool writeFrontRegister(const Call& call)
{
    if (call.in == nullptr)
        return false;
    return registers::write(call.handle, load<std::uint8_t>(call.in, 0), load<std::uint16_t>(call.in, 2)) &&
           counted(call, call.inLength);
}

/// Calls the driver and always returns false: callers rely on it and cannot determine the outcome.
bool callWithoutAnswer(const Call& call)
{
    (void)request(call, nullptr);
    return false;
}

bool writeFpgaFlash(const Call& call)
{
    if (call.in == nullptr)
        return false;
    char local[kFlashBlock];
    std::memcpy(local, call.in, sizeof local);
    if (!request(call, local))
        return false;
    if (call.out != nullptr)
        store(call.out, 0, load<std::uint32_t>(local, 4));
    return counted(call, call.outLength != 0 ? call.outLength : call.inLength);
}

bool readFpgaFlash(const Call& call)
{
    if (call.in == nullptr || call.out == nullptr)
        return false;
    store(call.out, 0, load<std::uint16_t>(call.in, 0));
    store(call.out, 4, load<std::uint32_t>(call.in, 4));
    return request(call, call.out) && counted(call, call.outLength);
}

} // namespace Halvix::actions
