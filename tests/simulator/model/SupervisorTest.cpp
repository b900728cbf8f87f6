// SPDX-License-Identifier: LicenseRef-HXAux
// The simulated supervisor: refused values, power requests in model time, counters.
#include "simulator/model/Supervisor.h"

#include "simulator/model/Text.h"

#include <gmock/gmock.h>

namespace supervisor_test {

using namespace hxsim;
using namespace std::chrono_literals;

namespace {

struct Fixture {
    Unit unit;
    Supervisor& supervisor = unit.get<Supervisor>();

    void pass(Time time) { unit.clock().advanceTo(unit.clock().now() + time); }
    std::string state() { return unit.properties().get("power.state"); }
    int transition() { return supervisor.power.read(4); }
};

TEST(SupervisorModel, RefusesSettingsThatTheFirmwareDoesNotKnow)
{
    Fixture fixture;
    SupervisorRegisters& settings = fixture.supervisor.configuration;

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
    Fixture fixture;

    EXPECT_EQ(fixture.supervisor.power.write(7, 8), 0);

    EXPECT_EQ(fixture.supervisor.power.read(7), 1);
}

TEST(SupervisorModel, RefusesWritesToMeasuredValues)
{
    Fixture fixture;

    for (const int number : {0, 3, 12, 24})
        EXPECT_LT(fixture.supervisor.diagnostics.write(static_cast<std::uint8_t>(number), 7), 0) << number;
    EXPECT_EQ(fixture.supervisor.diagnostics.write(32, 7), 0); // free registers begin here
}

TEST(SupervisorModel, ClearsItsErrorByAOneOnly)
{
    Fixture fixture;
    fixture.unit.properties().set("diagnostics.error", "16");

    EXPECT_LT(fixture.supervisor.diagnostics.write(25, 2), 0);
    EXPECT_EQ(fixture.supervisor.diagnostics.read(4), 16);
    EXPECT_EQ(fixture.supervisor.diagnostics.write(25, 1), 0);
    EXPECT_EQ(fixture.supervisor.diagnostics.read(4), 0);
}

TEST(SupervisorModel, RequestsAShortPressWhenTheButtonIsReleased)
{
    Fixture fixture;
    fixture.unit.actions().run("press", {"front"});

    fixture.pass(199ms);
    EXPECT_EQ(fixture.transition(), 0);
    fixture.pass(2ms);
    EXPECT_EQ(fixture.transition(), 1); // short, suspend
}

TEST(SupervisorModel, RequestsALongPressAtItsTime)
{
    Fixture fixture;
    fixture.unit.actions().run("press", {"front", "long"});

    fixture.pass(1999ms);
    EXPECT_EQ(fixture.transition(), 0);
    fixture.pass(2ms);
    EXPECT_EQ(fixture.transition(), 4); // long, shut down
}

TEST(SupervisorModel, DoesNothingForAPressWithoutAction)
{
    Fixture fixture;
    fixture.unit.properties().set("config.short-press", "0");

    fixture.unit.actions().run("press", {"front"});
    fixture.pass(2min);

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.transition(), 0);
}

TEST(SupervisorModel, ExecutesARequestTwoSecondsAfterItsAcknowledgement)
{
    Fixture fixture;
    fixture.unit.actions().run("press", {"front", "long"});
    fixture.pass(10s);

    EXPECT_EQ(fixture.supervisor.power.write(4, 0), 0);
    fixture.pass(1999ms);
    EXPECT_EQ(fixture.state(), "running");
    fixture.pass(2ms);

    EXPECT_EQ(fixture.state(), "off");
    EXPECT_EQ(fixture.supervisor.power.read(1), 0); // CAN
    EXPECT_EQ(fixture.supervisor.diagnostics.read(3), 0x55);
}

TEST(SupervisorModel, ExecutesAnUnacknowledgedRequestAfterAMinute)
{
    Fixture fixture;
    fixture.unit.actions().run("signal", {});

    fixture.pass(500ms + 59999ms);
    EXPECT_EQ(fixture.transition(), 6); // signal, shut down
    fixture.pass(1ms);

    EXPECT_EQ(fixture.state(), "off");
    EXPECT_EQ(fixture.supervisor.diagnostics.read(3), 0xAA);
}

TEST(SupervisorModel, IgnoresASignalThatIsTooShort)
{
    Fixture fixture;

    fixture.unit.actions().run("signal", {"499"});
    fixture.pass(10s);

    EXPECT_EQ(fixture.transition(), 0);
}

TEST(SupervisorModel, WakesASuspendedUnitByTheButton)
{
    Fixture fixture;
    fixture.unit.actions().run("press", {"front"});
    fixture.pass(2min);
    EXPECT_EQ(fixture.state(), "suspended");

    fixture.unit.actions().run("press", {"front"});

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.supervisor.power.read(1), 1);
}

