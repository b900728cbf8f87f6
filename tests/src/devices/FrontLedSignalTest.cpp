// SPDX-License-Identifier: LicenseRef-HXAux
// Frequency and duty cycle against the times sent to the front panel, over whole ranges.
#include "devices/FrontLED_Imp.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <optional>

namespace front_led_signal_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kDevice = "/dev/frontled";
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// An LED with its times stored here: composite operations must use these slots.
class PaperLed : public FrontLED_Imp {
public:
    eErr getOnTime(unsigned char* value) override { return give(value, on); }
    eErr getOffTime(unsigned char* value) override { return give(value, off); }
    eErr setOnTime(unsigned char value) override { return take(on, value); }
    eErr setOffTime(unsigned char value) override { return take(off, value); }
    eErr getColor(unsigned char* red, unsigned char* green, unsigned char* blue) override
    {
        *red = triple[0];
        *green = triple[1];
        *blue = triple[2];
        return ERR_SUCCESS;
    }
    eErr setColor(unsigned char red, unsigned char green, unsigned char blue) override
    {
        triple = {red, green, blue};
        return ERR_SUCCESS;
    }
    using FrontLED_Imp::getColor;
    using FrontLED_Imp::setColor;

    unsigned char on = 0;
    unsigned char off = 0;
    std::array<unsigned char, 3> triple{};
    std::optional<int> failsAt; ///< number of the access, from 0, that fails
    int accesses = 0;

private:
    bool fails() { return accesses++ == failsAt; }
    eErr give(unsigned char* value, unsigned char held)
    {
        if (fails())
            return ERR_VERIFY_FAILED;
        *value = held;
        return ERR_SUCCESS;
    }
    eErr take(unsigned char& held, unsigned char value)
    {
        if (fails())
            return ERR_VERIFY_FAILED;
        held = value;
        return ERR_SUCCESS;
    }
};

/// The two times by the rule, every step rounded to a double before the next one; `fmod` cuts the bits off.
struct Times {
    double on;
    double off;
};
Times timesOf(double hertz, int dutyCycle)
{
    const volatile double period = 100.0 / hertz;
    const volatile double share = dutyCycle / 100.0;
    const volatile double product = period * share;
    const double on = std::fmod(std::floor(product), 256.0);
    const volatile double rest = period - on;
    return {on, std::fmod(std::floor(rest), 256.0)};
}

TEST(LedSignal, AgreesWithTheRuleForEveryDutyCycleAndFrequency)
{
    SimulatedUnit unit;
    PaperLed led;

    for (int centihertz = 20; centihertz <= 5000; ++centihertz) {
        const double hertz = centihertz / 100.0;
        for (int duty = 0; duty <= 100; ++duty) {
            ASSERT_EQ(led.setSignal(hertz, static_cast<unsigned char>(duty)), ERR_SUCCESS);
            const Times wanted = timesOf(hertz, duty);
            ASSERT_EQ(led.on, wanted.on) << hertz << " Hz, " << duty << " %";
            ASSERT_EQ(led.off, wanted.off) << hertz << " Hz, " << duty << " %";
        }
    }
}

TEST(LedSignal, ReadsEveryPairOfTimes)
{
    SimulatedUnit unit;
    PaperLed led;

    int oneLess = 0; // where the integer share is below its integer per cent as a double
    for (int pair = 1; pair < 65536; ++pair) {
        led.on = static_cast<unsigned char>(pair & 0xFF);
        led.off = static_cast<unsigned char>(pair >> 8);
        double hertz = 0;
        unsigned char duty = 0;
        ASSERT_EQ(led.getSignal(&hertz, &duty), ERR_SUCCESS);
        const int sum = led.on + led.off;
        const volatile double share = static_cast<double>(led.on) / sum;
        const volatile double percent = share * 100.0;
        ASSERT_EQ(hertz * sum, 100.0 / sum * sum);
        ASSERT_EQ(duty, std::floor(percent)) << static_cast<int>(led.on) << ", " << static_cast<int>(led.off);
        oneLess += duty != led.on * 100 / sum;
    }
    EXPECT_GT(oneLess, 0);
}

TEST(LedSignal, RoundsItsShareAsADouble)
{
    SimulatedUnit unit;
    PaperLed led;
    const struct {
        unsigned char on, off;
        int duty;
    } rows[] = {{29, 71, 28}, {53, 47, 53}, {57, 43, 56}, {58, 42, 57}, {59, 41, 59}};

    for (const auto& row : rows) {
        led.on = row.on;
        led.off = row.off;
        double hertz = 0;
        unsigned char duty = 0;
        EXPECT_EQ(led.getSignal(&hertz, &duty), ERR_SUCCESS);
        EXPECT_EQ(duty, row.duty);
        EXPECT_EQ(hertz, 1.0);
    }
}

struct Example {
    double hertz;
    int duty;
    int on;
    int off;
};

class LedSignalExample : public hxtest::TestWithRow<Example> {};
TEST_ROWS(Of, LedSignalExample, hxtest::kNumbered, Example{1.0, 50, 50, 50}, Example{2.0, 25, 12, 38},
          Example{50.0, 100, 2, 0}, Example{50.0, 0, 0, 2}, Example{0.25, 75, 44, 100}, Example{0.2, 50, 250, 250},
          Example{0.2, 100, 244, 0}, Example{1.0, 29, 28, 72}, Example{1.0, 53, 53, 47}, Example{1.0, 57, 56, 44},
          Example{1.0, 58, 57, 43}, Example{1.0, 59, 59, 41});

