// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/ControlCodes.h"

#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

/// What each control code does: one row per code. `IoCtrl.cpp` executes the rows.
namespace Halvix {

/// One `IoCtrl` call with the arguments of its caller.
struct Call {
    int handle;
    unsigned long code;
    char* in;
    int inLength;
    char* out;
    int outLength;
    int* returned;
};

enum class Action : std::uint8_t { PassIn, PassOut, ByteRead, ByteWrite, CopyOut, Registers, Named };

/// The number of bytes reported to the caller.
enum class Count : std::uint8_t { InLength, OutLength, Unset };

/// One register read into the answer, or one register written from the data sent.
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

constexpr unsigned kMostSteps = 4;

struct Row {
    std::uint32_t code;
    Action action;
    Count count;
    std::array<Step, kMostSteps> steps{};
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

/// The actions that are not a list of steps, in `NamedActions.cpp`. Each checks the blocks it needs and stores the
/// count.
namespace actions {
[[nodiscard]] bool readVoltage(const Call& call);
[[nodiscard]] bool readTimers(const Call& call);
[[nodiscard]] bool readSmart(const Call& call);
[[nodiscard]] bool writeSmart(const Call& call);
[[nodiscard]] bool readVideoPower(const Call& call);
[[nodiscard]] bool readVideoStartup(const Call& call);
[[nodiscard]] bool readFrontRegister(const Call& call);
[[nodiscard]] bool writeFrontRegister(const Call& call);
[[nodiscard]] bool callWithoutAnswer(const Call& call);
[[nodiscard]] bool writeFpgaFlash(const Call& call);
[[nodiscard]] bool readFpgaFlash(const Call& call);
} // namespace actions

inline constexpr Row kControlCodes[] = {
    {codes::setBacklightLevel, Action::ByteWrite, Count::InLength},
    {codes::setVideoControl, Action::PassIn, Count::InLength},
    named(codes::smartWrite, actions::writeSmart),
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
    named(codes::unusedVideoRequest, actions::callWithoutAnswer),
    {codes::mouseRightClickTime, Action::Registers, Count::OutLength, {get16(4, 0)}},
    {codes::setConfPowerOnStartup, Action::Registers, Count::InLength, {putSigned8(21, 0)}},
    named(codes::resumeVideo, actions::callWithoutAnswer),
    {codes::setCalibrationMode, Action::PassIn, Count::InLength},
    named(codes::setFrontRegister, actions::writeFrontRegister),
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
    named(codes::adcVoltage, actions::readVoltage),
    {codes::diagSSTemp, Action::Registers, Count::OutLength, {get16(0, 0)}},
    {codes::diagPCBTemp, Action::Registers, Count::OutLength, {get16(1, 0)}},
    named(codes::diagTimers, actions::readTimers),
    {codes::diagStartupReason, Action::Registers, Count::OutLength, {get16(2, 0)}},
    {codes::diagShutDownReason, Action::Registers, Count::OutLength, {get16(3, 0)}},
    {codes::diagHwErrorStatus, Action::Registers, Count::OutLength, {get16(4, 0)}},
    {codes::diagPowerCycles, Action::Registers, Count::OutLength, {get16(12, 0)}},
    {codes::diagMinMaxTemp, Action::Registers, Count::OutLength, {get16(14, 0), get16(13, 2)}},
    named(codes::smartRead, actions::readSmart),
    {codes::powerBacklight, Action::Registers, Count::OutLength, {get8(0, 0)}},
    {codes::powerCan, Action::Registers, Count::OutLength, {get8(1, 0)}},
    named(codes::powerVideo, actions::readVideoPower),
    {codes::powerExtFan, Action::Registers, Count::OutLength, {get8(3, 0)}},
    {codes::confFrontBtnTrigTime, Action::Registers, Count::OutLength, {get16(0, 0), get16(1, 2)}},
    {codes::confSuspendMaxTime, Action::Registers, Count::OutLength, {zero16(0), get16(4, 2)}},
    {codes::confCanStartup, Action::Registers, Count::OutLength, {get16(7, 0)}},
    named(codes::confVideoStartup, actions::readVideoStartup),
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
    named(codes::frontRegister, actions::readFrontRegister),
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
    named(codes::fpgaFlashWrite, actions::writeFpgaFlash),
    named(codes::fpgaFlashRead, actions::readFpgaFlash),
};

static_assert(std::ranges::is_sorted(kControlCodes, std::ranges::less_equal{}, &Row::code) &&
                  std::ranges::adjacent_find(kControlCodes, {}, &Row::code) == std::end(kControlCodes),
              "the codes are in ascending order, each once");

// The callers' blocks are plain bytes without alignment.
template <class Number>
[[nodiscard]] Number load(const char* block, unsigned offset)
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

/// The driver's own request. `errno` is not reported here.
[[nodiscard]] inline bool request(const Call& call, void* block)
{
    return ::ioctl(call.handle, call.code, block) >= 0;
}

} // namespace Halvix
