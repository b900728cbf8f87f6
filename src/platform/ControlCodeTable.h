// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "platform/ControlCodes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <sys/ioctl.h>

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

// What follows from an action stands here once, not in the rows.

constexpr Row passIn(std::uint32_t code)
{
    return {code, Action::PassIn, Count::InLength};
}
/// A request of the sending kind whose driver answers in the block that it is given.
constexpr Row passInForAnswer(std::uint32_t code)
{
    return {code, Action::PassIn, Count::OutLength};
}
constexpr Row passOut(std::uint32_t code)
{
    return {code, Action::PassOut, Count::OutLength};
}
constexpr Row byteRead(std::uint32_t code)
{
    return {code, Action::ByteRead, Count::OutLength};
}
constexpr Row byteWrite(std::uint32_t code)
{
    return {code, Action::ByteWrite, Count::InLength};
}
constexpr Row copyOut(std::uint32_t code, std::uint8_t bytes)
{
    return {code, Action::CopyOut, Count::OutLength, {}, bytes};
}
constexpr Row reads(std::uint32_t code, Step first, Step second = {})
{
    return {code, Action::Registers, Count::OutLength, {first, second}};
}
constexpr Row writes(std::uint32_t code, Step first, Step second = {}, Step third = {}, Step fourth = {})
{
    return {code, Action::Registers, Count::InLength, {first, second, third, fourth}};
}
/// Writes a 1, for a request without any payload.
constexpr Row triggers(std::uint32_t code, std::uint8_t reg)
{
    return {code, Action::Registers, Count::Unset, {Step{Step::Kind::PutOne, reg}}};
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
    byteWrite(codes::setBacklightLevel),
    passIn(codes::setVideoControl),
    named(codes::smartWrite, actions::writeSmart),
    writes(codes::setPowerBacklight, put8(0, 0)),
    writes(codes::setPowerCan, put8(1, 0)),
    writes(codes::setPowerVideo, put8(2, 0, 1), put8(5, 0, 2), put8(6, 0, 4), put8(7, 0, 8)),
    writes(codes::setPowerExtFan, put8(3, 0)),
    writes(codes::setConfFrontBtnTrigTime, put16(0, 0), put16(1, 2)),
    writes(codes::setConfSuspendMaxTime, put16(4, 2)),
    writes(codes::setConfCanStartup, put16(7, 0)),
    writes(codes::setConfVideoStartup, put16(8, 0, 1), put16(11, 0, 2), put16(12, 0, 4), put16(13, 0, 8)),
    writes(codes::setConfExtFanStartup, put16(9, 0)),
    writes(codes::setConfStartupVoltage, put16(10, 0)),
    writes(codes::ackPowerRequest, put8(4, 0)),
    passIn(codes::setBuzzerTrigger),
    passIn(codes::setLedEnabledDuringStartup),
    byteWrite(codes::setLightSensorRange),
    passIn(codes::setUartDirection),
    passIn(codes::setSupervisorMode),
    passInForAnswer(codes::fpgaFlashStatus),
    passIn(codes::frontBootMode),
    writes(codes::setConfHeatingTempLimit, put16(14, 0)),
    writes(codes::setTouchMode, put8(3, 0, 3)),
    writes(codes::setConfShortButtonPress, put16(16, 0)),
    writes(codes::setConfLongButtonPress, put16(17, 0)),
    writes(codes::setConfOnOffSignal, put16(18, 0)),
    writes(codes::setConfStartupTrigger, put16(19, 0)),
    writes(codes::setConfExtOnOffSigTrigTime, put16(3, 0), put16(20, 2)),
    writes(codes::setMouseRightClickTime, put16(4, 0)),
    triggers(codes::clearHwErrorStatus, 25),
    named(codes::unusedVideoRequest, actions::callWithoutAnswer),
    reads(codes::mouseRightClickTime, get16(4, 0)),
    writes(codes::setConfPowerOnStartup, putSigned8(21, 0)),
    named(codes::resumeVideo, actions::callWithoutAnswer),
    passIn(codes::setCalibrationMode),
    named(codes::setFrontRegister, actions::writeFrontRegister),
    passIn(codes::setVideoDecoderRegister),
    passIn(codes::initVideo),
    passIn(codes::setVideoColorKeys),
    passIn(codes::setLedColor),
    passIn(codes::setVideoScaling),
    passIn(codes::setVideoActiveChannel),
    passIn(codes::setVideoCropping),
    passIn(codes::setBuzzerSetup),
    passIn(codes::setLedTiming),
    passIn(codes::setVideoArea),
    byteRead(codes::backlightLevel),
    byteRead(codes::backlightStatus),
    byteRead(codes::videoStatus),
    named(codes::adcVoltage, actions::readVoltage),
    reads(codes::diagSSTemp, get16(0, 0)),
    reads(codes::diagPCBTemp, get16(1, 0)),
    named(codes::diagTimers, actions::readTimers),
    reads(codes::diagStartupReason, get16(2, 0)),
    reads(codes::diagShutDownReason, get16(3, 0)),
    reads(codes::diagHwErrorStatus, get16(4, 0)),
    reads(codes::diagPowerCycles, get16(12, 0)),
    reads(codes::diagMinMaxTemp, get16(14, 0), get16(13, 2)),
    named(codes::smartRead, actions::readSmart),
    reads(codes::powerBacklight, get8(0, 0)),
    reads(codes::powerCan, get8(1, 0)),
    named(codes::powerVideo, actions::readVideoPower),
    reads(codes::powerExtFan, get8(3, 0)),
    reads(codes::confFrontBtnTrigTime, get16(0, 0), get16(1, 2)),
    reads(codes::confSuspendMaxTime, zero16(0), get16(4, 2)),
    reads(codes::confCanStartup, get16(7, 0)),
    named(codes::confVideoStartup, actions::readVideoStartup),
    reads(codes::confExtFanStartup, get16(9, 0)),
    reads(codes::confStartupVoltage, get16(10, 0)),
    reads(codes::powerButtonTransition, get8(4, 0)),
    passOut(codes::buzzerTrigger),
    passOut(codes::ledEnabledDuringStartup),
    byteRead(codes::lightSensorRange),
    byteRead(codes::digitalInputs),
    reads(codes::confHeatingTempLimit, get16(14, 0)),
    reads(codes::touchMode, get8(3, 0)),
    reads(codes::confShortButtonPress, get16(16, 0)),
    reads(codes::confLongButtonPress, get16(17, 0)),
    reads(codes::confOnOffSignal, get16(18, 0)),
    reads(codes::confStartupTrigger, get16(19, 0)),
    reads(codes::confExtOnOffSigTrigTime, get16(3, 0), get16(20, 2)),
    reads(codes::confPowerOnStartup, get8(21, 0)),
    passOut(codes::calibrationMode),
    named(codes::frontRegister, actions::readFrontRegister),
    passOut(codes::videoDecoderRegister),
    copyOut(codes::lightSensorChannels, 2),
    passOut(codes::videoColorKeys),
    passOut(codes::ledColor),
    passOut(codes::videoScaling),
    passOut(codes::videoActiveChannel),
    copyOut(codes::versionFpga, 4),
    copyOut(codes::versionSupervisor, 4),
    copyOut(codes::versionFront, 4),
    passOut(codes::videoCropping),
    passOut(codes::buzzerSetup),
    passOut(codes::ledTiming),
    copyOut(codes::versionDrivers, 4),
    passOut(codes::videoRawImage),
    passOut(codes::videoArea),
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
