// SPDX-License-Identifier: LicenseRef-HXAux
// The picture of light and backlight.
#include "simulator/plot/LightPlot.h"

#include "simulator/model/LightTrace.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;
using testing::HasSubstr;
using testing::Not;

namespace {

class LightPlotTest : public modeltest::ModelTest {
protected:
    LightTrace& trace = unit.get<LightTrace>();

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
    trace.readings = {{0, 0.5, 0.5}, {1, 20000, 20000}};

    const std::string picture = drawn();

    for (const char* label : {">0.1 lux<", ">1 lux<", ">10 lux<", ">10000 lux<", ">100000 lux<"})
        EXPECT_THAT(picture, HasSubstr(label));
}

TEST_F(LightPlotTest, BeginsAtTheUnitsStart)
{
    trace.readings = {{5, 10, 10}, {10, 10, 10}};

    const std::string picture = drawn();

    EXPECT_THAT(picture, HasSubstr("<text x=\"80.0\" y=\"530.0\" class=\"m\">0 s</text>"));
    EXPECT_THAT(picture, HasSubstr("cx=\"490.0\" cy"));
}

TEST_F(LightPlotTest, EndsWithAWholeSecondBehindReadingsAndLevels)
{
    trace.readings = {{0, 10, 10}, {3.2, 10, 10}};
    trace.levels = {{0, 0}, {3.4, 255}, {7.5, 0}};

    EXPECT_THAT(drawn(), HasSubstr(">8 s</text>"));
}

TEST_F(LightPlotTest, EndsItsLastLabelInsideThePicture)
{
    trace.readings = {{0, 10, 10}, {10, 10, 10}};

    EXPECT_THAT(drawn(), HasSubstr("<text x=\"900.0\" y=\"530.0\" class=\"e\">10 s</text>"));
}

TEST_F(LightPlotTest, DrawsDarknessAsZeroUnderTheLowestDecade)
{
    trace.readings = {{0, 0, 0}, {5, 1, 1}, {10, 10, 10}};

    const std::string picture = drawn();

    EXPECT_THAT(picture, HasSubstr("y=\"274.0\" class=\"e\">0 lux<"));
    EXPECT_THAT(picture, HasSubstr("cx=\"80.0\" cy=\"270.0\""));
    EXPECT_THAT(picture, HasSubstr("cx=\"490.0\" cy=\"160.0\""));
}

TEST_F(LightPlotTest, HasNoZeroWhereItIsNeverDark)
{
    trace.readings = {{0, 1, 1}, {10, 10, 10}};

    EXPECT_THAT(drawn(), Not(HasSubstr(">0 lux<")));
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
