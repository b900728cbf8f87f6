// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Buzzer.h"

#include "simulator/model/Text.h"

#include <chrono>
#include <utility>

namespace hxsim {

namespace {

constexpr std::size_t kKept = 1000;

std::string shown(const Buzzer::Beep& beep)
{
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(beep.duration).count();
    return std::to_string(milliseconds) + " ms at " + std::to_string(beep.frequency) + " Hz, volume " +
           std::to_string(beep.volume);
}

} // namespace

Buzzer::Buzzer(Unit& unit) : unit_{unit}
{
    beeps.reserve(kKept); // a beep that ends in a program's sleep takes none of the program's memory
    Node& node = unit.addNode("/dev/buzzer");
    node.request(0x8004003E, Takes{0}, Gives{4}, [this](Request& request) {
        request.put16(0, frequency);
        request.put16(2, volume);
        return 0;
    });
    node.request(0x4004003F, Takes{4}, Gives{0}, [this](Request& request) {
        frequency = request.u16(0);
        volume = request.u16(2);
        return 0;
    });
    node.request(0x80010040, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, trigger);
        return 0;
    });
    node.request(0x40010041, Takes{4}, Gives{0}, [this](Request& request) { // only the first byte has a meaning
        sound(request.u8(0));
        return 0;
    });

    unit.whenSupplyFails([this] { sound(0); });

    Properties& properties = unit.properties();
    properties.number("buzzer.frequency", frequency, 0, 0xFFFF, "hertz");
    properties.number("buzzer.volume", volume, 0, 0xFFFF, "0 to 51 are in use");
    properties.add(
        "buzzer.trigger", [this] { return std::to_string(trigger); },
        [this](const std::string& text) { sound(static_cast<std::uint8_t>(parseNumber(text, 0, 0xFF))); },
        "the trigger's byte");
    properties.readOnly(
        "buzzer.sounding", [this] { return onOrOff(trigger != 0); }, "whether it sounds now");
    properties.readOnly(
        "buzzer.beeps", [this] { return std::to_string(sounded); }, "number of beeps so far");
    properties.readOnly(
        "buzzer.last", [this] { return beeps.empty() ? "none" : shown(beeps.back()); },
        "duration, frequency and volume of the last time that it sounded");
}

void Buzzer::sound(std::uint8_t wanted)
{
    const bool was = std::exchange(trigger, wanted) != 0;
    const Time now = unit_.clock().now();
    if (!was && wanted != 0) {
        current_ = {now, Time{0}, frequency, volume};
    } else if (was && wanted == 0) {
        current_.duration = now - current_.begin;
        if (beeps.size() == kKept)
            beeps.erase(beeps.begin());
        beeps.push_back(current_);
        ++sounded;
    }
}

HXSIM_HARDWARE(Buzzer)

} // namespace hxsim