TEST(SupervisorModel, SwitchesASuspendedUnitOffAfterItsTime)
{
    Fixture fixture;
    fixture.unit.properties().set("config.suspend-time", "10");
    fixture.unit.actions().run("press", {"front"});
    fixture.pass(62s);
    EXPECT_EQ(fixture.state(), "suspended");

    fixture.pass(10min);

    EXPECT_EQ(fixture.state(), "off");
}

struct Off : Fixture {
    Off()
    {
        unit.actions().run("supply", {"off"});
        unit.actions().run("supply", {"on"});
    }
};

TEST(SupervisorModel, StartsByTheButtonAndCountsIt)
{
    Off fixture;
    EXPECT_EQ(fixture.state(), "off");

    fixture.unit.actions().run("press", {"front"});

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.supervisor.diagnostics.read(12), 43);
    EXPECT_EQ(fixture.supervisor.diagnostics.read(2), 0x55);
}

TEST(SupervisorModel, StartsOnlyByWhatMayStartIt)
{
    Off fixture;
    fixture.unit.properties().set("config.trigger", "2");

    fixture.unit.actions().run("press", {"front"});
    EXPECT_EQ(fixture.state(), "off");
    fixture.unit.actions().run("signal", {});
    fixture.pass(1s);

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.supervisor.diagnostics.read(2), 0xAA);
}

TEST(SupervisorModel, StartsByThePowerIfItIsSetTo)
{
    Fixture fixture;
    fixture.unit.properties().set("config.power-on", "1");

    fixture.unit.actions().run("supply", {"off"});
    EXPECT_EQ(fixture.state(), "off");
    fixture.unit.actions().run("supply", {"on"});

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.supervisor.diagnostics.read(2), 0x0F);
}

TEST(SupervisorModel, DoesNotStartBelowItsVoltage)
{
    Off fixture;
    fixture.unit.properties().set("voltage.0", "8.5");
    fixture.unit.actions().run("press", {"front"});
    EXPECT_EQ(fixture.state(), "off");

    fixture.unit.properties().set("voltage.0", "9.5");
    fixture.unit.actions().run("press", {"front"});

    EXPECT_EQ(fixture.state(), "running");
}

TEST(SupervisorModel, HeatsAColdUnitBeforeItStarts)
{
    Off fixture;
    fixture.unit.properties().set("diagnostics.pcb-temp", "-3");
    fixture.unit.actions().run("press", {"front"});
    EXPECT_EQ(fixture.state(), "heating");

    fixture.pass(29s);
    EXPECT_EQ(fixture.state(), "heating");
    fixture.pass(2s);

    EXPECT_EQ(fixture.state(), "running");
    EXPECT_EQ(fixture.unit.properties().get("diagnostics.time.6"), "30");
}

TEST(SupervisorModel, RemembersTheLowestAndHighestTemperature)
{
    Fixture fixture;
    fixture.unit.properties().set("diagnostics.pcb-temp", "-20");
    fixture.unit.properties().set("diagnostics.pcb-temp", "70");

    EXPECT_EQ(static_cast<std::int16_t>(fixture.supervisor.diagnostics.read(14)), -20);
    EXPECT_EQ(fixture.supervisor.diagnostics.read(13), 70);
}

TEST(SupervisorModel, CountsOnlyWhatIsOn)
{
    Fixture fixture;
    EXPECT_EQ(fixture.supervisor.power.write(1, 0), 0);

    fixture.pass(1h);

    EXPECT_EQ(fixture.unit.properties().get("diagnostics.time.0"), "3600");
    EXPECT_EQ(fixture.unit.properties().get("diagnostics.time.4"), "0"); // CAN
    EXPECT_EQ(fixture.supervisor.diagnostics.read(7), 60);               // minutes
}

TEST(SupervisorModel, RefusesWordsThatItDoesNotKnow)
{
    Fixture fixture;

    EXPECT_THROW(fixture.unit.actions().run("press", {"back"}), BadText);
    EXPECT_THROW(fixture.unit.actions().run("press", {"front", "gently"}), BadText);
    EXPECT_THROW(fixture.unit.actions().run("supply", {}), BadText);
}

} // namespace

} // namespace supervisor_test
