// SPDX-License-Identifier: LicenseRef-HXAux
// The service process of the automatic backlight, and other processes that control it, in real time.
#include "testing/Command.h"

#include <gmock/gmock.h>

#include <csignal>
#include <thread>

using hxtest::Outcome;
using hxtest::Unit;
using testing::HasSubstr;

namespace {

using namespace std::chrono_literals;

/// A unit with the service process.
struct ServedUnit {
    explicit ServedUnit(const std::string& settings) : unit{{"light = 100"}}
    {
        unit.writeSettings(settings);
        service.emplace_back(unit.start({"backlight", "serve"}));
        EXPECT_EQ(service[0].line(), "serving the automatic backlight");
    }

    int end(int signal = SIGTERM)
    {
        ::kill(service[0].pid(), signal);
        return service[0].status();
    }
    std::string level() const { return unit.property("backlight.level"); }
    /// Waits for a level, with a generous deadline for busy machines.
    bool reaches(const std::string& wanted) const
    {
        for (int tries = 0; tries < 300; ++tries) {
            if (level() == wanted)
                return true;
            std::this_thread::sleep_for(100ms);
        }
        return false;
    }

    Unit unit;
    std::vector<Process> service;
};

constexpr const char* kQuick = "ABL_averageWndSize=1\nABL_bSoftTransitions=0\nABL_k=50\nABL_mode=2\n"
                               "ABL_rejectDeltaInLux=50\nABL_rejectWndSize=0\nABL_status=1\n";

} // namespace

TEST(AutomaticBacklightService, FollowsTheSettingsOfOtherProcesses)
{
    const ServedUnit served{"ABL_k=50\n"};
    EXPECT_EQ(served.unit.run("hxaux backlight auto params at-once").status, 0);
    EXPECT_EQ(served.unit.run("hxaux backlight auto filter 1 0 50 auto").status, 0);
    EXPECT_EQ(served.unit.run("hxaux backlight auto on").status, 0);
    EXPECT_TRUE(served.reaches("218"));

    served.unit.control("set 'light = 20'");
    EXPECT_TRUE(served.reaches("134"));
    EXPECT_EQ(served.unit.run("hxaux backlight auto off").status, 0);
    std::this_thread::sleep_for(2s);
    served.unit.control("set 'light = 100'");
    std::this_thread::sleep_for(3s);

    EXPECT_EQ(served.level(), "134");
}

TEST(AutomaticBacklightService, LearnsFromAnotherProcess)
{
    const ServedUnit served{kQuick};
    ASSERT_TRUE(served.reaches("218"));

    EXPECT_EQ(served.unit.run("hxaux backlight set 100").status, 0);
    std::this_thread::sleep_for(3s);

    EXPECT_THAT(served.unit.settings(), HasSubstr("ABL_k=24."));
    EXPECT_EQ(served.level(), "100");
}

TEST(AutomaticBacklightService, RepairsTheSettings)
{
    const ServedUnit served{"ABL_mode=auto\nABL_k=33\n"};
    std::this_thread::sleep_for(1s);

    EXPECT_EQ(served.unit.run("hxaux settings list").output,
              "ABL_status: 0\nABL_bSoftTransitions: 1\nABL_k: 33\nABL_averageWndSize: 5\n"
              "ABL_rejectWndSize: 5\nABL_rejectDeltaInLux: 50\nABL_mode: 2\n");
}

TEST(AutomaticBacklightService, RefusesASecondOneWithTheReason)
{
    const ServedUnit served{kQuick};

    const Outcome second = served.unit.run("hxaux backlight serve");

    EXPECT_EQ(second.status, 5);
    EXPECT_THAT(second.error, HasSubstr("another process already serves the automatic backlight of this unit"));
}

TEST(AutomaticBacklightService, HasTheAveragingToItself)
{
    const ServedUnit served{kQuick};
    ASSERT_TRUE(served.reaches("218"));

    const Outcome other = served.unit.run("hxaux light --average");

    EXPECT_EQ(other.status, 5);
    EXPECT_THAT(other.error, HasSubstr("(20)"));
}

TEST(AutomaticBacklightService, EndsInOrderAndByTheSignalOnEachSignal)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ServedUnit served{kQuick};
        ASSERT_TRUE(served.reaches("218"));

        EXPECT_EQ(served.end(signal), 128 + signal);

        EXPECT_THAT(served.unit.settings(), HasSubstr("ABL_status=1\n"));
        EXPECT_EQ(served.unit.run("hxaux light --average").status, 0);
    }
}

TEST(AutomaticBacklightService, CanBeRestarted)
{
    ServedUnit served{kQuick};
    ASSERT_TRUE(served.reaches("218"));
    ASSERT_EQ(served.end(), 128 + SIGTERM);

    Process again = served.unit.start({"backlight", "serve"});
    EXPECT_EQ(again.line(), "serving the automatic backlight");
    served.unit.control("set 'light = 20'");

    EXPECT_TRUE(served.reaches("134"));
}

TEST(AutomaticBacklightService, ThatIsSwitchedOffEndsWithTheSettingsAsTheyAre)
{
    ServedUnit served{"ABL_status=0\n"};

    EXPECT_EQ(served.end(), 128 + SIGTERM);

    EXPECT_THAT(served.unit.settings(), HasSubstr("ABL_status=0\n"));
}

TEST(AutomaticBacklightService, ThatIsKilledLeavesTheAveragingTakenAndItsPlaceFree)
{
    ServedUnit served{kQuick};
    ASSERT_TRUE(served.reaches("218"));

    served.end(SIGKILL);

    EXPECT_EQ(served.unit.run("hxaux light --average").status, 5);
    Process again = served.unit.start({"backlight", "serve"});
    EXPECT_THAT(again.line(), HasSubstr("another program is averaging the light sensor"));
}
