// SPDX-License-Identifier: LicenseRef-HXAux
// The simulated light sensor: the duration of a range change, and the distribution of the noise.
#include "simulator/model/LightSensor.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

struct Fixture {
    Unit unit;
    LightSensor& sensor = unit.get<LightSensor>();

    std::array<std::uint8_t, 2> channels()
    {
        std::array<std::uint8_t, 2> bytes{};
        Node& node = *unit.findNode("/dev/lightsensor");
        EXPECT_EQ(node.ioctl(*node.open(0), 0x80020048, {}, bytes), 0);
        return bytes;
    }
    bool isComplete()
    {
        const auto bytes = channels();
        EXPECT_EQ(bytes[0] & 0x80, bytes[1] & 0x80);
        return (bytes[0] & 0x80) != 0;
    }
    void setRange(std::uint8_t range)
    {
        const std::array<std::uint8_t, 2> bytes{0, range};
        Node& node = *unit.findNode("/dev/lightsensor");
        EXPECT_EQ(node.ioctl(*node.open(0), 0x4001004A, bytes, {}), 0);
    }
    void pass(Time time) { unit.clock().advanceTo(unit.clock().now() + time); }
    /// Mean and deviation of many readings.
    std::pair<double, double> readings(int count)
    {
        double sum = 0;
        double squares = 0;
        sensor.onRead = [&](double, double lux) {
            sum += lux;
            squares += lux * lux;
        };
        for (int i = 0; i < count; ++i)
            (void)channels();
        sensor.onRead = {};
        const double mean = sum / count;
        return {mean, std::sqrt(squares / count - mean * mean)};
    }
};

} // namespace

TEST(LightSensorModel, HasNoCompleteReadingUntilTheTimeOfARangeChangeIsOver)
{
    Fixture fixture;
    fixture.unit.describe("light.conversion = 800");

    fixture.setRange(1);
    EXPECT_FALSE(fixture.isComplete());
    fixture.pass(799ms);
    EXPECT_FALSE(fixture.isComplete());
    fixture.pass(1ms);
    EXPECT_TRUE(fixture.isComplete());

    fixture.setRange(1); // no change
    EXPECT_TRUE(fixture.isComplete());
    fixture.setRange(0);
    EXPECT_FALSE(fixture.isComplete());
}

TEST(LightSensorModel, ReadsTheLightInTheMeanWhateverTheNoise)
{
    Fixture fixture;
    fixture.unit.describe("light = 1000\nlight.infrared = 0");
    const double quiet = fixture.readings(1).first;

    fixture.unit.describe("light.noise = 20");
    const auto [mean, deviation] = fixture.readings(5000);

    EXPECT_NEAR(mean, quiet, quiet * 0.04); // a step of the converter is 3 to 6 percent
    EXPECT_NEAR(deviation, quiet * 0.2, quiet * 0.02);
}

TEST(LightSensorModel, RepeatsItsNoiseFromASeed)
{
    Fixture fixture;
    fixture.unit.describe("light = 1000\nlight.noise = 20\nlight.seed = 7");
    const auto first = fixture.readings(50);

    fixture.unit.describe("light.seed = 7");
    EXPECT_EQ(fixture.readings(50), first);
    fixture.unit.describe("light.seed = 8");
    EXPECT_NE(fixture.readings(50), first);
}
