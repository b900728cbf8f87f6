// SPDX-License-Identifier: LicenseRef-HXAux
// What is recorded between light and backlight, and what is measured on it.
#include "simulator/model/LightTrace.h"

#include "tests/simulator/model/ModelTest.h"

namespace light_trace_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

class LightTraceTest : public modeltest::ModelTest {
protected:
    LightTrace& trace = unit.get<LightTrace>();

    void levels(const std::vector<int>& values)
    {
        trace.levels.clear();
        for (std::size_t i = 0; i < values.size(); ++i)
            trace.levels.push_back({static_cast<double>(i), values[i]});
    }
    Bytes readSensor() { return get("/dev/lightsensor", 0x80020048, 2); }
    void writeLevel(std::uint8_t level) { EXPECT_EQ(put("/dev/backlight", 0x40010003, {0, level}), 0); }
};

TEST_F(LightTraceTest, RecordsNothingUntilItIsAskedTo)
{
    (void)readSensor();
    writeLevel(5);

    EXPECT_TRUE(trace.readings.empty());
    EXPECT_TRUE(trace.levels.empty());
}

TEST_F(LightTraceTest, RecordsReadingsAndLevelsWithTheirTime)
{
    set("light.trace", "on");
    unit.describe("light.channels = 0xc5 0xa3");
    pass(1500ms);
    (void)readSensor();
    pass(500ms);
    writeLevel(42);

    ASSERT_EQ(trace.readings.size(), 1U);
    EXPECT_EQ(trace.readings[0].seconds, 1.5);
    EXPECT_EQ(trace.readings[0].luxSet, 250);
    EXPECT_EQ(trace.readings[0].luxReported, 102);
    ASSERT_EQ(trace.levels.size(), 1U);
    EXPECT_EQ(trace.levels[0].seconds, 2);
    EXPECT_EQ(trace.levels[0].level, 42);
}

TEST_F(LightTraceTest, LeavesOutReadingsThatAreNotComplete)
{
    set("light.trace", "on");
    set("light.not-ready", "1");
    (void)readSensor();
    EXPECT_TRUE(trace.readings.empty());
    (void)readSensor();
    EXPECT_EQ(trace.readings.size(), 1U);
}

TEST_F(LightTraceTest, CountsHowOftenTheLevelTurns)
{
    const std::pair<std::vector<int>, int> cases[] = {
        {{}, 0},           {{5}, 0},          {{1, 2, 3}, 0},         {{3, 2, 1}, 0},
        {{1, 2, 1}, 1},    {{1, 2, 2, 1}, 1}, {{1, 2, 1, 2, 1}, 3},   {{5, 5, 5}, 0},
        {{1, 3, 2, 2}, 1}, {{9, 1, 9}, 1},    {{1, 1, 2, 2, 3, 3}, 0}};
    for (const auto& [values, reversals] : cases) {
        levels(values);
        EXPECT_EQ(trace.reversals(), reversals) << testing::PrintToString(values);
    }
}

TEST_F(LightTraceTest, MeasuresTheTimeToNinetyPercentOfTheWay)
{
    levels({0, 50, 89, 90, 100, 100});
    EXPECT_EQ(trace.secondsToNinety(0, 5), 3);
    levels({100, 50, 11, 10, 0});
    EXPECT_EQ(trace.secondsToNinety(0, 4), 3);
}

TEST_F(LightTraceTest, MeasuresFromTheLevelOfTheMomentOfItsBegin)
{
    levels({0, 100, 100, 200});

    EXPECT_EQ(trace.secondsToNinety(1.5, 3), 1.5);
}

TEST_F(LightTraceTest, MeasuresNothingWhereTheLevelDidNotMove)
{
    levels({7, 7, 7});
    EXPECT_LT(trace.secondsToNinety(0, 2), 0);
    levels({});
    EXPECT_LT(trace.secondsToNinety(0, 2), 0);
}

} // namespace

} // namespace light_trace_test
