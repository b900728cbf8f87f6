// SPDX-License-Identifier: LicenseRef-HXAux
// The registers of the power and the diagnostics device: loads, times, temperatures.
#include "simulator/model/Supervisor.h"
#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

constexpr char kPower[] = "/dev/power-id";
constexpr char kDiagnostics[] = "/dev/diag-id";

struct Load : Named {
    std::uint8_t number;
    const char* property;
    unsigned on; ///< as programs write it: the video channels' own bits
};

class SupervisorLoad : public modeltest::ModelTest, public hxtest::WithRow<Load> {};

ROW_TEST(SupervisorLoad, IsSwitchedByItsRegister)
{
    EXPECT_EQ(setReg(kPower, row().number, 0), 0);
    EXPECT_EQ(property(row().property), "off");
    EXPECT_EQ(setReg(kPower, row().number, row().on), 0);
    EXPECT_EQ(property(row().property), "on");
    EXPECT_EQ(reg(kPower, row().number), 1);
}

ROW_TEST(SupervisorLoad, IsSeenByProgramsWhenItIsSetFromOutside)
{
    for (const int value : {0, 1}) {
        set(row().property, std::to_string(value));
        EXPECT_EQ(reg(kPower, row().number), value);
    }
    EXPECT_NE(refusalOfSet(row().property, "2"), "");
}

ROW_TEST(SupervisorLoad, IsOffWhileTheUnitIs)
{
    EXPECT_EQ(setReg(kPower, row().number, row().on), 0);
    supplyOffAndOn();

    EXPECT_EQ(property("power.state"), "off");
    EXPECT_EQ(reg(kPower, row().number), 0);
}

TEST_ROWS(Supervisor, SupervisorLoad, kNameOfRow, Load{{"Backlight"}, 0, "power.backlight", 1},
          Load{{"Can"}, 1, "power.can", 1}, Load{{"Fan"}, 3, "power.fan", 1},
          Load{{"FirstVideo"}, 2, "power.video.1", 1}, Load{{"SecondVideo"}, 5, "power.video.2", 2},
          Load{{"ThirdVideo"}, 6, "power.video.3", 4}, Load{{"FourthVideo"}, 7, "power.video.4", 8});

struct AtStart : Named {
    const char* setting;
    const char* load;
};

class LoadAtStart : public modeltest::ModelTest, public hxtest::WithRow<AtStart> {};

ROW_TEST(LoadAtStart, FollowsItsSetting)
{
    for (const char* value : {"on", "off"}) {
        set(row().setting, value);
        supplyOffAndOn();
        act("press", {"front"});
        ASSERT_EQ(property("power.state"), "running");
        EXPECT_EQ(property(row().load), value);
    }
}

TEST_ROWS(Supervisor, LoadAtStart, kNameOfRow, AtStart{{"Can"}, "config.can", "power.can"},
          AtStart{{"Fan"}, "config.fan", "power.fan"}, AtStart{{"FirstVideo"}, "config.video.1", "power.video.1"},
          AtStart{{"SecondVideo"}, "config.video.2", "power.video.2"},
          AtStart{{"ThirdVideo"}, "config.video.3", "power.video.3"},
          AtStart{{"FourthVideo"}, "config.video.4", "power.video.4"});

/// Where programs read an operating time: whole minutes and the seconds above them.
struct Timer : Named {
    const char* property;
    std::uint8_t minutes;
    std::uint8_t seconds;
};

class OperatingTimer : public modeltest::ModelTest, public hxtest::WithRow<Timer> {};

ROW_TEST(OperatingTimer, IsReadAsMinutesAndSeconds)
{
    set(row().property, "3725");

    EXPECT_EQ(reg(kDiagnostics, row().minutes), 62);
    EXPECT_EQ(reg(kDiagnostics, row().seconds), 5);
}

ROW_TEST(OperatingTimer, CannotBeWrittenByPrograms)
{
    EXPECT_EQ(setReg(kDiagnostics, row().minutes, 1), -EINVAL);
    EXPECT_EQ(setReg(kDiagnostics, row().seconds, 1), -EINVAL);
}

TEST_ROWS(Supervisor, OperatingTimer, kNameOfRow, Timer{{"Total"}, "diagnostics.time.0", 7, 9},
          Timer{{"SinceStart"}, "diagnostics.time.1", 10, 11}, Timer{{"Suspended"}, "diagnostics.time.2", 23, 24},
          Timer{{"Backlight"}, "diagnostics.time.3", 15, 16}, Timer{{"Can"}, "diagnostics.time.4", 17, 18},
          Timer{{"Fan"}, "diagnostics.time.5", 19, 20}, Timer{{"Heating"}, "diagnostics.time.6", 21, 22});

