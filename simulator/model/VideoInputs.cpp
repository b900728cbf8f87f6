// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/VideoInputs.h"

#include "simulator/model/Text.h"

#include <algorithm>
#include <cerrno>

namespace hxsim {

namespace {

constexpr std::uint8_t kShown = 0x01;
constexpr std::uint8_t kMirrored = 0x08;
constexpr std::uint8_t kStandardRegister = 0x8C;
constexpr std::uint8_t kLocked = 0x01; // lowest bit of the standard's register: the decoder detects a signal

/// A detected standard: its number, and the picture that the driver receives.
struct Standard {
    const char* name;
    std::uint8_t number;
    std::uint16_t width, height;
    std::uint8_t picturesQuarters; // pictures a second, in quarters
};

constexpr std::array<Standard, 6> kStandards{{
    {"ntsc-m", 0, 720, 480, 120},
    {"pal", 1, 720, 576, 100},
    {"pal-m", 2, 720, 480, 120},
    {"pal-n", 3, 720, 576, 100},
    {"ntsc-4.43", 4, 720, 480, 120},
    {"secam", 5, 720, 576, 100},
}};

template <typename Array>
std::string list(const Array& values)
{
    std::string text;
    for (const auto value : values)
        text += (text.empty() ? "" : " ") + std::to_string(value);
    return text;
}

/// Answers a read with an array of bytes.
template <std::size_t N>
auto giving(std::array<std::uint8_t, N>& bytes)
{
    return [&bytes](Request& request) {
        std::copy(bytes.begin(), bytes.end(), request.out.begin());
        return 0;
    };
}

template <std::size_t N>
auto taking(std::array<std::uint8_t, N>& bytes)
{
    return [&bytes](Request& request) {
        std::copy(request.in.begin(), request.in.end(), bytes.begin());
        return 0;
    };
}

} // namespace

VideoInput::VideoInput(Unit& unit, const std::string& path, const std::string& name)
{
    Node& node = unit.addNode(path);
    describeRequests(node);
    describeGeometry(node);
    describeDecoder(node);
    setStandard("pal");
    describeProperties(unit, name);
}

void VideoInput::describeRequests(Node& node)
{
    node.request(0x40020011, Takes{2}, Gives{0}, [this](Request&) {
        started = true;
        return 0;
    });
    node.request(0x8001000E, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, control);
        return 0;
    });
    node.request(0x40010005, Takes{1}, Gives{0}, [this](Request& request) {
        control = request.u8(0);
        return 0;
    });
    node.request(0x8004000F, Takes{0}, Gives{4}, [this](Request& request) {
        request.put32(0, channel);
        return 0;
    });
    node.request(0x40040010, Takes{4}, Gives{0}, [this](Request& request) {
        const std::uint32_t wanted = request.u32(0);
        if (wanted < 1 || wanted > 4)
            return -EINVAL;
        channel = wanted;
        return 0;
    });
}

void VideoInput::describeGeometry(Node& node)
{
    node.request(0x80030006, Takes{0}, Gives{3}, giving(colorKey));
    node.request(0x40030007, Takes{3}, Gives{0}, taking(colorKey));
    node.request(0x8004000B, Takes{0}, Gives{4}, giving(scaling));
    node.request(0x4004000A, Takes{4}, Gives{0}, taking(scaling));
    node.request(0x8004003C, Takes{0}, Gives{4}, giving(cropping));
    node.request(0x4004003D, Takes{4}, Gives{0}, [this](Request& request) {
        if (std::any_of(request.in.begin(), request.in.end(), [](std::uint8_t byte) { return byte > 127; }))
            return -EINVAL;
        return taking(cropping)(request);
    });
    node.request(0x80080009, Takes{0}, Gives{8}, [this](Request& request) {
        for (std::size_t i = 0; i < area.size(); ++i)
            request.put16(2 * i, area[i]);
        return 0;
    });
    node.request(0x40080008, Takes{8}, Gives{0}, [this](Request& request) {
        for (std::size_t i = 0; i < area.size(); ++i)
            area[i] = request.u16(2 * i);
        return 0;
    });
    node.request(0x80060012, Takes{0}, Gives{6}, [this](Request& request) {
        request.put16(0, rawSize[0]);
        request.put16(2, rawSize[1]);
        request.put8(4, rawQuarters);
        return 0;
    });
}

void VideoInput::describeDecoder(Node& node)
{
    node.request(0x8002000D, Takes{2}, Gives{2}, [this](Request& request) {
        request.put8(0, request.u8(0));
        request.put8(1, decoder[request.u8(0)]);
        return 0;
    });
    node.request(0x4002000C, Takes{2}, Gives{0}, [this](Request& request) {
        if (request.u8(0) == kStandardRegister) // detected by the decoder
            return -EACCES;
        decoder[request.u8(0)] = request.u8(1);
        return 0;
    });
}

void VideoInput::describeProperties(Unit& unit, const std::string& name)
{
    Properties& properties = unit.properties();
    properties.number(name + ".control", control, 0, 255, "control byte of the driver");
    properties.readOnly(
        name + ".shown", [this] { return onOrOff((control & kShown) != 0); }, "whether the video is shown");
    properties.readOnly(
        name + ".mirrored", [this] { return onOrOff((control & kMirrored) != 0); }, "whether the picture is mirrored");
    properties.readOnly(
        name + ".fields", [this] { return fields(); }, "fields that are shown: first, second, both or invalid");
    properties.number(name + ".channel", channel, 1, 4, "channel that the input shows");
    properties.readOnly(
        name + ".area", [this] { return list(area); }, "area of the window");
    properties.readOnly(
        name + ".scaling", [this] { return list(scaling); }, "enlarge bytes of both axes, then reduce bytes");
    properties.readOnly(
        name + ".cropping", [this] { return list(cropping); }, "cropping bytes");
    properties.readOnly(
        name + ".color-key", [this] { return list(colorKey); }, "components of the color key");
    properties.add(
        name + ".standard", [this] { return standard(); }, [this](const std::string& text) { setStandard(text); },
        "standard that the decoder detects: ntsc-m, pal, pal-m, pal-n, ntsc-4.43, secam, or 0 to 7");
}

std::string VideoInput::fields() const
{
    static constexpr std::array<const char*, 4> kNames{"first", "second", "both", "invalid"};
    return kNames[control >> 1 & 3];
}

std::string VideoInput::standard() const
{
    const std::uint8_t number = decoder[kStandardRegister] >> 1 & 7;
    const auto found = std::find_if(kStandards.begin(), kStandards.end(),
                                    [number](const Standard& known) { return known.number == number; });
    return found == kStandards.end() ? std::to_string(number) : found->name;
}

void VideoInput::setStandard(const std::string& name)
{
    const auto found = std::find_if(kStandards.begin(), kStandards.end(),
                                    [&name](const Standard& known) { return known.name == name; });
    const bool known = found != kStandards.end();
    const auto number = known ? found->number : static_cast<std::uint8_t>(parseNumber(name, 0, 7));
    decoder[kStandardRegister] = static_cast<std::uint8_t>(number << 1 | kLocked);
    if (known) {
        rawSize = {found->width, found->height};
        rawQuarters = found->picturesQuarters;
    }
}

VideoInputs::VideoInputs(Unit& unit)
    : first{unit, "/dev/analog-video1", "video.1"}, second{unit, "/dev/analog-video2", "video.2"}
{
}

HXSIM_HARDWARE(VideoInputs)

} // namespace hxsim
