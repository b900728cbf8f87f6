// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ServiceUart.h"

#include "simulator/model/Countdown.h"
#include "simulator/model/Microcontroller.h"
#include "simulator/model/Text.h"
#include "simulator/model/UartRouting.h"

#include <algorithm>

namespace hxsim {

namespace {

constexpr std::uint32_t kFastestForBootloader = 115200;

} // namespace

ServiceUart::ServiceUart(Unit& unit) : unit_{unit}
{
    unit.addNode("/dev/ttyS0")
        .onRead([this](OpenFile&, std::span<std::uint8_t> out, Time started) { return read(out, started); })
        .onPoll([this](OpenFile&, Time) { return received_.size() >= wanted(); })
        .onWrite([this](OpenFile&, std::span<const std::uint8_t> in) { return write(in); })
        .serialLine(
            [this](const LineSettings& settings) { line = settings; },
            [this](bool input, bool) {
                if (input)
                    received_.clear();
            },
            [this] { return unit_.clock().now() >= sendingUntil_ ? Outcome{} : Outcome::notBefore(sendingUntil_); });
    unit.properties().flag("uart.paced", paced, "whether bytes take their transfer time on the line");
    unit.properties().number("uart.drop-to-target", dropToTarget, 0, INT32_MAX,
                             "fault: lose the Nth byte towards the target from now");
    unit.properties().number("uart.drop-to-unit", dropToUnit, 0, INT32_MAX,
                             "fault: lose the Nth byte towards the unit from now");
    unit.actions().add(
        "drop", "serial",
        [this](const Actions::Words& words) {
            if (words != Actions::Words{"serial"})
                throw BadText{"drop serial"};
            dropToUnit = 1;
        },
        "loses the next byte from a microcontroller");
}

Time ServiceUart::passedAt(Time& busyUntil)
{
    const int bits = 1 + line.dataBits + (line.parity == 'n' ? 0 : 1) + line.stopBits;
    const Time each{paced && line.baud != 0 ? std::int64_t{1'000'000'000} * bits / line.baud : 0};
    busyUntil = std::max(busyUntil, unit_.clock().now()) + each;
    return busyUntil;
}

bool ServiceUart::targetUnderstands() const
{
    return line.dataBits == 8 && line.parity == 'e' && line.baud <= kFastestForBootloader;
}

Outcome ServiceUart::write(std::span<const std::uint8_t> in)
{
    for (const std::uint8_t byte : in) {
        if (paced)
            unit_.clock().at(passedAt(sendingUntil_), [this, byte] { deliver(byte); });
        else
            deliver(byte);
    }
    return {static_cast<std::int64_t>(in.size()), false, {}};
}

void ServiceUart::deliver(std::uint8_t byte)
{
    Microcontroller* target = unit_.get<UartRouting>().peer();
    if (target != nullptr && targetUnderstands() && !countsDown(dropToTarget))
        target->receive(byte);
}

void ServiceUart::fromTarget(const Microcontroller& target, std::uint8_t byte)
{
    if (unit_.get<UartRouting>().peer() != &target || countsDown(dropToUnit))
        return;
    if (paced)
        unit_.clock().at(passedAt(receivingUntil_), [this, byte] { received_.push_back(byte); });
    else
        received_.push_back(byte);
}

std::size_t ServiceUart::wanted() const
{
    return std::max<std::size_t>(line.vmin, 1);
}

Outcome ServiceUart::read(std::span<std::uint8_t> out, Time started)
{
    if (received_.size() >= std::min(out.size(), wanted())) {
        const std::size_t count = std::min(out.size(), received_.size());
        std::copy_n(received_.begin(), count, out.begin());
        received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(count));
        return {static_cast<std::int64_t>(count), false, {}};
    }
    if (line.vmin > 0)
        return Outcome::notBefore(std::nullopt);
    const Time deadline = started + std::chrono::milliseconds{line.vtime * 100};
    if (unit_.clock().now() >= deadline)
        return {0, false, {}};
    return Outcome::notBefore(deadline);
}

HXSIM_HARDWARE(ServiceUart)

} // namespace hxsim