class SupervisorDiagnostics : public modeltest::ModelTest {};

TEST_F(SupervisorDiagnostics, CarryTheTotalTimeIntoASecondWord)
{
    set("diagnostics.time.0", std::to_string((0x20003L * 60) + 7));

    EXPECT_EQ(reg(kDiagnostics, 8), 2);
    EXPECT_EQ(reg(kDiagnostics, 7), 3);
    EXPECT_EQ(reg(kDiagnostics, 9), 7);
}

TEST_F(SupervisorDiagnostics, CountALoadThatIsSwitchedOffFromOutsideNoMore)
{
    pass(10s);
    set("power.can", "0");
    pass(50s);

    EXPECT_EQ(property("diagnostics.time.4"), "10");
    EXPECT_EQ(property("diagnostics.time.0"), "60");
}

TEST_F(SupervisorDiagnostics, CountALoadThatIsSwitchedOnFromOutside)
{
    pass(10s);
    set("power.fan", "1");
    pass(50s);

    EXPECT_EQ(property("diagnostics.time.5"), "50");
}

TEST_F(SupervisorDiagnostics, CountTheTimeOfSuspension)
{
    act("press", {"front"});
    pass(200ms);
    ASSERT_EQ(setReg(kPower, 4, 0), 0);
    pass(2s);
    ASSERT_EQ(property("power.state"), "suspended");

    pass(90s);

    EXPECT_EQ(reg(kDiagnostics, 23), 1);
    EXPECT_EQ(reg(kDiagnostics, 24), 30);
    EXPECT_EQ(property("diagnostics.time.0"), "2") << "it has not run meanwhile";
}

TEST_F(SupervisorDiagnostics, CountFromZeroSinceEachStart)
{
    pass(100s);
    EXPECT_EQ(property("diagnostics.time.1"), "100");
    act("restart");
    pass(5s);

    EXPECT_EQ(property("diagnostics.time.1"), "5");
    EXPECT_EQ(property("diagnostics.time.0"), "105");
}

TEST_F(SupervisorDiagnostics, ShowBothTemperaturesAsSignedWords)
{
    set("diagnostics.ss-temp", "-7");
    set("diagnostics.pcb-temp", "85");

    EXPECT_EQ(reg(kDiagnostics, 0), 0xFFF9);
    EXPECT_EQ(reg(kDiagnostics, 1), 85);
    EXPECT_EQ(property("diagnostics.ss-temp"), "-7");
}

TEST_F(SupervisorDiagnostics, KeepTheExtremesOfTheBoardAndNotOfTheSupervisor)
{
    set("diagnostics.ss-temp", "100");
    EXPECT_EQ(reg(kDiagnostics, 13), 35);

    set("diagnostics.pcb-temp", "60");
    set("diagnostics.pcb-temp", "-5");
    set("diagnostics.pcb-temp", "20");
    EXPECT_EQ(reg(kDiagnostics, 13), 60);
    EXPECT_EQ(reg(kDiagnostics, 14), 0xFFFB);
}

TEST_F(SupervisorDiagnostics, ShowAnOperatingSystemsRestartAsReasonOfBoth)
{
    act("restart");

    EXPECT_EQ(reg(kDiagnostics, 2), 0xF0);
    EXPECT_EQ(reg(kDiagnostics, 3), 0xF0);
    EXPECT_EQ(reg(kDiagnostics, 12), 42) << "the power was not off";
}

TEST_F(SupervisorDiagnostics, RestartNothingWhileTheUnitIsOff)
{
    supplyOffAndOn();
    act("restart");

    EXPECT_EQ(property("power.state"), "off");
    EXPECT_EQ(reg(kDiagnostics, 3), 0x0F) << "power was removed";
}

TEST_F(SupervisorDiagnostics, SwitchTheLoadsAsSetAtARestart)
{
    ASSERT_EQ(setReg(kPower, 1, 0), 0);
    act("restart");

    EXPECT_EQ(reg(kPower, 1), 1);
}

