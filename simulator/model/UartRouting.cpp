// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/UartRouting.h"

#include "simulator/model/FpgaFlash.h"
#include "simulator/model/Microcontroller.h"

#include <cerrno>
#include <cstdio>

namespace hxsim {

namespace {

constexpr std::uint8_t kBootSupervisor = 0x96;
constexpr std::uint8_t kHandsOff = 0x0F;
constexpr std::uint8_t kNormal = 0xC3;

constexpr std::uint8_t kToNobody = 0;
constexpr std::uint8_t kToSupervisor = 1;
constexpr std::uint8_t kToFront = 2;

} // namespace

UartRouting::UartRouting(Unit& unit) : unit_{unit}
{
    unit.addNode("/dev/uart-redir")
        .request(0x4001004B, Takes{1}, Gives{0}, [this](Request& request) { return setDirection(request.u8(0)); })
        .request(0x4001004C, Takes{1}, Gives{0}, [this](Request& request) { return setMode(request.u8(0)); })
        .request(0x40010050, Takes{0}, Gives{0}, [this](Request&) { return startFrontBootloader(); });
    unit.whenSupplyFails([this] {
        mode = kNormal;
        direction = kToNobody;
    });
    unit.properties().readOnly(
        "uart.direction", [this] { return std::to_string(direction); }, "0 disconnected, 1 supervisor, 2 front panel");
    unit.properties().readOnly(
        "uart.mode",
        [this] {
            char text[8];
            std::snprintf(text, sizeof text, "0x%02x", mode);
            return std::string{text};
        },
        "the supervisor's mode: 0xc3 normal, 0x0f passive, 0x96 bootloader");
}

Microcontroller* UartRouting::peer()
{
    auto& both = unit_.get<Microcontrollers>();
    return direction == kToSupervisor ? &both.supervisor : direction == kToFront ? &both.front : nullptr;
}

int UartRouting::setDirection(std::uint8_t value)
{
    if (value > kToFront)
        return -EINVAL;
    // The supervisor's boot pin is held while the line is routed to it.
    if (direction == kToSupervisor && value == kToNobody && mode == kBootSupervisor) {
        unit_.get<Microcontrollers>().supervisor.startFirmware();
        mode = kNormal;
    }
    direction = value;
    return 0;
}

int UartRouting::setMode(std::uint8_t value)
{
    auto& both = unit_.get<Microcontrollers>();
    if (value != kBootSupervisor && value != kHandsOff && value != kNormal)
        return -EINVAL;
    if (value == kBootSupervisor)
        both.supervisor.startBootloader();
    if (value == kHandsOff)
        unit_.get<FpgaFlash>().beginRun();
    if (value == kNormal && mode == kHandsOff)
        unit_.get<FpgaFlash>().endRun();
    if (value == kNormal && mode == kHandsOff && both.front.state != Microcontroller::State::Running)
        both.front.startFirmware();
    mode = value;
    return 0;
}

int UartRouting::startFrontBootloader()
{
    if (mode != kHandsOff)
        return -EBUSY;
    unit_.get<Microcontrollers>().front.startBootloader();
    return 0;
}

HXSIM_HARDWARE(UartRouting)

} // namespace hxsim
