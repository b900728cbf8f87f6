// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/ControlCodes.h"
#include "platform/LinuxWrapper.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace Halvix {

namespace {

/// One `IoCtrl` call, as its caller made it.
struct Call {
    int handle;
    unsigned long code;
    char* in;
    int inLength;
    char* out;
    int outLength;
    int* returned;
};

bool request(const Call& call, void* block)
{
    return ::ioctl(call.handle, call.code, block) >= 0;
}

// The callers' blocks are plain bytes without alignment.
template <class Number>
Number load(const char* block, unsigned offset)
{
    Number number;
    std::memcpy(&number, block + offset, sizeof number);
    return number;
}

template <class Number>
void store(char* block, unsigned offset, Number number)
{
    std::memcpy(block + offset, &number, sizeof number);
}

// What a row does.

enum class Action : std::uint8_t { PassIn, PassOut, ByteRead, ByteWrite, CopyOut, Registers, Named };

/// What the caller is told as the number of bytes.
enum class Count : std::uint8_t { InLength, OutLength, Unset };

/// One register read into the answer, or one register written from what was sent.
struct Step {
    enum class Kind : std::uint8_t { None, Get16, Get8, Zero16, Put16, Put8, PutSigned8, PutOne };
    Kind kind = Kind::None;
    std::uint8_t reg = 0;
    std::uint8_t offset = 0;
    std::uint16_t mask = 0xFFFF;
};

constexpr Step get16(std::uint8_t reg, std::uint8_t offset)
{
    return {Step::Kind::Get16, reg, offset};
}
constexpr Step get8(std::uint8_t reg, std::uint8_t offset)
{
    return {Step::Kind::Get8, reg, offset};
}
constexpr Step zero16(std::uint8_t offset)
{
    return {Step::Kind::Zero16, 0, offset};
}
constexpr Step put16(std::uint8_t reg, std::uint8_t offset, std::uint16_t mask = 0xFFFF)
{
    return {Step::Kind::Put16, reg, offset, mask};
}
constexpr Step put8(std::uint8_t reg, std::uint8_t offset, std::uint16_t mask = 0xFFFF)
{
    return {Step::Kind::Put8, reg, offset, mask};
}
constexpr Step putSigned8(std::uint8_t reg, std::uint8_t offset)
{
    return {Step::Kind::PutSigned8, reg, offset};
}
constexpr Step one(std::uint8_t reg)
{
    return {Step::Kind::PutOne, reg};
}

using NamedAction = bool (*)(const Call&);

struct Row {
    std::uint32_t code;
    Action action;
    Count count;
    std::array<Step, 4> steps{};
    std::uint8_t copied = 0;     ///< CopyOut: bytes that reach the caller
    NamedAction named = nullptr; ///< Named: the function, which also stores the count
};

constexpr Row copyOut(std::uint32_t code, std::uint8_t bytes)
{
    return {code, Action::CopyOut, Count::OutLength, {}, bytes};
}
constexpr Row named(std::uint32_t code, NamedAction function)
{
    return {code, Action::Named, Count::Unset, {}, 0, function};
}

// The actions that are no list of steps. Each needs its blocks and answers the count itself.

bool counted(const Call& call, int count)
{
    *call.returned = count;
    return true;
}

bool readVoltage(const Call& call)
{
    if (call.in == nullptr || call.out == nullptr)
        return false;
    const auto number = load<std::uint32_t>(call.in, 0);
    std::uint16_t value = 0;
    if (!LinuxWrapper::ReadID(call.handle, static_cast<std::uint8_t>(number), &value))
        return false;
    store(call.out, 0, number);
    store(call.out, 4, value);
    return counted(call, call.outLength);
}

/// Seven operating times of the supervisor in seconds, each kept as minutes (or half-words of them) and seconds.
bool readTimers(const Call& call)
{
    // In the order in which the supervisor's registers are read: minutes before seconds, but field 1 the other way
    // round.
    static constexpr std::uint8_t kOrder[] = {8, 7, 9, 11, 10, 23, 24, 15, 16, 17, 18, 19, 20, 21, 22};
    if (call.out == nullptr)
        return false;
    std::uint16_t value[32] = {};
    for (const std::uint8_t reg : kOrder)
        if (!LinuxWrapper::ReadID(call.handle, reg, &value[reg]))
            return false;
    const auto seconds = [&](std::uint32_t minutes, int reg) { return minutes * 60U + value[reg]; };
    const std::uint32_t total = (static_cast<std::uint32_t>(value[8]) << 16) | value[7];
    const std::uint32_t fields[7] = {seconds(total, 9),      seconds(value[10], 11), seconds(value[23], 24),
                                     seconds(value[15], 16), seconds(value[17], 18), seconds(value[19], 20),
                                     seconds(value[21], 22)};
    std::memcpy(call.out, fields, sizeof fields);
    return counted(call, call.outLength);
}

constexpr unsigned kSmartBase = 32; // the supervisor's free registers start here

bool readSmart(const Call& call)
{
    if (call.out == nullptr)
        return false;
    const auto index = load<std::uint16_t>(call.out, 0);
    std::uint16_t value = 0;
    if (!LinuxWrapper::ReadID(call.handle, static_cast<std::uint8_t>(index + kSmartBase), &value))
        return false;
    store(call.out, 2, value);
    return counted(call, call.outLength);
}

bool writeSmart(const Call& call)
{
    if (call.in == nullptr)
        return false;
    const auto index = load<std::uint16_t>(call.in, 0);
    return LinuxWrapper::WriteID(call.handle, static_cast<std::uint8_t>(index + kSmartBase),
                                 load<std::uint16_t>(call.in, 2)) &&
           counted(call, call.inLength);
}

/// Gathers one bit of each of four registers; `bitOf` tells whether a register's value counts as set.
template <class BitOf>
bool gatherBits(const Call& call, const std::uint8_t (&registers)[4], BitOf bitOf, unsigned& bits)
{
    bits = 0;
    for (unsigned i = 0; i < 4; ++i) {
        std::uint16_t value = 0;
        if (!LinuxWrapper::ReadID(call.handle, registers[i], &value))
            return false;
        bits |= (bitOf(value) ? 1U : 0U) << i;
    }
    return true;
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
    if (!LinuxWrapper::ReadID(call.handle, load<std::uint8_t>(call.in, 0), &value))
        return false;
    store(call.out, 2, value); // the register number's place in the answer stays as it is
    return counted(call, call.outLength);
}

bool writeFrontRegister(const Call& call)
{
    if (call.in == nullptr)
        return false;
    return LinuxWrapper::WriteID(call.handle, load<std::uint8_t>(call.in, 0), load<std::uint16_t>(call.in, 2)) &&
           counted(call, call.inLength);
}

/// The driver is called, and false is answered whatever it says: callers rely on it and cannot tell the outcome.
bool callWithoutAnswer(const Call& call)
{
    (void)request(call, nullptr);
    return false;
}

constexpr unsigned kFlashBlock = 536; // u32 length, u32 position, 528 bytes of data

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

// The table.

constexpr Row kTable[] = {
    {codes::setBacklightLevel, Action::ByteWrite, Count::InLength},
    {codes::setVideoControl, Action::PassIn, Count::InLength},
    named(codes::smartWrite, writeSmart),
    {codes::setPowerBacklight, Action::Registers, Count::InLength, {put8(0, 0)}},
    {codes::setPowerCan, Action::Registers, Count::InLength, {put8(1, 0)}},
    {codes::setPowerVideo,
     Action::Registers,
     Count::InLength,
     {put8(2, 0, 1), put8(5, 0, 2), put8(6, 0, 4), put8(7, 0, 8)}},
    {codes::setPowerExtFan, Action::Registers, Count::InLength, {put8(3, 0)}},
    {codes::setConfFrontBtnTrigTime, Action::Registers, Count::InLength, {put16(0, 0), put16(1, 2)}},
    {codes::setConfSuspendMaxTime, Action::Registers, Count::InLength, {put16(4, 2)}},
    {codes::setConfCanStartup, Action::Registers, Count::InLength, {put16(7, 0)}},
    {codes::setConfVideoStartup,
     Action::Registers,
     Count::InLength,
     {put16(8, 0, 1), put16(11, 0, 2), put16(12, 0, 4), put16(13, 0, 8)}},
    {codes::setConfExtFanStartup, Action::Registers, Count::InLength, {put16(9, 0)}},
    {codes::setConfStartupVoltage, Action::Registers, Count::InLength, {put16(10, 0)}},
    {codes::ackPowerRequest, Action::Registers, Count::InLength, {put8(4, 0)}},
    {codes::setBuzzerTrigger, Action::PassIn, Count::InLength},
    {codes::setLedEnabledDuringStartup, Action::PassIn, Count::InLength},
    {codes::setLightSensorRange, Action::ByteWrite, Count::InLength},
    {codes::setUartDirection, Action::PassIn, Count::InLength},
    {codes::setSupervisorMode, Action::PassIn, Count::InLength},
    {codes::fpgaFlashStatus, Action::PassIn, Count::OutLength},
    {codes::frontBootMode, Action::PassIn, Count::InLength},
    {codes::setConfHeatingTempLimit, Action::Registers, Count::InLength, {put16(14, 0)}},
    {codes::setTouchMode, Action::Registers, Count::InLength, {put8(3, 0, 3)}},
    {codes::setConfShortButtonPress, Action::Registers, Count::InLength, {put16(16, 0)}},
    {codes::setConfLongButtonPress, Action::Registers, Count::InLength, {put16(17, 0)}},
    {codes::setConfOnOffSignal, Action::Registers, Count::InLength, {put16(18, 0)}},
    {codes::setConfStartupTrigger, Action::Registers, Count::InLength, {put16(19, 0)}},
    {codes::setConfExtOnOffSigTrigTime, Action::Registers, Count::InLength, {put16(3, 0), put16(20, 2)}},
    {codes::setMouseRightClickTime, Action::Registers, Count::InLength, {put16(4, 0)}},
    {codes::clearHwErrorStatus, Action::Registers, Count::Unset, {one(25)}},
    named(codes::unusedVideoRequest, callWithoutAnswer),
    {codes::mouseRightClickTime, Action::Registers, Count::OutLength, {get16(4, 0)}},
    {codes::setConfPowerOnStartup, Action::Registers, Count::InLength, {putSigned8(21, 0)}},
    named(codes::resumeVideo, callWithoutAnswer),
    {codes::setCalibrationMode, Action::PassIn, Count::InLength},
    named(codes::setFrontRegister, writeFrontRegister),
    {codes::setVideoDecoderRegister, Action::PassIn, Count::InLength},
    {codes::initVideo, Action::PassIn, Count::InLength},
    {codes::setVideoColorKeys, Action::PassIn, Count::InLength},
    {codes::setLedColor, Action::PassIn, Count::InLength},
    {codes::setVideoScaling, Action::PassIn, Count::InLength},
    {codes::setVideoActiveChannel, Action::PassIn, Count::InLength},
    {codes::setVideoCropping, Action::PassIn, Count::InLength},
    {codes::setBuzzerSetup, Action::PassIn, Count::InLength},
    {codes::setLedTiming, Action::PassIn, Count::InLength},
    {codes::setVideoArea, Action::PassIn, Count::InLength},
    {codes::backlightLevel, Action::ByteRead, Count::OutLength},
    {codes::backlightStatus, Action::ByteRead, Count::OutLength},
    {codes::videoStatus, Action::ByteRead, Count::OutLength},
    named(codes::adcVoltage, readVoltage),
    {codes::diagSSTemp, Action::Registers, Count::OutLength, {get16(0, 0)}},
    {codes::diagPCBTemp, Action::Registers, Count::OutLength, {get16(1, 0)}},
    named(codes::diagTimers, readTimers),
    {codes::diagStartupReason, Action::Registers, Count::OutLength, {get16(2, 0)}},
    {codes::diagShutDownReason, Action::Registers, Count::OutLength, {get16(3, 0)}},
    {codes::diagHwErrorStatus, Action::Registers, Count::OutLength, {get16(4, 0)}},
    {codes::diagPowerCycles, Action::Registers, Count::OutLength, {get16(12, 0)}},
    {codes::diagMinMaxTemp, Action::Registers, Count::OutLength, {get16(14, 0), get16(13, 2)}},
    named(codes::smartRead, readSmart),
    {codes::powerBacklight, Action::Registers, Count::OutLength, {get8(0, 0)}},
    {codes::powerCan, Action::Registers, Count::OutLength, {get8(1, 0)}},
    named(codes::powerVideo, readVideoPower),
    {codes::powerExtFan, Action::Registers, Count::OutLength, {get8(3, 0)}},
    {codes::confFrontBtnTrigTime, Action::Registers, Count::OutLength, {get16(0, 0), get16(1, 2)}},
    {codes::confSuspendMaxTime, Action::Registers, Count::OutLength, {zero16(0), get16(4, 2)}},
    {codes::confCanStartup, Action::Registers, Count::OutLength, {get16(7, 0)}},
    named(codes::confVideoStartup, readVideoStartup),
    {codes::confExtFanStartup, Action::Registers, Count::OutLength, {get16(9, 0)}},
    {codes::confStartupVoltage, Action::Registers, Count::OutLength, {get16(10, 0)}},
    {codes::powerButtonTransition, Action::Registers, Count::OutLength, {get8(4, 0)}},
    {codes::buzzerTrigger, Action::PassOut, Count::OutLength},
    {codes::ledEnabledDuringStartup, Action::PassOut, Count::OutLength},
    {codes::lightSensorRange, Action::ByteRead, Count::OutLength},
    {codes::digitalInputs, Action::ByteRead, Count::OutLength},
    {codes::confHeatingTempLimit, Action::Registers, Count::OutLength, {get16(14, 0)}},
    {codes::touchMode, Action::Registers, Count::OutLength, {get8(3, 0)}},
    {codes::confShortButtonPress, Action::Registers, Count::OutLength, {get16(16, 0)}},
    {codes::confLongButtonPress, Action::Registers, Count::OutLength, {get16(17, 0)}},
    {codes::confOnOffSignal, Action::Registers, Count::OutLength, {get16(18, 0)}},
    {codes::confStartupTrigger, Action::Registers, Count::OutLength, {get16(19, 0)}},
    {codes::confExtOnOffSigTrigTime, Action::Registers, Count::OutLength, {get16(3, 0), get16(20, 2)}},
    {codes::confPowerOnStartup, Action::Registers, Count::OutLength, {get8(21, 0)}},
    {codes::calibrationMode, Action::PassOut, Count::OutLength},
    named(codes::frontRegister, readFrontRegister),
    {codes::videoDecoderRegister, Action::PassOut, Count::OutLength},
    copyOut(codes::lightSensorChannels, 2),
    {codes::videoColorKeys, Action::PassOut, Count::OutLength},
    {codes::ledColor, Action::PassOut, Count::OutLength},
    {codes::videoScaling, Action::PassOut, Count::OutLength},
    {codes::videoActiveChannel, Action::PassOut, Count::OutLength},
    copyOut(codes::versionFpga, 4),
    copyOut(codes::versionSupervisor, 4),
    copyOut(codes::versionFront, 4),
    {codes::videoCropping, Action::PassOut, Count::OutLength},
    {codes::buzzerSetup, Action::PassOut, Count::OutLength},
    {codes::ledTiming, Action::PassOut, Count::OutLength},
    copyOut(codes::versionDrivers, 4),
    {codes::videoRawImage, Action::PassOut, Count::OutLength},
    {codes::videoArea, Action::PassOut, Count::OutLength},
    named(codes::fpgaFlashWrite, writeFpgaFlash),
    named(codes::fpgaFlashRead, readFpgaFlash),
};

static_assert(std::ranges::is_sorted(kTable, std::ranges::less_equal{}, &Row::code) &&
                  std::ranges::adjacent_find(kTable, {}, &Row::code) == std::end(kTable),
              "rows are found by binary search; a code appears once");

const Row* rowOf(unsigned long code)
{
    const auto* row = std::ranges::lower_bound(kTable, code, {}, &Row::code);
    return row != std::end(kTable) && row->code == code ? row : nullptr;
}

// The actions that are the same for many rows.

bool passIn(const Call& call)
{
    return request(call, call.in);
}

bool passOut(const Call& call)
{
    return request(call, call.out);
}

bool byteRead(const Call& call)
{
    char local[2] = {};
    if (call.out == nullptr || !request(call, local))
        return false;
    call.out[0] = local[0];
    return true;
}

bool byteWrite(const Call& call)
{
    if (call.in == nullptr)
        return false;
    char local[2] = {0, call.in[0]}; // the drivers take the value from the second byte
    return request(call, local);
}

bool copyAnswer(const Call& call, unsigned bytes)
{
    char local[8] = {};
    if (call.out == nullptr || !request(call, local))
        return false;
    std::memcpy(call.out, local, bytes);
    return true;
}

bool getStep(const Call& call, const Step& step)
{
    if (call.out == nullptr)
        return false;
    std::uint16_t value = 0;
    if (step.kind != Step::Kind::Zero16 && !LinuxWrapper::ReadID(call.handle, step.reg, &value))
        return false;
    if (step.kind == Step::Kind::Get8)
        store(call.out, step.offset, static_cast<std::uint8_t>(value));
    else
        store(call.out, step.offset, value);
    return true;
}

bool putStep(const Call& call, const Step& step)
{
    if (call.in == nullptr && step.kind != Step::Kind::PutOne)
        return false;
    unsigned value = 1;
    switch (step.kind) {
    case Step::Kind::Put16:
        value = load<std::uint16_t>(call.in, step.offset);
        break;
    case Step::Kind::Put8:
        value = load<std::uint8_t>(call.in, step.offset);
        break;
    case Step::Kind::PutSigned8: // 0xFF arrives as 0xFFFF; the supervisor is used to it
        value = static_cast<unsigned>(static_cast<int>(load<std::int8_t>(call.in, step.offset)));
        break;
    default:
        break;
    }
    return LinuxWrapper::WriteID(call.handle, step.reg, static_cast<std::uint16_t>(value & step.mask));
}

bool perform(const Call& call, const Step& step)
{
    switch (step.kind) {
    case Step::Kind::None:
        return true;
    case Step::Kind::Get16:
    case Step::Kind::Get8:
    case Step::Kind::Zero16:
        return getStep(call, step);
    default:
        return putStep(call, step);
    }
}

bool perform(const Call& call, const Row& row)
{
    switch (row.action) {
    case Action::PassIn:
        return passIn(call);
    case Action::PassOut:
        return passOut(call);
    case Action::ByteRead:
        return byteRead(call);
    case Action::ByteWrite:
        return byteWrite(call);
    case Action::CopyOut:
        return copyAnswer(call, row.copied);
    case Action::Registers:
        // A step that fails ends the request at once; what was written before stays written.
        return std::ranges::all_of(row.steps, [&](const Step& step) { return perform(call, step); });
    case Action::Named:
        return row.named(call);
    }
    return false;
}

} // namespace

bool LinuxWrapper::IoCtrl(int handle, unsigned long code, char* in, int inLength, char* out, int outLength,
                          int* returned)
{
    if ((inLength >= 1 && in == nullptr) || (outLength >= 1 && out == nullptr))
        return false;
    const Row* row = rowOf(code);
    if (row == nullptr)
        return false;
    if (!perform({handle, code, in, inLength, out, outLength, returned}, *row))
        return false;
    if (row->count != Count::Unset)
        *returned = row->count == Count::InLength ? inLength : outLength;
    return true;
}

} // namespace Halvix
