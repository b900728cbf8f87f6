// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "tests/src/backlight/Service.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

using namespace Halvix;

namespace {

constexpr int kTenMinutesMs = 600000;

/// Runs an action periodically for ten minutes of the unit's time.
std::thread every(unsigned long milliseconds, const std::function<void(int round)>& action)
{
    return std::thread{[=] {
        for (int round = 0; round < kTenMinutesMs / static_cast<int>(milliseconds); ++round) {
            LinuxWrapper::Sleep(milliseconds);
            action(round);
        }
    }};
}

std::size_t countOf(const std::vector<std::string>& lines, const std::string& line)
{
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

} // namespace

TEST(TenMinutes, OfSamplerControllerAndCallersTogetherEndWithEveryThreadAlive)
{
    SimulatedUnit unit{"light.profile = 0 5; 20 1500; 40 5; repeat", "light.noise = 5"};
    forgetLogs();
    Service service{unit, abl({.average = 3, .reject = 2, .delta = 500})};
    Backlight& backlight = *service.backlight.operator->();

    std::thread settings = every(3700, [&](int round) {
        backlight.setAutomaticBLParams(round % 3 != 0);
        backlight.setAutomaticBLFilter(1 + static_cast<unsigned>(round) % 7, static_cast<unsigned>(round) % 4, 500,
                                       SamplingModeAuto);
        round % 9 == 8 ? backlight.stopAutomaticBL() : backlight.startAutomaticBL();
    });
    std::thread hand = every(31000, [&](int round) {
        backlight.setIntensity(static_cast<unsigned char>(40 + round * 7));
        unsigned char level = 0;
        EXPECT_EQ(backlight.getIntensity(&level), ERR_SUCCESS);
    });
    std::thread reader = every(900, [&](int) {
        Released<Lightsensor> sensor{GetLightsensor()};
        unsigned short lux = 0;
        EXPECT_EQ(sensor->getIlluminance(&lux), ERR_SUCCESS);
        EXPECT_EQ(sensor->getAverageIlluminance(&lux), ERR_NOT_RUNNING);
    });
    settings.join();
    hand.join();
    reader.join();

    backlight.startAutomaticBL();
    forgetLogs();
    unit.sleepFor(8000);
    EXPECT_GE(countOf(controllerLog(), "Time pasted 800\n"), 5U);
    EXPECT_GE(countOf(samplerLog(), "First sample\n") + samplerLog().size(), 10U);
}

TEST(TenMinutes, OfCallersOnOneLightSensorWhileItsSamplerRuns)
{
    SimulatedUnit unit{"light.profile = 0 5; 20 1500; 40 5; repeat", "light.noise = 5"};
    Released<Lightsensor> sensor{GetLightsensor()};

    std::thread owner = every(5300, [&](int round) {
        const eErr err = sensor->startAverageCalc(5, 2, 500, SamplingModeAuto);
        EXPECT_TRUE(err == ERR_SUCCESS || err == ERR_AVERAGE_CALC_STARTED);
        if (round % 2 == 1)
            sensor->stopAverageCalc();
    });
    std::thread reader = every(170, [&](int) {
        unsigned short lux = 0;
        const eErr err = sensor->getAverageIlluminance(&lux);
        EXPECT_TRUE(err == ERR_SUCCESS || err == ERR_NOT_RUNNING);
    });
    std::thread meter = every(450, [&](int) {
        unsigned short lux = 0;
        EXPECT_EQ(sensor->getIlluminance(&lux), ERR_SUCCESS);
        const eErr err = sensor->setOperatingRange(RangeStandard);
        EXPECT_TRUE(err == ERR_SUCCESS || err == ERR_AVERAGE_CALC_STARTED);
    });
    owner.join();
    reader.join();
    meter.join();

    sensor->stopAverageCalc();
}

TEST(TenMinutes, OfASensorThatFailsIntermittentlyLeaveTheServiceAlive)
{
    SimulatedUnit unit{"light = 100"};
    Service service{unit, abl({.soft = false})};
    std::thread faults = every(7000, [&](int round) {
        const std::uint32_t requests[] = {0x80020048, 0x80010049, 0x80010002, 0x40010003};
        const std::uint32_t request = requests[round % 4];
        unit.fail(request == 0x80020048 || request == 0x80010049 ? kSensorDevice : kBacklightDevice, request, EIO,
                  1 + round % 3);
        unit.set("light", 20 + 200 * (round % 2));
    });
    std::thread user = every(2500, [&](int) { service.backlight->startAutomaticBL(); });
    faults.join();
    user.join();

    unit.stopFailing();
    unit.set("light", 1000);
    service.backlight->startAutomaticBL();
    unit.sleepFor(10000);
    EXPECT_EQ(unit.get("backlight.level"), "254");
}
