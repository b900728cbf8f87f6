// SPDX-License-Identifier: LicenseRef-HXAux
// The simulated supervisor by itself: what it refuses, how power requests run in model time, what it counts.
#include "simulator/model/Supervisor.h"

#include <gmock/gmock.h>

#include "simulator/model/Text.h"

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

struct World {
    Unit unit;
    Supervisor& supervisor = unit.get<Supervisor>();

    void pass(Time time) { unit.clock().advanceTo(unit.clock().now() + time); }
    std::string state() { return unit.properties().get("power.state"); }
    int transition() { return supervisor.power.read(4); }
};

TEST(SupervisorModel, RefusesSettingsThatTheFirmwareDoesNotKnow)
{
    World world;
    SupervisorRegisters& settings = world.supervisor.configuration;

    EXPECT_LT(settings.write(16, 3), 0);
    EXPECT_LT(settings.write(19, 0), 0);
    EXPECT_LT(settings.write(14, 62), 0);
    EXPECT_LT(settings.write(10, 4096), 0);

    EXPECT_EQ(settings.read(16), 1);
    EXPECT_EQ(settings.write(16, 2), 0);
    EXPECT_EQ(settings.read(16), 2);
}

TEST(SupervisorModel, KeepsAnyMaskBitOfALoadAsOn)
{
    World world;

    EXPECT_EQ(world.supervisor.power.write(7, 8), 0);

    EXPECT_EQ(world.supervisor.power.read(7), 1);
}

TEST(SupervisorModel, LetsNothingMeasuredBeWritten)
{
    World world;

    for (const int number : {0, 3, 12, 24})
        EXPECT_LT(world.supervisor.diagnostics.write(std::uint8_t(number), 7), 0) << number;
    EXPECT_EQ(world.supervisor.diagnostics.write(32, 7), 0); // free registers begin here
}

TEST(SupervisorModel, ClearsItsErrorByAOneOnly)
{
    World world;
    world.unit.properties().set("diagnostics.error", "16");

    EXPECT_LT(world.supervisor.diagnostics.write(25, 2), 0);
    EXPECT_EQ(world.supervisor.diagnostics.read(4), 16);
    EXPECT_EQ(world.supervisor.diagnostics.write(25, 1), 0);
    EXPECT_EQ(world.supervisor.diagnostics.read(4), 0);
}

TEST(SupervisorModel, AsksForAShortPressWhenTheButtonIsReleased)
{
    World world;
    world.unit.actions().run("press", {"front"});

    world.pass(199ms);
    EXPECT_EQ(world.transition(), 0);
    world.pass(2ms);
    EXPECT_EQ(world.transition(), 1); // short, suspend
}

TEST(SupervisorModel, AsksForALongPressAtItsTime)
{
    World world;
    world.unit.actions().run("press", {"front", "long"});

    world.pass(1999ms);
    EXPECT_EQ(world.transition(), 0);
    world.pass(2ms);
    EXPECT_EQ(world.transition(), 4); // long, shut down
}

TEST(SupervisorModel, DoesNothingForAPressWithoutAction)
{
    World world;
    world.unit.properties().set("config.short-press", "0");

    world.unit.actions().run("press", {"front"});
    world.pass(2min);

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.transition(), 0);
}

TEST(SupervisorModel, CarriesOutARequestTwoSecondsAfterItsAcknowledgement)
{
    World world;
    world.unit.actions().run("press", {"front", "long"});
    world.pass(10s);

    EXPECT_EQ(world.supervisor.power.write(4, 0), 0);
    world.pass(1999ms);
    EXPECT_EQ(world.state(), "running");
    world.pass(2ms);

    EXPECT_EQ(world.state(), "off");
    EXPECT_EQ(world.supervisor.power.read(1), 0); // CAN
    EXPECT_EQ(world.supervisor.diagnostics.read(3), 0x55);
}

TEST(SupervisorModel, CarriesOutARequestThatNobodyAcknowledgesAfterAMinute)
{
    World world;
    world.unit.actions().run("signal", {});

    world.pass(500ms + 59999ms);
    EXPECT_EQ(world.transition(), 6); // signal, shut down
    world.pass(1ms);

    EXPECT_EQ(world.state(), "off");
    EXPECT_EQ(world.supervisor.diagnostics.read(3), 0xAA);
}

