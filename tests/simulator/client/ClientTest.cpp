// SPDX-License-Identifier: LicenseRef-HXAux
// The C++ client on units that hx-sim hosts, through the installed headers alone.
#include "testing/Command.h"
#include <hx-sim/gtest.h>

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using hxsim::Error;
using testing::HasSubstr;

namespace {

/// Without regard to what is installed on this machine.
const bool kHasProgram = setenv("HX_SIM", HXSIM_PROGRAM, 1) == 0 &&
                         setenv("PATH", (HXAUX_TEST_PATH ":" + std::string{std::getenv("PATH")}).c_str(), 1) == 0;

std::string errorOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const Error& error) {
        return error.what();
    }
    return "";
}

class Client : public hxsim::UnitTest {};

TEST_F(Client, SetsAndGetsProperties)
{
    unit.set("light", 250);
    unit.set("temperature.pm.0", -3);
    unit.set("light.infrared", 0.25);
    unit.set("led.startup", true);
    unit.set("led.color", "0 15 0");

    EXPECT_EQ(unit.get("light"), "250");
    EXPECT_EQ(unit.get("temperature.pm.0"), "-3.000");
    EXPECT_EQ(unit.get("light.infrared"), "0.25");
    EXPECT_EQ(unit.get("led.startup"), "on");
    EXPECT_EQ(unit.get("led.color"), "0 15 0");
}

TEST_F(Client, ThrowsWhatTheUnitRefuses)
{
    EXPECT_EQ(errorOf([&] { unit.set("ligth", 3); }), "the unit has no property 'ligth'; did you mean 'light'?");
    EXPECT_THAT(errorOf([&] { unit.act("tuch 3"); }), HasSubstr("did you mean 'touch'?"));
    EXPECT_THAT(errorOf([&] { (void)unit.check("light == 3"); }), HasSubstr("did you mean '='?"));
}

TEST_F(Client, WaitsForWhatAProgramDoes)
{
    hxsim::Program program = unit.run({"hxaux", "backlight", "set", "40"});

    unit.waitFor("backlight.level", 40, 60s);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Client, ThrowsWhatWasSeenWhenItWaitsInVain)
{
    EXPECT_EQ(errorOf([&] { unit.waitFor("backlight.level", 41, 10ms); }),
              "expected backlight.level = \"41\" within 0.01s; backlight.level was 128");
}

TEST_F(Client, CountsWhatHappenedSinceTheLastAction)
{
    hxsim::Program program = unit.run({"hxaux", "backlight", "set", "40"});
    EXPECT_EQ(program.wait(), 0);

    EXPECT_TRUE(sees("request /dev/backlight 0x40010003 00 28 within 60s"));
    EXPECT_TRUE(sees("backlight.level = 40 within 60s"));
    unit.set("light", 3);
    EXPECT_FALSE(sees("request /dev/backlight * within 10ms"));
}

TEST_F(Client, CountsFromTheMomentForWhichItWaited)
{
    hxsim::Program program = unit.run({"hxaux", "backlight", "set", "40"});
    unit.waitFor("backlight.level", 40, 60s);

    EXPECT_TRUE(sees("never request /dev/backlight 0x40010003 for 500ms"));
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Client, FindsEarlierCallsInTheLog)
{
    EXPECT_EQ(unit.run({"hxaux", "backlight", "set", "40"}).wait(), 0);
    unit.set("light", 3);

    EXPECT_TRUE(sees("request /dev/backlight 0x40010003 00 28"));
    EXPECT_FALSE(sees("request /dev/backlight 0x40010003 00 29"));
}

TEST_F(Client, SeesTheOutputOfAProgram)
{
    hxsim::Program program = unit.run({"sh", "-c", "hxaux voltage 0; sleep 100"});

    EXPECT_TRUE(sees("output 23.996 within 60s"));
    EXPECT_TRUE(program.isRunning());
    program.stop();
    EXPECT_FALSE(program.isRunning());
}

TEST_F(Client, HasTheWholeOutputOfAProgramThatHasEnded)
{
    hxsim::Program program = unit.run({"sh", "-c", "seq 1 20000; echo error >&2"});
    program.wait();

    EXPECT_THAT(program.output(), AllOf(testing::StartsWith("1\n2\n"), testing::EndsWith("\n20000\nerror\n")));
}

TEST_F(Client, WaitsForTheEndOfAProgramAsLongAsItIsTold)
{
    hxsim::Program program = unit.run({"sh", "-c", "sleep 1000"});

    EXPECT_EQ(program.wait(10ms), std::nullopt);
    EXPECT_EQ(program.wait(-1ms), std::nullopt);
    std::thread other{[&] { program.stop(); }};
    EXPECT_EQ(program.wait(60s), 128 + SIGTERM);
    other.join();
    EXPECT_EQ(program.wait(0ms), 128 + SIGTERM);
}

TEST_F(Client, HasTheOutputOfARunningProgramUntilNow)
{
    hxsim::Program program = unit.run({"sh", "-c", "echo begins; sleep 1000"});

    EXPECT_TRUE(sees("output begins within 60s"));
    EXPECT_EQ(program.output(), "begins\n");
}

TEST_F(Client, EndsAWaitWithTheExceptionOfAHandlerOfSignals)
{
    struct Interrupted {};
    hxsim::onSignal([] { throw Interrupted{}; });

    EXPECT_THROW(unit.waitFor("light", 7, 20s), Interrupted);
    EXPECT_THROW(unit.run({"sleep", "1000"}).wait(), Interrupted);

    hxsim::onSignal({});
    unit.set("light", 7);
    unit.waitFor("light", 7, 60s); // the connection serves the next wait
}

