// SPDX-License-Identifier: LicenseRef-HXAux
// The automatic backlight over the light profiles of the simulated unit, in virtual time. docs/automatic-backlight.md
// shows these figures.
#include "simulator/model/LightSensor.h"
#include "simulator/model/LightTrace.h"
#include "simulator/plot/LightPlot.h"
#include "testing/FileContent.h"
#include "tests/src/backlight/Service.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace Halvix;

namespace {

constexpr const char* kDefaults = "ABL_averageWndSize=5\nABL_bSoftTransitions=1\nABL_k=50\nABL_mode=2\n"
                                  "ABL_rejectDeltaInLux=50\nABL_rejectWndSize=5\nABL_status=1\n";

hxsim::LightProfile profileOf(const std::string& name)
{
    return hxsim::LightProfile::parse(fileContent(std::string{HX_LIGHT_PROFILES} + "/" + name + ".profile"));
}

/// The automatic backlight with its defaults on a profile that begins after the level has settled at its first light.
class Played {
public:
    Played(const char* profile, double seconds) : Played{profileOf(profile), seconds} {}
    Played(const hxsim::LightProfile& light, double seconds)
    {
        unit_.set("light.noise", "1");
        unit_.model<hxsim::LightSensor>()->setLux(light.luxAt({}));
        unit_.sleepFor(30000);
        start_ = static_cast<double>(unit_.now()) / 1000;
        unit_.model<hxsim::LightTrace>()->recording = true;
        unit_.model<hxsim::LightSensor>()->play(light);
        seconds_ = seconds;
        unit_.sleepFor(static_cast<std::int64_t>(seconds * 1000));
    }

    double reversalsPerHour() { return unit_.model<hxsim::LightTrace>()->reversals() * 3600 / seconds_; }
    /// From a moment of the profile on, as seen at a later one.
    double secondsToNinety(double from, double to)
    {
        return unit_.model<hxsim::LightTrace>()->secondsToNinety(start_ + from, start_ + to);
    }
    std::pair<int, int> levels()
    {
        auto trace = unit_.model<hxsim::LightTrace>();
        int lowest = 255;
        int highest = 0;
        for (const auto& one : trace->levels) {
            lowest = std::min(lowest, one.level);
            highest = std::max(highest, one.level);
        }
        return {lowest, highest};
    }
    void record(const std::string& figures) { std::printf("%s\n", figures.c_str()); }

private:
    SimulatedUnit unit_;
    Service service_{unit_, kDefaults};
    double start_ = 0;
    double seconds_ = 0;
};

} // namespace

TEST(LightProfile, DawnIsFollowedWithoutHunting)
{
    Played day{"day", 28800}; // from midnight to full light

    const auto [lowest, highest] = day.levels();

    EXPECT_LE(day.reversalsPerHour(), 60);
    EXPECT_EQ(lowest, 25) << "the first level sent: the night's 24 was set before the profile began";
    EXPECT_EQ(highest, 254);
    day.record("reversals per hour " + std::to_string(day.reversalsPerHour()));
}

TEST(LightProfile, TunnelIsFollowedWithinSeconds)
{
    Played tunnel{"tunnel", 180};

    const double dark = tunnel.secondsToNinety(30, 110);
    const double bright = tunnel.secondsToNinety(117, 179);

    EXPECT_GT(dark, 3);
    EXPECT_LT(dark, 25);
    EXPECT_GT(bright, 3);
    EXPECT_LT(bright, 25);
    tunnel.record("reversals per hour " + std::to_string(tunnel.reversalsPerHour()) + ", dark after " +
                  std::to_string(dark) + " s, bright after " + std::to_string(bright) + " s");
}

TEST(LightProfile, StreetLampsMoveTheLevelLittle)
{
    Played lamps{"street-lamps", 600};

    const auto [lowest, highest] = lamps.levels();

    EXPECT_LT(highest - lowest, 150);
    lamps.record("reversals per hour " + std::to_string(lamps.reversalsPerHour()) + ", levels " +
                 std::to_string(lowest) + " to " + std::to_string(highest));
}

TEST(LightProfile, FlickerIsAveragedAway)
{
    Played flicker{"flicker", 600};

    const auto [lowest, highest] = flicker.levels();

    EXPECT_LT(highest - lowest, 60);
    flicker.record("reversals per hour " + std::to_string(flicker.reversalsPerHour()) + ", levels " +
                   std::to_string(lowest) + " to " + std::to_string(highest));
}

TEST(LightProfile, HandThatPassesByChangesNothingAndOneThatRestsDoes)
{
    Played hand{"hand", 100};

    EXPECT_LT(hand.secondsToNinety(14, 34), 0);
    const double dark = hand.secondsToNinety(60, 75);
    EXPECT_GT(dark, 3);
    EXPECT_LT(dark, 15);
    hand.record("reversals per hour " + std::to_string(hand.reversalsPerHour()) + ", dark after " +
                std::to_string(dark) + " s");
}

TEST(LightStep, IsFollowedAfterTheWindowsAndAtTheSpeedOfTheTransition)
{
    const struct {
        const char* profile;
        double least;
        double most;
    } kRows[] = {{"0 25; 10 25; 10 3000; 60 3000", 8, 16}, {"0 3000; 10 3000; 10 25; 60 25", 8, 16}};
    for (const auto& row : kRows) {
        Played step{hxsim::LightProfile::parse(row.profile), 60};

        const double seconds = step.secondsToNinety(10, 59);

        EXPECT_GT(seconds, row.least);
        EXPECT_LT(seconds, row.most);
        step.record(std::string{row.profile} + " after " + std::to_string(seconds) + " s");
    }
}

TEST(LightPicture, ShowsLightReadingsAndLevels)
{
    SimulatedUnit unit;
    auto trace = unit.model<hxsim::LightTrace>();
    trace->readings = {{0, 10, 9}, {1, 1000, 990}};
    trace->levels = {{0.5, 100}, {1, 200}};

    const std::string svg = hxsim::lightPlot(*trace, "two points");

    EXPECT_THAT(svg, testing::StartsWith("<svg "));
    EXPECT_THAT(svg, testing::EndsWith("</svg>\n"));
    EXPECT_THAT(svg, testing::HasSubstr("two points"));
    EXPECT_THAT(svg, testing::ContainsRegex("<polyline class=\"s\" points=\"80.0,[0-9.]+ 900.0,"));
    EXPECT_EQ(std::count(svg.begin(), svg.end(), '<') - 2, std::count(svg.begin(), svg.end(), '>') - 2);
}

TEST(LightPicture, OfNothingIsStillAPicture)
{
    SimulatedUnit unit;

    const std::string svg = hxsim::lightPlot(*unit.model<hxsim::LightTrace>(), "nothing");

    EXPECT_THAT(svg, testing::EndsWith("</svg>\n"));
}
