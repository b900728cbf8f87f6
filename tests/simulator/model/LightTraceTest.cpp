// SPDX-License-Identifier: LicenseRef-HXAux
// What is recorded between light and backlight, what is measured on it, and its picture.
#include "simulator/model/LightTrace.h"

#include "simulator/model/LightPlot.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;
using testing::HasSubstr;
using testing::Not;

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

class LightPlotTest : public LightTraceTest {
protected:
    std::string drawn(const std::string& title = "title") { return lightPlot(trace, title); }
    static int count(const std::string& text, const std::string& part)
    {
        int found = 0;
        for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++found;
        return found;
    }
};

TEST_F(LightPlotTest, IsAWholePictureEvenOfNothing)
{
    const std::string picture = drawn();

    EXPECT_TRUE(picture.starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\""));
    EXPECT_TRUE(picture.ends_with("</svg>\n"));
    EXPECT_THAT(picture, HasSubstr(">title</text>"));
    EXPECT_EQ(count(picture, "<circle"), 0);
    EXPECT_THAT(picture, Not(HasSubstr("class=\"l\" points")));
    EXPECT_THAT(picture, Not(HasSubstr("nan")));
}

TEST_F(LightPlotTest, HasADotForEachReading)
{
    trace.readings = {{0, 10, 10}, {5, 100, 100}, {10, 1000, 1000}};

    const std::string picture = drawn();

    EXPECT_EQ(count(picture, "<circle"), 3);
    // Three decades over 220 points, from left to right.
    EXPECT_THAT(picture, HasSubstr("cx=\"80.0\" cy=\"270.0\""));
    EXPECT_THAT(picture, HasSubstr("cx=\"490.0\" cy=\"160.0\""));
    EXPECT_THAT(picture, HasSubstr("cx=\"900.0\" cy=\"50.0\""));
}

TEST_F(LightPlotTest, LeavesOutDotsThatLieOnEachOther)
{
    for (int i = 0; i < 1000; ++i)
        trace.readings.push_back({i * 1e-4, 100, 100});
    trace.readings.push_back({10, 100, 100});

    EXPECT_LT(count(drawn(), "<circle"), 20);
}

TEST_F(LightPlotTest, DrawsTheLevelAsSteps)
{
    trace.readings = {{0, 10, 10}, {10, 10, 10}};
    trace.levels = {{0, 0}, {5, 255}};

    EXPECT_THAT(drawn(), HasSubstr("class=\"l\" points=\"80.0,510.0 490.0,510.0 490.0,310.0 900.0,310.0 \""));
}

TEST_F(LightPlotTest, LabelsItsTimesInTheUnitThatFits)
{
    trace.readings = {{0, 10, 10}, {8, 10, 10}};
    EXPECT_THAT(drawn(), HasSubstr(">8 s</text>"));
    trace.readings = {{0, 10, 10}, {480, 10, 10}};
    EXPECT_THAT(drawn(), HasSubstr(">8 min</text>"));
    trace.readings = {{0, 10, 10}, {8 * 3600, 10, 10}};
    EXPECT_THAT(drawn(), HasSubstr(">8 h</text>"));
}

TEST_F(LightPlotTest, LabelsEachDecadeOfTheLight)
{
    trace.readings = {{0, 0.5, 0}, {1, 20000, 20000}};

    const std::string picture = drawn();

    for (const char* label : {">0.1 lux<", ">1 lux<", ">10 lux<", ">10000 lux<", ">100000 lux<"})
        EXPECT_THAT(picture, HasSubstr(label));
}

TEST_F(LightPlotTest, FollowsTheLightByTimeWhereItIsKnown)
{
    trace.readings = {{0, 10, 10}, {10, 100, 100}};

    const std::string picture = lightPlot(trace, "", [](double seconds) { return seconds < 5 ? 10 : 100; });

    EXPECT_THAT(picture, HasSubstr(" 489.5,270.0 490.0,50.0 "));
}

TEST_F(LightPlotTest, ShowsATitleWithAnyLetters)
{
    EXPECT_THAT(drawn("a<b & \"c\""), HasSubstr(">a&lt;b &amp; \"c\"</text>"));
}

} // namespace
