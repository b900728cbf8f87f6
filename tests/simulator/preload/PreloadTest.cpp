// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/protocol/UnitFolder.h"
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>

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

TEST_F(PreloadBackend, KeepsAProgramThatStartsAfterTheEndOfItsUnitAwayFromTheMachine)
{
    run("hx-sim start unit");

    const auto outcome = run("hx-sim run --unit unit -- sh -c 'kill -9 " + hostOf("unit") +
                             "; hx-probe get /dev/adc-id 0; hx-probe try /HXAUX_STARTED_LATE;"
                             " cp /dev/null /opt/etc/x; cat /opt/etc/hxaux.ini' 2>&1");

    EXPECT_THAT(outcome, outputMatches("stopped.*Input/output error.*free.*/opt/etc/x': Input/output error"
                                       ".*hxaux.ini: Input/output error"));
    EXPECT_FALSE(std::filesystem::exists("/dev/shm/sem.HXAUX_STARTED_LATE"));
}

class SemaphoresOfAStoppedUnit : public UnitFixture {
protected:
    /// The unit's in the machine's directory of semaphores.
    [[nodiscard]] int count() const
    {
        const std::string mark = hxsim::UnitFolder::semaphorePrefix(hxsim::UnitFolder::markOf(folderOf("unit")));
        int found = 0;
        for (const auto& entry : std::filesystem::directory_iterator{"/dev/shm"})
            found += entry.path().filename().string().starts_with("sem." + mark.substr(1)) ? 1 : 0;
        return found;
    }
    /// A program that creates a semaphore once this command has stopped the unit.
    static hxtest::Outcome createLate(const std::string& command)
    {
        return run("hx-sim run --unit unit -- hx-probe try-late /dev/adc-id /HXAUX_PROBE 2>&1 | (read line; " +
                   command + " >&2; cat)");
    }
};

TEST_F(SemaphoresOfAStoppedUnit, AreNotLeftByAProgramThatCreatesThemLate)
{
    run("hx-sim start unit");

    EXPECT_THAT(createLate("hx-sim stop unit"), outputMatches("free"));

    EXPECT_EQ(count(), 0);
}

TEST_F(SemaphoresOfAStoppedUnit, AreRemovedAfterItsHostWasKilled)
{
    run("hx-sim start unit");

    EXPECT_THAT(createLate("kill -9 " + hostOf("unit")), outputMatches("free"));

    EXPECT_EQ(count(), 1) << "the next command removes it";
    run("hx-sim list");
    EXPECT_EQ(count(), 0);
}

TEST_F(SemaphoresOfAStoppedUnit, AreNotLeftWhileItStops)
{
    run("hx-sim start unit");
    std::filesystem::remove(folderOf("unit") + "/socket"); // the first that it removes

    run("hx-sim run --unit unit -- hx-probe try /HXAUX_PROBE");

    EXPECT_EQ(count(), 0);
    kill(std::stoi(hostOf("unit")), SIGKILL);
}

TEST_F(PreloadBackend, ShortensAScaledSleep)
{
    run("hx-sim start unit --scale 1000");

    EXPECT_THAT(run("hx-sim run --unit unit -- timeout 20 hx-probe sleep 60"), statusIs(0));

    EXPECT_THAT(run("hx-sim log --unit unit"), outputMatches("sleep 60000 ms"));
}

} // namespace