ROW_TEST(LedSignalExample, IsCutToUnitsAndThenToEightBits)
{
    SimulatedUnit unit;
    PaperLed led;

    EXPECT_EQ(led.setSignal(row().hertz, static_cast<unsigned char>(row().duty)), ERR_SUCCESS);

    EXPECT_EQ(led.on, row().on);
    EXPECT_EQ(led.off, row().off);
}

TEST(LedSignal, IsWrittenAsTwoChangesOfThePattern)
{
    SimulatedUnit unit{"led.timing = 1 2 3 4"};
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setSignal(1.0, 25), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80040042 -> 01 02 03 04", "0x40040043: 19 02 03 04",
                                                   "0x80040042 -> 19 02 03 04", "0x40040043: 19 4b 03 04"));
}

TEST(LedSignal, IsReadFromTheTwoTimes)
{
    SimulatedUnit unit{"led.timing = 50 50 3 4"};
    Released<FrontLED> led{GetFrontLED()};
    double hertz = 0;
    unsigned char duty = 0;

    EXPECT_EQ(led->getSignal(&hertz, &duty), ERR_SUCCESS);

    EXPECT_EQ(hertz, 1.0);
    EXPECT_EQ(duty, 50);
    EXPECT_THAT(unit.requestsTo(kDevice), Requests("0x80040042 -> 32 32 03 04", "0x80040042 -> 32 32 03 04"));
}

TEST(LedSignal, IsInfinitelyFastWithoutTimes)
{
    SimulatedUnit unit{"led.timing = 0 0 3 4"};
    Released<FrontLED> led{GetFrontLED()};
    double hertz = 0;
    unsigned char duty = 77;

    EXPECT_EQ(led->getSignal(&hertz, &duty), ERR_SUCCESS);

    EXPECT_EQ(hertz, kInfinity);
    EXPECT_EQ(duty, 0);
}

TEST(LedSignal, RefusesAnotherFrequencyOrDutyCycleBeforeTheDevice)
{
    SimulatedUnit unit{"absent = /dev/frontled"};
    Released<FrontLED> led{GetFrontLED()};

    for (const double hertz :
         {50.01, std::nextafter(50.0, 51.0), 0.19, std::nextafter(0.2, 0.0), 0.0, -1.0, kInfinity, -kInfinity})
        EXPECT_EQ(led->setSignal(hertz, 50), ERR_INVALID_PARAMETER) << hertz;
    EXPECT_EQ(led->setSignal(1.0, 101), ERR_INVALID_PARAMETER);
    EXPECT_EQ(led->setSignal(1.0, 255), ERR_INVALID_PARAMETER);

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(LedSignal, AcceptsItsLimits)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setSignal(50.0, 0), ERR_SUCCESS);
    EXPECT_EQ(led->setSignal(0.2, 100), ERR_SUCCESS);
}

TEST(LedSignal, SwitchesOffForNotANumber)
{
    SimulatedUnit unit{"led.timing = 1 2 3 4"};
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setSignal(std::nan(""), 50), ERR_SUCCESS);

    EXPECT_EQ(unit.get("led.timing"), "0 0 3 4");
}

TEST(LedSignal, LeavesTheOffTimeWhenTheOnTimeCannotBeSet)
{
    SimulatedUnit unit{"led.timing = 1 2 3 4"};
    unit.fail(kDevice, 0x40040043, EIO, 1);
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setSignal(1.0, 50), ERR_IOCTRL_FAILED);

    EXPECT_EQ(unit.get("led.timing"), "1 2 3 4");
    EXPECT_EQ(unit.requestsTo(kDevice).size(), 2U);
}

TEST(LedSignal, PassesOnTheFirstErrorOfItsParts)
{
    for (const int access : {0, 1}) {
        SimulatedUnit unit;
        PaperLed led;
        led.failsAt = access;
        double hertz = 77;
        unsigned char duty = 77;

        EXPECT_EQ(led.getSignal(&hertz, &duty), ERR_VERIFY_FAILED);

        EXPECT_EQ(led.accesses, access + 1);
        EXPECT_EQ(hertz, 77);
        EXPECT_EQ(duty, 77);
    }
}

TEST(LedComposites, GoThroughTheVirtualSlots)
{
    SimulatedUnit unit;
    PaperLed paper;
    FrontLED& led = paper;
    HXAuxColor color = ColorOther;

    EXPECT_EQ(led.setSignal(1.0, 50), ERR_SUCCESS);
    EXPECT_EQ(led.setColor(ColorBlue), ERR_SUCCESS);
    EXPECT_EQ(led.getColor(&color), ERR_SUCCESS);
    EXPECT_EQ(led.setOff(), ERR_SUCCESS);

    EXPECT_EQ(paper.on, 0);
    EXPECT_EQ(paper.off, 50);
    EXPECT_THAT(paper.triple, testing::ElementsAre(0, 0, 15));
    EXPECT_EQ(color, ColorBlue);
    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

} // namespace

} // namespace front_led_signal_test
