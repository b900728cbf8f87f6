// SPDX-License-Identifier: LicenseRef-HXAux
// A running unit without its server: time, recordings, what is kept.
#include "simulator/server/RunningUnit.h"

#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::refusalOf;
using testing::HasSubstr;

namespace {

constexpr int kConnection = 5;

class RunningUnitTest : public testing::Test {
protected:
    RunningUnitTest()
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
        running = std::make_unique<RunningUnit>("recorded", Pace{});
    }
    ~RunningUnitTest() override
    {
        running.reset();
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    std::string written() const { return fileContent(path); }
    void openAndClose(const std::string& device)
    {
        const Caller caller{getpid(), 1};
        const auto opened = running->calls().open(caller, device, O_RDWR);
        running->calls().close(caller, *opened.file);
    }

    const TemporaryFolder scratch{};
    std::string path = scratch.path() + "/calls";
    std::unique_ptr<RunningUnit> running{};

private:
    std::string before_;
};

TEST_F(RunningUnitTest, WritesWhatTheUnitLacksAndItsFilesFirst)
{
    running->describe("absent = /dev/buzzer\nabsent = libjida.so");
    std::ofstream{running->folder() + "/files/opt/etc/hxaux.ini"} << "A=1\n";

    running->record(kConnection, path, getpid());

    EXPECT_EQ(written(), "hx-sim recording 1\n"
                         "absent /dev/buzzer\n"
                         "absent libjida.so\n"
                         "file /opt/etc/hxaux.ini \"A=1\\n\"\n");
}

TEST_F(RunningUnitTest, WritesCallsUntilItsEnd)
{
    openAndClose("/dev/backlight");
    running->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");

    EXPECT_EQ(running->endRecord(kConnection), 2U);
    openAndClose("/dev/frontled");

    EXPECT_THAT(written(), HasSubstr(" /dev/buzzer open rdwr\n"));
    EXPECT_THAT(written(), HasSubstr(" /dev/buzzer close\n"));
    EXPECT_THAT(written(), testing::Not(HasSubstr("backlight")));
    EXPECT_THAT(written(), testing::Not(HasSubstr("frontled")));
}

TEST_F(RunningUnitTest, EndsForWhoAskedForItOnly)
{
    running->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");

    EXPECT_EQ(running->endRecord(kConnection + 1), 0U);
    EXPECT_EQ(refusalOf([&] { running->record(kConnection, path + "2", getpid()); }),
              "this unit is being recorded already");
    EXPECT_EQ(running->endRecord(kConnection), 2U);
    EXPECT_EQ(refusalOf([&] { running->record(kConnection, path + "2", getpid()); }), "");
}

TEST_F(RunningUnitTest, WritesIntoPlainFilesOnly)
{
    EXPECT_EQ(refusalOf([&] { running->record(kConnection, scratch.path(), getpid()); }),
              scratch.path() + " is a folder, not a file");
    EXPECT_EQ(refusalOf([&] { running->record(kConnection, "/dev/null", getpid()); }),
              "/dev/null is a device, not a file");
    openAndClose("/dev/buzzer");
    EXPECT_EQ(running->endRecord(kConnection), 0U) << "nothing is recorded";
}

TEST_F(RunningUnitTest, MakesWhatAReplayUnderstands)
{
    running->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");
    (void)running->endRecord(kConnection);

    const Recording recording = Recording::parse(written(), running->unit());

    ASSERT_EQ(recording.calls.size(), 2U);
    EXPECT_EQ(recording.calls[0].entry.subject, "/dev/buzzer");
    EXPECT_EQ(recording.calls[0].process, 1);
}

TEST_F(RunningUnitTest, FollowsTheClockOfTheMachine)
{
    const Time before = running->now();
    running->advance();

    EXPECT_GE(running->unit().clock().now(), before);
    EXPECT_EQ(running->until(before).count(), 0) << "it has passed";
    EXPECT_GT(running->until(running->now() + 24h), 1s);
}

TEST_F(RunningUnitTest, ShowsProgramsTheMachineWhenItStandsAside)
{
    unsetenv("HXSIM_UNIT");
    running->withdraw();

    EXPECT_THAT(running->pathList(), HasSubstr("F /opt/etc/hxaux.ini /opt/etc/hxaux.ini\n"));
    EXPECT_THAT(running->pathList(), testing::EndsWith("N \nR \n"));
}

TEST_F(RunningUnitTest, KeepsMemoriesInAFolderOnly)
{
    EXPECT_EQ(refusalOf([&] { running->keepIn("/dev/null"); }), "cannot keep memories in /dev/null");
    EXPECT_EQ(refusalOf([&] { running->keepIn(scratch.path() + "/kept"); }), "");
}

} // namespace
