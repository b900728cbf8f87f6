// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <sstream>

namespace {

using hxtest::outputIs;
using hxtest::outputMatches;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

using PreloadBackend = UnitFixture;

TEST_F(PreloadBackend, BringsAnUnmodifiedProgramToAUnit)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=1241 -- hx-probe get /dev/adc-id 0"),
                AllOf(outputIs("1241\n"), statusIs(0)));
}

TEST_F(PreloadBackend, HasNoDeviceThatTheDescriptionRemoves)
{
    EXPECT_THAT(run("hx-sim run --set absent=/dev/adc-id -- hx-probe get /dev/adc-id 0"),
                AllOf(outputIs("No such file or directory\n"), statusIs(1)));
}

TEST_F(PreloadBackend, ServesProgramsOfBothAbisAtOnce)
{
    run("hx-sim start unit --set voltage.0.raw=77");
    std::istringstream probes{HX_PROBES};
    for (std::string probe; probes >> probe;) {
        if (access(probe.c_str(), X_OK) != 0)
            GTEST_SKIP() << probe << " is not built";
        EXPECT_THAT(run("hx-sim run --unit unit -- " + probe + " get /dev/adc-id 0"), outputIs("77\n"));
    }
}

TEST_F(PreloadBackend, SharesAnOpenFileBetweenParentAndChild)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=5 -- hx-probe fork-get /dev/adc-id 0"), outputIs("5\n5\n"));
}

TEST_F(PreloadBackend, KnowsAFileThatAProgramWasStartedWith)
{
    EXPECT_THAT(run("hx-sim run --set voltage.0.raw=6 -- sh -c 'hx-probe get-on 3 0 3<>/dev/adc-id' 2>/dev/null"),
                outputIs("6\n"));
}

TEST_F(PreloadBackend, ServesALibraryThatUsesADeviceWhileTheProgramIsLoaded)
{
    EXPECT_THAT(run("HX_EARLY=/dev/adc-id hx-sim run --set voltage.0.raw=8 -- hx-probe get-early 0"), outputIs("8\n"));
}

TEST_F(PreloadBackend, GivesAttributesToStreams)
{
    EXPECT_THAT(run("hx-sim run --set version.os=9.8.7.6 -- hx-probe read /etc/firmware.ver"), outputIs("9.8.7.6\n"));
}

TEST_F(PreloadBackend, SharesLocksAmongTheProgramsOfAUnit)
{
    run("hx-sim start unit");

    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe try /HXAUX_PROBE"), outputIs("free\n"));
    EXPECT_THAT(run("hx-sim run --unit unit -- hx-probe try /HXAUX_PROBE"), outputIs("taken\n"));
}

TEST_F(PreloadBackend, KeepsTheLocksOfUnitsApart)
{
    EXPECT_THAT(run("hx-sim run -- hx-probe try /HXAUX_PROBE"), outputIs("free\n"));
    EXPECT_THAT(run("hx-sim run -- hx-probe try /HXAUX_PROBE"), outputIs("free\n"));
}

TEST_F(PreloadBackend, ClosesTheFilesOfAKilledProgram)
{
    run("hx-sim start unit");

    run("hx-sim run --unit unit -- timeout -s KILL 1 hx-probe hold /dev/adc-id");

    EXPECT_THAT(run("hx-sim log --unit unit"), outputMatches("/dev/adc-id open rdwr\n.*/dev/adc-id close"));
}

TEST_F(PreloadBackend, NotifiesAProgramOnceThatItsUnitHasStopped)
{
    run("hx-sim start unit");

    const auto outcome = run("(sleep 1; kill -9 " + hostOf("unit") +
                             ") & "
                             "hx-sim run --unit unit -- hx-probe repeat /dev/adc-id 0; wait");

    EXPECT_EQ(outcome.output, "repeating\nInput/output error\nInput/output error\n");
    EXPECT_EQ(outcome.error, "hx-sim: the simulated unit has stopped; its devices answer EIO from now on\n");
}

TEST_F(PreloadBackend, ShortensAScaledSleep)
{
    run("hx-sim start unit --scale 1000");

    EXPECT_THAT(run("hx-sim run --unit unit -- timeout 20 hx-probe sleep 60"), statusIs(0));

    EXPECT_THAT(run("hx-sim log --unit unit"), outputMatches("sleep 60000 ms"));
}

} // namespace
