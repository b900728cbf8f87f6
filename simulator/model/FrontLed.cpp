// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/FrontLed.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

constexpr std::uint8_t kBrightest = 15;

template <std::size_t Size>
std::string shown(const std::array<std::uint8_t, Size>& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += (text.empty() ? "" : " ") + std::to_string(byte);
    return text;
}

template <std::size_t Size>
void parseInto(std::array<std::uint8_t, Size>& bytes, const std::string& text, std::uint8_t most)
{
    const std::vector<std::string> numbers = words(text);
    if (numbers.size() != Size)
        throw BadText{"'" + text + "' is not " + std::to_string(Size) + " numbers"};
    std::array<std::uint8_t, Size> parsed;
    for (std::size_t i = 0; i < Size; ++i)
        parsed[i] = static_cast<std::uint8_t>(parseNumber(numbers[i], 0, most));
    bytes = parsed;
}

template <std::size_t Size>
void give(Request& request, const std::array<std::uint8_t, Size>& bytes)
{
    std::copy(bytes.begin(), bytes.end(), request.out.begin());
}

} // namespace

FrontLed::FrontLed(Unit& unit) : unit_{unit}
{
    Node& node = unit.addNode("/dev/frontled");
    node.request(0x80040042, Takes{0}, Gives{4}, [this](Request& request) {
        give(request, timing);
        return 0;
    });
    node.request(0x40040043, Takes{4}, Gives{0}, [this](Request& request) {
        std::copy_n(request.in.begin(), timing.size(), timing.begin());
        since_ = unit_.clock().now();
        return 0;
    });
    node.request(0x80030044, Takes{0}, Gives{3}, [this](Request& request) {
        give(request, color);
        return 0;
    });
    node.request(0x40030045, Takes{3}, Gives{0}, [this](Request& request) {
        if (std::any_of(request.in.begin(), request.in.end(), [](std::uint8_t part) { return part > kBrightest; }))
            return -EINVAL;
        std::copy_n(request.in.begin(), color.size(), color.begin());
        return 0;
    });
    node.request(0x80010046, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, duringStartup ? 1 : 0);
        return 0;
    });
    node.request(0x40010047, Takes{1}, Gives{0}, [this](Request& request) {
        duringStartup = request.u8(0) != 0;
        return 0;
    });

    Properties& properties = unit.properties();
    properties.add(
        "led.timing", [this] { return shown(timing); },
        [this](const std::string& text) {
            parseInto(timing, text, 255);
            since_ = unit_.clock().now();
        },
        "on, off and rest in units of 10 ms, and the number of pulses");
    properties.add(
        "led.color", [this] { return shown(color); },
        [this](const std::string& text) { parseInto(color, text, kBrightest); }, "red, green and blue, each 0 to 15");
    properties.flag("led.startup", duringStartup, "whether it shows its pattern while the unit starts");
    properties.readOnly(
        "led.lit", [this] { return onOrOff(lit()); }, "whether it is lit now");
}

bool FrontLed::lit() const
{
    const auto [on, off, rest, pulses] = timing;
    if (on == 0 || color == std::array<std::uint8_t, 3>{})
        return false;
    const Time pulse = (on + off) * 10ms;
    // Without a number of pulses it pulses without a rest.
    const Time period = pulses == 0 ? pulse : pulse * pulses + rest * 10ms;
    const Time phase = (unit_.clock().now() - since_) % period;
    const bool resting = pulses != 0 && phase >= pulse * pulses;
    return !resting && phase % pulse < on * 10ms;
}

HXSIM_HARDWARE(FrontLed)

} // namespace hxsim