TEST_F(Client, InjectsAndClearsFailures)
{
    unit.fail("/dev/adc-id", "get 0", "EIO", 1);
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 1);
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 0);

    unit.fail("/dev/adc-id", "open");
    unit.unfail();
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 0);
}

TEST_F(Client, RemovesAndRestoresADevice)
{
    unit.remove("/dev/adc-id");
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 1);
    unit.restore("/dev/adc-id");
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 0);
}

TEST_F(Client, SleepsInTheTimeOfTheUnit)
{
    const auto before = unit.time();

    unit.sleep(50ms);

    EXPECT_GE(unit.time() - before, 50ms);
}

TEST_F(Client, ShowsTheLog)
{
    EXPECT_EQ(unit.run({"hxaux", "voltage", "0"}).wait(), 0);

    EXPECT_THAT(unit.log(), HasSubstr("/dev/adc-id get 0"));
}

TEST(ClientUnit, BeginsAsItsOptionsSay)
{
    hxsim::Unit unit{{{"light = 7", "absent = /dev/adc-id"}, 100}};

    EXPECT_EQ(unit.get("light"), "7");
    unit.sleep(10s);
    EXPECT_GE(unit.time(), 10s);
}

/// A unit whose time is virtual.
class VirtualUnit : public testing::Test {
protected:
    hxsim::Unit unit{{{}, 1, true}};
};

TEST_F(VirtualUnit, PassesTimeAtOnceWhileTheTestWaitsForIt)
{
    hxsim::Program program = unit.run({"sh", "-c", "sleep 3600; hxaux backlight set 40; sleep 1000000"});

    unit.expect("never backlight.level = 40 for 3599s");
    unit.waitFor("backlight.level", 40, 3700s);
    EXPECT_TRUE(program.isRunning());
    EXPECT_LT(unit.time(), 3700s);
}

TEST_F(VirtualUnit, StandsStillWhileTheTestDoesNotWaitForIt)
{
    hxsim::Program program = unit.run({"sh", "-c", "echo begins; sleep 3600"});
    ASSERT_TRUE(unit.wait("output begins within 60s"));
    const auto before = unit.time();

    std::this_thread::sleep_for(50ms);

    EXPECT_EQ(unit.time(), before);
    EXPECT_TRUE(program.isRunning());
}

TEST_F(VirtualUnit, PassesTimeWhileTheTestWaitsForTheEndOfAProgram)
{
    hxsim::Program program = unit.run({"sleep", "3600"});

    EXPECT_EQ(program.wait(), 0);
    EXPECT_GE(unit.time(), 3600s);
}

TEST_F(VirtualUnit, PassesTimeWhileAStoppedProgramCleansUp)
{
    hxsim::Program program =
        unit.run({"sh", "-c", "trap 'sleep 3600; echo saved; exit 0' TERM; echo begins; sleep 1000000 & wait"});
    ASSERT_TRUE(unit.wait("output begins within 60s"));

    program.stop();

    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.output(), "begins\nsaved\n");
}

TEST_F(VirtualUnit, DoesNotWaitForAClientThatWasKilled)
{
    int attached[2];
    ASSERT_EQ(pipe(attached), 0);
    const pid_t child = fork();
    if (child == 0) {
        const hxsim::Unit other = hxsim::Unit::attach(unit.name());
        (void)!write(attached[1], "", 1);
        for (;;) { // it computes
        }
    }
    char byte = 0;
    ASSERT_EQ(read(attached[0], &byte, 1), 1);
    close(attached[0]);
    close(attached[1]);
    hxsim::Program program = unit.run({"sleep", "3600"});
    EXPECT_EQ(program.wait(50ms), std::nullopt);

    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);

    EXPECT_EQ(program.wait(), 0);
}

TEST(ClientUnit, RefusesAScaleOfVirtualTime)
{
    EXPECT_THAT(errorOf([] { hxsim::Unit{{{}, 2, true}}; }), HasSubstr("--scale and --virtual exclude each other"));
}

TEST(ClientUnit, ThrowsWhenItCannotStart)
{
    EXPECT_THAT(errorOf([] { hxsim::Unit{{{"ligth = 7"}, 1}}; }), HasSubstr("did you mean 'light'?"));
    EXPECT_THAT(errorOf([] { (void)hxsim::Unit::attach("no-such-unit"); }), HasSubstr("no unit named 'no-such-unit'"));
}

TEST(ClientUnit, IsSharedByThoseThatAttachToIt)
{
    hxsim::Unit unit;
    hxsim::Unit other = hxsim::Unit::attach(unit.name());

    other.set("light", 5);

    EXPECT_TRUE(unit.check("light = 5 within 60s"));
}

TEST(ClientUnit, StopsWithItsProcessHoweverItEnds)
{
    int name[2];
    ASSERT_EQ(pipe(name), 0);
    const pid_t child = fork();
    if (child == 0) {
        const hxsim::Unit unit;
        (void)!write(name[1], unit.name().data(), unit.name().size());
        raise(SIGKILL);
    }
    close(name[1]);
    std::string text(100, '\0');
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, read(name[0], text.data(), text.size()))));
    close(name[0]);
    waitpid(child, nullptr, 0);

    const hxtest::Outcome gone =
        hxtest::run("for i in $(seq 600); do hx-sim list | grep -qx " + text + " || exit 0; sleep 0.1; done; exit 1");

    EXPECT_THAT(gone, hxtest::statusIs(0));
}

} // namespace