TEST(SupervisorModel, IgnoresASignalThatIsTooShort)
{
    World world;

    world.unit.actions().run("signal", {"499"});
    world.pass(10s);

    EXPECT_EQ(world.transition(), 0);
}

TEST(SupervisorModel, WakesASuspendedUnitByTheButton)
{
    World world;
    world.unit.actions().run("press", {"front"});
    world.pass(2min);
    EXPECT_EQ(world.state(), "suspended");

    world.unit.actions().run("press", {"front"});

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.supervisor.power.read(1), 1);
}

TEST(SupervisorModel, SwitchesASuspendedUnitOffAfterItsTime)
{
    World world;
    world.unit.properties().set("config.suspend-time", "10");
    world.unit.actions().run("press", {"front"});
    world.pass(62s);
    EXPECT_EQ(world.state(), "suspended");

    world.pass(10min);

    EXPECT_EQ(world.state(), "off");
}

struct Off : World {
    Off()
    {
        unit.actions().run("supply", {"off"});
        unit.actions().run("supply", {"on"});
    }
};

TEST(SupervisorModel, StartsByTheButtonAndCountsIt)
{
    Off world;
    EXPECT_EQ(world.state(), "off");

    world.unit.actions().run("press", {"front"});

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.supervisor.diagnostics.read(12), 43);
    EXPECT_EQ(world.supervisor.diagnostics.read(2), 0x55);
}

TEST(SupervisorModel, StartsOnlyByWhatMayStartIt)
{
    Off world;
    world.unit.properties().set("config.trigger", "2");

    world.unit.actions().run("press", {"front"});
    EXPECT_EQ(world.state(), "off");
    world.unit.actions().run("signal", {});
    world.pass(1s);

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.supervisor.diagnostics.read(2), 0xAA);
}

TEST(SupervisorModel, StartsByThePowerIfItIsSetTo)
{
    World world;
    world.unit.properties().set("config.power-on", "1");

    world.unit.actions().run("supply", {"off"});
    EXPECT_EQ(world.state(), "off");
    world.unit.actions().run("supply", {"on"});

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.supervisor.diagnostics.read(2), 0x0F);
}

TEST(SupervisorModel, DoesNotStartBelowItsVoltage)
{
    Off world;
    world.unit.properties().set("voltage.0", "8.5");
    world.unit.actions().run("press", {"front"});
    EXPECT_EQ(world.state(), "off");

    world.unit.properties().set("voltage.0", "9.5");
    world.unit.actions().run("press", {"front"});

    EXPECT_EQ(world.state(), "running");
}

TEST(SupervisorModel, HeatsAColdUnitBeforeItStarts)
{
    Off world;
    world.unit.properties().set("diagnostics.pcb-temp", "-3");
    world.unit.actions().run("press", {"front"});
    EXPECT_EQ(world.state(), "heating");

    world.pass(29s);
    EXPECT_EQ(world.state(), "heating");
    world.pass(2s);

    EXPECT_EQ(world.state(), "running");
    EXPECT_EQ(world.unit.properties().get("diagnostics.time.6"), "30");
}

TEST(SupervisorModel, RemembersTheLowestAndHighestTemperature)
{
    World world;
    world.unit.properties().set("diagnostics.pcb-temp", "-20");
    world.unit.properties().set("diagnostics.pcb-temp", "70");

    EXPECT_EQ(std::int16_t(world.supervisor.diagnostics.read(14)), -20);
    EXPECT_EQ(world.supervisor.diagnostics.read(13), 70);
}

TEST(SupervisorModel, CountsOnlyWhatIsOn)
{
    World world;
    EXPECT_EQ(world.supervisor.power.write(1, 0), 0);

    world.pass(1h);

    EXPECT_EQ(world.unit.properties().get("diagnostics.time.0"), "3600");
    EXPECT_EQ(world.unit.properties().get("diagnostics.time.4"), "0"); // CAN
    EXPECT_EQ(world.supervisor.diagnostics.read(7), 60);               // minutes
}

TEST(SupervisorModel, RefusesWordsThatItDoesNotKnow)
{
    World world;

    EXPECT_THROW(world.unit.actions().run("press", {"back"}), BadText);
    EXPECT_THROW(world.unit.actions().run("press", {"front", "gently"}), BadText);
    EXPECT_THROW(world.unit.actions().run("supply", {}), BadText);
}

} // namespace
