// SPDX-License-Identifier: LicenseRef-HXAux
// A host that records what programs ask, in this process and without programs.
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "simulator/server/Host.h"
#include "simulator/server/HostCommands.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;
using modeltest::refusalOf;
using testing::HasSubstr;

namespace {

constexpr int kConnection = 5;

class HostRecordTest : public testing::Test {
protected:
    HostRecordTest()
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
        host = std::make_unique<Host>("recorded", 1);
    }
    ~HostRecordTest() override
    {
        host.reset();
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    std::string written() const
    {
        std::ostringstream text;
        text << std::ifstream{path}.rdbuf();
        return text.str();
    }
    void openAndClose(const std::string& device)
    {
        const Caller caller{getpid(), 1};
        const auto opened = host->calls().open(caller, device, O_RDWR);
        host->calls().close(caller, *opened.file);
    }

    const TemporaryFolder scratch{};
    std::string path = scratch.path() + "/calls";
    std::unique_ptr<Host> host{};

private:
    std::string before_;
};

TEST_F(HostRecordTest, WritesWhatTheUnitLacksAndItsFilesFirst)
{
    host->describe("absent = /dev/buzzer\nabsent = libjida.so");
    std::ofstream{host->folder() + "/files/opt/etc/hxaux.ini"} << "A=1\n";

    host->record(kConnection, path, getpid());

    EXPECT_EQ(written(), "hx-sim recording 1\n"
                         "absent /dev/buzzer\n"
                         "absent libjida.so\n"
                         "file /opt/etc/hxaux.ini \"A=1\\n\"\n");
}

TEST_F(HostRecordTest, WritesCallsUntilItsEnd)
{
    openAndClose("/dev/backlight");
    host->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");

    EXPECT_EQ(host->endRecord(kConnection), 2U);
    openAndClose("/dev/frontled");

    EXPECT_THAT(written(), HasSubstr(" /dev/buzzer open rdwr\n"));
    EXPECT_THAT(written(), HasSubstr(" /dev/buzzer close\n"));
    EXPECT_THAT(written(), testing::Not(HasSubstr("backlight")));
    EXPECT_THAT(written(), testing::Not(HasSubstr("frontled")));
}

TEST_F(HostRecordTest, EndsForWhoAskedForItOnly)
{
    host->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");

    EXPECT_EQ(host->endRecord(kConnection + 1), 0U);
    EXPECT_EQ(refusalOf([&] { host->record(kConnection, path + "2", getpid()); }),
              "this unit is being recorded already");
    EXPECT_EQ(host->endRecord(kConnection), 2U);
    EXPECT_EQ(refusalOf([&] { host->record(kConnection, path + "2", getpid()); }), "");
}

TEST_F(HostRecordTest, WritesIntoPlainFilesOnly)
{
    EXPECT_EQ(refusalOf([&] { host->record(kConnection, scratch.path(), getpid()); }),
              scratch.path() + " is a folder, not a file");
    EXPECT_EQ(refusalOf([&] { host->record(kConnection, "/dev/null", getpid()); }),
              "/dev/null is a device, not a file");
    openAndClose("/dev/buzzer");
    EXPECT_EQ(host->endRecord(kConnection), 0U) << "nothing is recorded";
}

TEST_F(HostRecordTest, MakesWhatAReplayUnderstands)
{
    host->record(kConnection, path, getpid());
    openAndClose("/dev/buzzer");
    (void)host->endRecord(kConnection);

    const Recording recording = Recording::parse(written(), host->unit());

    ASSERT_EQ(recording.calls.size(), 2U);
    EXPECT_EQ(recording.calls[0].entry.subject, "/dev/buzzer");
    EXPECT_EQ(recording.calls[0].process, 1);
}

TEST_F(HostRecordTest, KeepsMemoriesInAFolderOnly)
{
    EXPECT_EQ(refusalOf([&] { host->keepIn("/dev/null"); }), "cannot keep memories in /dev/null");
    EXPECT_EQ(refusalOf([&] { host->keepIn(scratch.path() + "/kept"); }), "");
}

} // namespace
