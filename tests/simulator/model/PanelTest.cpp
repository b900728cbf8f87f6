// SPDX-License-Identifier: LicenseRef-HXAux
// LED and buzzer of the simulated front panel in model time.
#include "simulator/model/Buzzer.h"
#include "simulator/model/FrontLed.h"

#include <gmock/gmock.h>

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

/// What the LED shows at the given steps: '*' lit, '.' dark.
std::string shown(Unit& unit, Time step, int steps)
{
    std::string pattern;
    for (int i = 0; i < steps; ++i) {
        pattern += unit.get<FrontLed>().lit() ? '*' : '.';
        unit.clock().advanceTo(unit.clock().now() + step);
    }
    return pattern;
}

std::string patternOf(const char* timing, const char* color = "0 15 0")
{
    Unit unit;
    unit.properties().set("led.color", color);
    unit.properties().set("led.timing", timing);
    return shown(unit, 100ms, 20);
}

TEST(FrontLedModel, PulsesAndRests)
{
    EXPECT_EQ(patternOf("10 20 40 2"), "*..*......*..*......");
}

TEST(FrontLedModel, PulsesForeverWithoutANumber)
{
    EXPECT_EQ(patternOf("10 10 40 0"), "*.*.*.*.*.*.*.*.*.*.");
}

TEST(FrontLedModel, ShinesWithoutAnOffTime)
{
    EXPECT_EQ(patternOf("10 0 0 1"), "********************");
}

TEST(FrontLedModel, IsDarkWithoutAnOnTimeOrAColor)
{
    EXPECT_EQ(patternOf("0 10 10 1"), "....................");
    EXPECT_EQ(patternOf("10 0 0 1", "0 0 0"), "....................");
}

TEST(BuzzerModel, RemembersHowLongItSounded)
{
    Unit unit;
    Node& node = *unit.findNode("/dev/buzzer");
    const auto file = node.open(0);
    const auto trigger = [&](std::uint8_t on) {
        const std::array<std::uint8_t, 4> block{on, 0, 0, 0};
        EXPECT_EQ(node.ioctl(*file, 0x40010041, block, {}), 0);
    };

    trigger(1);
    unit.clock().advanceTo(100ms);
    trigger(1); // it sounds already
    unit.clock().advanceTo(250ms);
    trigger(0);
    trigger(0);

    EXPECT_EQ(unit.properties().get("buzzer.beeps"), "1");
    EXPECT_EQ(unit.properties().get("buzzer.last"), "250 ms at 2000 Hz, volume 25");
    EXPECT_EQ(unit.properties().get("buzzer.sounding"), "off");
}

} // namespace
