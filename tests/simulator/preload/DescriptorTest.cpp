// SPDX-License-Identifier: LicenseRef-HXAux
// A unit's device against one of the kernel, and what processes do with descriptors among each other.
#include "testing/SimulatedUnit.h"
#include "tests/simulator/hx-sim/UnitFixture.h"
#include "tests/simulator/preload/DescriptorRules.h"
#include "tests/simulator/preload/Storm.h"

#include <sstream>

namespace {

using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

using Descriptors = UnitFixture;

/// The kernel's results for a device of its own.
std::string kernelsAnswers()
{
    return run("hx-probe rules zero").output;
}

/// The same for terminals.
std::string kernelsTerminalAnswers()
{
    return run("hx-probe terminal-rules ''").output;
}

constexpr char kStorm[] = "board 1\nanswered 3000\nread 200\nslept 1\n";

TEST_F(Descriptors, AreTheKernelsInATestProgram)
{
    std::ostringstream results;
    {
        SimulatedUnit unit;
        unit.expectOtherProcesses();
        playDescriptorRules("adc-id", results);
    }

    EXPECT_EQ(results.str(), kernelsAnswers());
}

TEST_F(Descriptors, AreTheKernelsInAProgramOnAUnit)
{
    EXPECT_EQ(run("hx-sim run -- hx-probe rules adc-id").output, kernelsAnswers());
}

TEST_F(Descriptors, HaveTheTerminalSettingsOfTheirDeviceInATestProgram)
{
    std::ostringstream results;
    {
        SimulatedUnit unit;
        unit.expectOtherProcesses();
        playTerminalRules("/dev/ttyS0", results);
    }

    EXPECT_EQ(results.str(), kernelsTerminalAnswers());
}

TEST_F(Descriptors, HaveTheTerminalSettingsOfTheirDeviceInAProgramOnAUnit)
{
    EXPECT_EQ(run("hx-sim run -- hx-probe terminal-rules /dev/ttyS0").output, kernelsTerminalAnswers());
}

TEST_F(Descriptors, HaveTheTerminalSettingsOfTheirDeviceInEachProgramThatInheritsThem)
{
    EXPECT_THAT(run("hx-sim run -- sh -c 'exec 0<>/dev/ttyS0; stty 115200; stty speed'"), outputIs("115200\n"));
}

TEST_F(Descriptors, HaveFreshTerminalSettingsAfterTheLastClose)
{
    EXPECT_THAT(run("hx-sim run -- sh -c 'exec 0<>/dev/ttyS0; stty 115200; exec 0</dev/null; exec 0<>/dev/ttyS0; "
                    "stty speed'"),
                outputIs("9600\n"));
}

TEST_F(Descriptors, ArriveFromAChildThatHasEnded)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=7 -- hx-probe share /dev/adc-id 0"), outputIs("7\n"));
}

TEST_F(Descriptors, OutliveTheProcessThatOpenedThem)
{
    EXPECT_THAT(run("hx-sim start unit --set voltage.0.raw=8; "
                    "hx-sim run --unit unit -- sh -c 'hx-probe outlive /dev/adc-id 0 | cat'"),
                outputIs("8\n"));
}

TEST_F(Descriptors, AreClosedByTheChildrenOfABusyProgram)
{
    EXPECT_THAT(run("timeout 100 hx-sim run -- hx-probe forks /dev/adc-id"), outputIs("200\n"));
}

TEST_F(Descriptors, AreClosedOnExecWhereTheProgramSaysSo)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=9 -- hx-probe exec /dev/adc-id 0"),
                outputIs("Bad file descriptor\n9\n"));
}

TEST_F(Descriptors, CloseTheFileWithTheLastOfThem)
{
    run("hx-sim start unit");

    run("hx-sim run --unit unit -- hx-probe fork-get /dev/adc-id 0");

    EXPECT_THAT(run("hx-sim log"),
                outputMatches("open rdwr\n.*get 0 -> [0-9]+\n.*get 0 -> [0-9]+\n.*/dev/adc-id close\n$"));
}

TEST_F(Descriptors, AreWhatAShellRedirects)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=6 -- sh -c 'hx-probe get-on 0 0 < /dev/adc-id'"), outputIs("6\n"));
    const auto refused = run("hx-sim run -- sh -c 'cat < /dev/adc-id'");
    EXPECT_EQ(refused.error, "cat: -: Invalid argument\n"); // the device cannot be read
}

TEST_F(Descriptors, AreReadInParts)
{
    EXPECT_THAT(run("hx-sim run --set version.os=9.8.7.6 -- hx-probe readv /etc/firmware.ver"),
                outputIs("6 9.|8.7.\n"));
}

TEST_F(Descriptors, AreFoundByThePathsThatPeopleType)
{
    EXPECT_THAT(run("hx-sim run -- ls /dev/adc-id"), AllOf(outputIs("/dev/adc-id\n"), statusIs(0)));
    EXPECT_THAT(run("hx-sim run -- sh -c 'cd /dev && ls -l adc-id'"),
                AllOf(outputMatches("^crw-rw-rw-.* adc-id\n$"), hxtest::errorIs("")));
    EXPECT_THAT(run("hx-sim run -- sh -c 'cd /tmp && test -c ../dev/adc-id && realpath ../dev/adc-id'"),
                outputIs("/dev/adc-id\n"));
}

TEST_F(Descriptors, SurviveAStormOfSignalsInATestProgram)
{
    std::ostringstream results;
    {
        SimulatedUnit unit;
        playStorm(results);
    }

    EXPECT_EQ(results.str(), kStorm);
}

TEST_F(Descriptors, SurviveAStormOfSignalsInAProgramOnAUnit)
{
    EXPECT_THAT(run("timeout 100 hx-sim run -- hx-probe storm"), outputIs(kStorm));
}

TEST_F(Descriptors, SaySoWhenTheUnitMayNotBeReached)
{
    run("hx-sim start unit");
    const auto outcome = run("chmod 0 " + folderOf("unit") + "/socket; hx-sim run --unit unit -- " +
                             hxtest::boundByPermissions() + "hx-probe get /dev/adc-id 0");

    EXPECT_EQ(outcome.output, "Permission denied\n");
    EXPECT_EQ(outcome.error, "hx-sim: this program may not reach the simulated unit: Permission denied\n");
}

} // namespace
