// SPDX-License-Identifier: LicenseRef-HXAux
#include "backlight/ControlLaw.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace Halvix;
using law::Transition;

namespace {

int levelFor(double k, unsigned lux)
{
    law::Run run;
    run.y = law::curveLevel(k, law::curveArgument(static_cast<std::uint16_t>(lux)), 255);
    law::aim(run);
    return run.targetLevel;
}

/// A run whose measurement has just been taken.
law::Run aimed(std::uint8_t current, std::uint8_t target)
{
    law::Run run;
    run.currentLevel = current;
    run.y = target;
    law::aim(run);
    return run;
}

struct StepTaken {
    int atMs;
    int level;
    bool operator==(const StepTaken&) const = default;
};

/// The levels that one period sends, with their times since the measurement.
std::vector<StepTaken> stepsOfOnePeriod(law::Run run, Transition transition)
{
    std::vector<StepTaken> steps;
    while (!law::measurementIsDue(run)) {
        if (run.currentLevel != run.targetLevel) {
            law::move(run, transition);
            steps.push_back({run.elapsedMs, run.currentLevel});
        }
        run.elapsedMs += static_cast<std::int32_t>(run.sleepMs);
    }
    EXPECT_EQ(run.elapsedMs, 800);
    return steps;
}

} // namespace

TEST(Curve, WithTheDefaultSlopeGivesTheDocumentedLevels)
{
    const struct {
        unsigned lux;
        int level;
    } kRows[] = {{0, 24},    {1, 24},    {2, 24},    {10, 105},  {50, 185},
                 {100, 220}, {150, 240}, {200, 254}, {201, 254}, {65535, 254}};
    for (const auto& row : kRows)
        EXPECT_EQ(levelFor(50, row.lux), row.level) << row.lux << " lux";
}

TEST(Curve, NeverFallsWhenItGetsBrighter)
{
    for (unsigned lux = 1; lux <= 65535; ++lux)
        ASSERT_GE(levelFor(28.1184, lux), levelFor(28.1184, lux - 1)) << lux;
}

TEST(Curve, StaysWithinItsEndsForEverySlope)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(levelFor(1e308, 65535), 254);
    EXPECT_EQ(levelFor(infinity, 2), 254);
    EXPECT_EQ(levelFor(-1, 200), 0);
    EXPECT_EQ(levelFor(-infinity, 2), 0);
    EXPECT_EQ(levelFor(0, 200), 0);
}

TEST(Curve, TakesWhatIsNotANumberAsBright)
{
    EXPECT_EQ(levelFor(std::nan(""), 200), 254);
}

TEST(Curve, EndsOneBelowTheLargestLevel)
{
    EXPECT_EQ(law::curveLevel(50, 60000, 255), 254.0);
    EXPECT_EQ(law::curveLevel(50, 60000, 100), 99.0);
}

TEST(Learning, LevelOneHundredAtFiftyLuxTeachesTheDocumentedSlope)
{
    EXPECT_NEAR(law::learntSlope(100, law::curveArgument(50)), 28.12, 0.005);
}

TEST(Learning, LevelOneHundredAtFiftyLuxHoldsAndLosesOneWithSixDigits)
{
    EXPECT_EQ(levelFor(law::learntSlope(100, law::curveArgument(50)), 50), 100);
    EXPECT_EQ(levelFor(28.1184, 50), 99);
}

TEST(Learning, HoldsEveryLevelAtEveryLightOrFallsOneShort)
{
    unsigned wrong = 0;
    for (unsigned lux = 0; lux <= 1565; ++lux)
        for (int level = 0; level <= 254; ++level) {
            const int held =
                levelFor(law::learntSlope(level, law::curveArgument(static_cast<std::uint16_t>(lux))), lux);
            wrong += held != level && held != level - 1 ? 1U : 0U;
        }

    EXPECT_EQ(wrong, 0U);
}

TEST(SoftTransition, FromOneHundredToOneHundredAndTenTakesTenStepsOfFiftyMilliseconds)
{
    const std::vector<StepTaken> expected{{0, 101},   {50, 102},  {100, 103}, {150, 104}, {200, 105},
                                          {250, 106}, {300, 107}, {350, 108}, {400, 109}, {450, 110}};

    EXPECT_EQ(stepsOfOnePeriod(aimed(100, 110), Transition::Soft), expected);
}

TEST(SoftTransition, GoesDownAsItGoesUp)
{
    const std::vector<StepTaken> expected{{0, 9}, {50, 8}, {100, 7}};

    EXPECT_EQ(stepsOfOnePeriod(aimed(10, 7), Transition::Soft), expected);
}

TEST(SoftTransition, TakesSixteenStepsAtMostBeforeTheNextMeasurement)
{
    const std::vector<StepTaken> steps = stepsOfOnePeriod(aimed(0, 254), Transition::Soft);

    EXPECT_EQ(steps.size(), 16U);
    EXPECT_EQ(steps.back(), (StepTaken{750, 16}));
}

TEST(SoftTransition, AcrossTheWholeRangeTakesTwelveSecondsAndSevenTenths)
{
    law::Run run = aimed(0, 254);
    int slept = 0;
    while (run.currentLevel != run.targetLevel) {
        law::move(run, Transition::Soft);
        slept += law::kSoftStepMs;
    }

    EXPECT_EQ(slept, 12700);
}

TEST(Transition, AtOnceSendsOneLevelAndSleepsOutThePeriod)
{
    const std::vector<StepTaken> expected{{0, 110}};

    EXPECT_EQ(stepsOfOnePeriod(aimed(100, 110), Transition::AtOnce), expected);
}

TEST(Transition, SwitchedToAtOnceInMidWaySleepsTheRestOfThePeriod)
{
    law::Run run = aimed(100, 110);
    for (int i = 0; i < 3; ++i) {
        law::move(run, Transition::Soft);
        run.elapsedMs += static_cast<std::int32_t>(run.sleepMs);
    }

    law::move(run, Transition::AtOnce);

    EXPECT_EQ(run.currentLevel, 110);
    EXPECT_EQ(run.sleepMs, 650U);
}

TEST(ControlRun, BeginsWithAMeasurement)
{
    EXPECT_TRUE(law::measurementIsDue(law::Run{}));
}

TEST(ControlRun, MeasuresAgainWhenThePeriodIsOver)
{
    EXPECT_FALSE(law::measurementIsDue({.elapsedMs = 799}));
    EXPECT_TRUE(law::measurementIsDue({.elapsedMs = 800}));
}

TEST(ControlRun, SleepsAWholePeriodWhenThereIsNothingToChange)
{
    EXPECT_TRUE(stepsOfOnePeriod(aimed(24, 24), Transition::Soft).empty());
}
