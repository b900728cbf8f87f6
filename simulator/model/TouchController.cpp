// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/TouchController.h"

#include "simulator/model/Text.h"

#include <array>
#include <cerrno>

namespace hxsim {

namespace {

using namespace std::chrono_literals;

/// How long a finger must rest on a point until the controller accepts it.
constexpr Time kRest = 200ms;

enum Register : std::uint8_t {
    kPoint = 1, // low byte: requested; high byte: accepted
    kMode = 3,
    kRightClick = 4,
};

/// Number of points of a calibration; 0 for a mode that does not exist.
unsigned pointsOf(std::uint8_t mode)
{
    switch (mode) {
    case 1:
    case 6:
        return 5;
    case 10:
        return 9;
    case 14:
        return 13;
    default:
        return 0;
    }
}

struct TouchSetting {
    std::uint8_t number;
    std::uint16_t initial;
    std::uint16_t highest;
};

/// Default values of the controller, and the largest valid ones.
constexpr std::array<TouchSetting, 15> kTouchSettings{{
    {5, 120, 4095},
    {6, 3980, 4095},
    {7, 400, 65535},
    {8, 800, 65535},
    {9, 1200, 65535},
    {10, 30, 32767},
    {11, 2000, 65535},
    {12, 1, 1},
    {13, 150, 65535},
    {14, 40, 65535},
    {15, 3900, 65535},
    {16, 160, 65535},
    {17, 3920, 65535},
    {18, 0, 65535},
    {19, 10, 65535},
}};

} // namespace

TouchController::TouchController(Unit& unit)
    : registers{unit, "/dev/front-mcu-id", SupervisorRegisters::Owner::Front}, unit_{unit}
{
    registers.node().request(0x8001006A, Takes{0}, Gives{1}, [this](Request& request) {
        request.put8(0, calibration);
        return 0;
    });
    registers.node().request(0x4001006B, Takes{1}, Gives{0}, [this](Request& request) { return begin(request.u8(0)); });
    describeRegisters();
    unit.properties().number("touch.calibration", calibration, 0, 255, "mode of the running calibration, 0 for none");
    unit.properties().readOnly(
        "touch.calibrated", [this] { return std::to_string(calibrated); }, "completed calibrations");
    unit.properties().add(
        "touch.finger", [this] { return fingerText(); }, [this](const std::string& text) { placeFinger(text); },
        "calibration point under the finger: a number, none, or follow for the requested point");
    unit.actions().add(
        "touch", "POINT",
        [this](const Actions::Words& arguments) {
            if (arguments.size() != 1)
                throw BadText{"touch POINT"};
            placeFinger(arguments[0]);
        },
        "puts a finger on a calibration point");
    unit.actions().add(
        "lift", "", [this](const Actions::Words&) { placeFinger("none"); }, "takes the finger off the screen");
}

void TouchController::describeRegisters()
{
    constexpr RegisterRange kModes{0, 3};
    registers.property(kMode, "touch.mode", 1, "touch mode, 0 to 3", kModes);
    registers.limit(kMode, kModes);
    registers.property(kRightClick, "touch.right-click", 800, "time after which a held touch is a right click");
    for (const TouchSetting& setting : kTouchSettings) {
        const RegisterRange range{0, setting.highest};
        registers.property(setting.number, "touch.register." + std::to_string(setting.number), setting.initial,
                           "register of the touch controller", range);
        registers.limit(setting.number, range);
    }
    registers.onRead(kPoint, [this] { return static_cast<std::uint16_t>(taken << 8 | awaited); });
    registers.onWrite(kPoint, [this](std::uint16_t value) { return await(static_cast<std::uint8_t>(value)); });
}

int TouchController::begin(std::uint8_t mode)
{
    if (pointsOf(mode) == 0)
        return -EINVAL;
    calibration = mode;
    awaited = taken = 0;
    points_ = 0;
    look();
    return 0;
}

int TouchController::await(std::uint8_t point)
{
    if (point > pointsOf(calibration))
        return -EINVAL;
    awaited = point;
    taken = 0;
    look();
    return 0;
}

/// Starts the timer if the finger is on the requested point.
void TouchController::look()
{
    if (resting_)
        unit_.clock().cancel(*resting_);
    resting_.reset();
    const bool touched = fingerFollows || finger == awaited;
    if (calibration == 0 || awaited == 0 || awaited == taken || !touched)
        return;
    resting_ = unit_.clock().after(kRest, [this, point = awaited] {
        resting_.reset();
        take(point);
    });
}

void TouchController::take(std::uint8_t point)
{
    taken = point;
    points_ |= 1U << point;
    const std::uint32_t all = (2U << pointsOf(calibration)) - 2; // points 1 to the highest
    if ((points_ & all) == all) {
        calibration = 0;
        ++calibrated;
    }
}

std::string TouchController::fingerText() const
{
    if (fingerFollows)
        return "follow";
    return finger ? std::to_string(*finger) : "none";
}

void TouchController::placeFinger(const std::string& text)
{
    const bool follows = text == "follow";
    const bool away = follows || text == "none";
    const std::optional<std::uint8_t> point =
        away ? std::nullopt : std::optional{static_cast<std::uint8_t>(parseNumber(text, 0, 255))};
    finger = point;
    fingerFollows = follows;
    look();
}

HXSIM_HARDWARE(TouchController)

} // namespace hxsim