TEST_F(SupervisorDiagnostics, ShowTheErrorThatIsSetUntilItIsCleared)
{
    set("diagnostics.error", "131");
    EXPECT_EQ(reg(kDiagnostics, 4), 131);
    EXPECT_EQ(setReg(kDiagnostics, 4, 0), -EINVAL);
    EXPECT_EQ(setReg(kDiagnostics, 25, 0), -EINVAL);
    EXPECT_EQ(setReg(kDiagnostics, 25, 1), 0);
    EXPECT_EQ(property("diagnostics.error"), "0");
}

TEST_F(SupervisorDiagnostics, KeepFreeRegistersFromNumber32)
{
    EXPECT_EQ(setReg(kDiagnostics, 32, 0xABCD), 0);
    EXPECT_EQ(setReg(kDiagnostics, 127, 1), 0);
    EXPECT_EQ(reg(kDiagnostics, 32), 0xABCD);
    EXPECT_EQ(reg(kDiagnostics, 127), 1);
}

class PowerTransition : public modeltest::ModelTest {};

TEST_F(PowerTransition, IsAcknowledgedByAZeroOnly)
{
    act("press", {"front"});
    pass(200ms);
    ASSERT_EQ(reg(kPower, 4), 1);

    EXPECT_EQ(setReg(kPower, 4, 1), -EINVAL);
    EXPECT_EQ(reg(kPower, 4), 1);
    EXPECT_EQ(setReg(kPower, 4, 0), 0);
    EXPECT_EQ(reg(kPower, 4), 0);
}

TEST_F(PowerTransition, DoesNothingWhenNothingWasAskedFor)
{
    EXPECT_EQ(setReg(kPower, 4, 0), 0);
    pass(2min);

    EXPECT_EQ(property("power.state"), "running");
}

/// Which number each asker and action has.
struct Ask : Named {
    const char* setting;
    const char* action;
    std::vector<std::string> words;
    int number;
    const char* state;
};

class PowerRequest : public modeltest::ModelTest, public hxtest::WithRow<Ask> {};

ROW_TEST(PowerRequest, HasItsOwnNumberAndEffect)
{
    set(row().setting, row().number % 2 == 1 ? "1" : "2");
    act(row().action, row().words);
    pass(3s);

    EXPECT_EQ(reg(kPower, 4), row().number);
    pass(1min);
    EXPECT_EQ(property("power.state"), row().state);
    EXPECT_EQ(reg(kPower, 4), 0) << "carried out";
}

TEST_ROWS(Supervisor, PowerRequest, kNameOfRow,
          Ask{{"ShortPressSuspends"}, "config.short-press", "press", {"front"}, 1, "suspended"},
          Ask{{"ShortPressShutsDown"}, "config.short-press", "press", {"front"}, 2, "off"},
          Ask{{"LongPressSuspends"}, "config.long-press", "press", {"front", "long"}, 3, "suspended"},
          Ask{{"LongPressShutsDown"}, "config.long-press", "press", {"front", "long"}, 4, "off"},
          Ask{{"SignalSuspends"}, "config.signal", "signal", {}, 5, "suspended"},
          Ask{{"SignalShutsDown"}, "config.signal", "signal", {}, 6, "off"},
          Ask{{"PressOfTheExactTimeIsLong"}, "config.long-press", "press", {"front", "2000"}, 4, "off"},
          Ask{{"PressOfLessIsShort"}, "config.short-press", "press", {"front", "1999"}, 2, "off"});

TEST_F(PowerTransition, IsNotReplacedByASecondRequest)
{
    act("press", {"front"});
    pass(1s);
    act("press", {"front", "long"});
    pass(5s);

    EXPECT_EQ(reg(kPower, 4), 1);
}

TEST_F(PowerTransition, EndsWithTheSupply)
{
    act("press", {"front"});
    pass(1s);
    act("supply", {"off"});

    EXPECT_EQ(property("power.transition"), "0");
    act("supply", {"on"});
    pass(2min);
    EXPECT_EQ(property("power.state"), "off");
}

TEST_F(PowerTransition, ByTheSignalWakesASuspendedUnit)
{
    act("press", {"front"});
    pass(61s);
    ASSERT_EQ(property("power.state"), "suspended");

    act("signal");
    pass(499ms);
    EXPECT_EQ(property("power.state"), "suspended");
    pass(1ms);
    EXPECT_EQ(property("power.state"), "running");
}

TEST_F(PowerTransition, DoesNotHappenWithoutASupply)
{
    act("supply", {"off"});
    act("press", {"front"});
    EXPECT_EQ(property("power.state"), "off");
    act("supply", {"off"});
    EXPECT_EQ(property("diagnostics.power-cycles"), "42");
}

} // namespace
