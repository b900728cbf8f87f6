// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/FirmwareUpgrade.h"

#include "platform/LinuxWrapper.h"
#include "simulator/model/Microcontroller.h"
#include "testing/FirmwareFile.h"
#include "testing/Named.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "upgrade/FirmwareUpgrade_Imp.h"

#include <algorithm>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Halvix;
using firmware::Bytes;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kLock[] = "HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS";

using Upgrade = Released<FirmwareUpgrade>;

Upgrade makeUpgrade()
{
    return Upgrade{GetFirmwareUpgrade()};
}

/// Whether a start would find the unit's upgrade lock free.
bool lockIsFree()
{
    int lock = 0;
    EXPECT_TRUE(LinuxWrapper::CreateSema(lock, kLock));
    const bool taken = LinuxWrapper::WaitForSema(lock, false);
    if (taken)
        LinuxWrapper::ReleaseSema(lock);
    LinuxWrapper::CloseSema(lock);
    return taken;
}

UpgradeStatus statusOf(const Upgrade& upgrade)
{
    UpgradeStatus status{UpgradeActionReserved, 99, {9, 9, 9}, ERR_NOT_SUPPORTED};
    EXPECT_EQ(upgrade->getUpgradeStatus(&status, false), ERR_SUCCESS);
    return status;
}

/// The peak memory of this process.
long residentPeakKib()
{
    rusage usage{};
    EXPECT_EQ(::getrusage(RUSAGE_SELF, &usage), 0);
    return usage.ru_maxrss;
}

/// Waits for the end of a run in the background.
UpgradeStatus outcomeOf(const Upgrade& upgrade)
{
    UpgradeStatus status{};
    while (status.action != UpgradeActionFinished && status.action != UpgradeActionFailed)
        EXPECT_EQ(upgrade->getUpgradeStatus(&status, true), ERR_SUCCESS);
    return status;
}

struct StartCase : Named {
    eErr (FirmwareUpgrade::*start)(const char* file, bool blocking);
    std::function<std::string(const SimulatedUnit&, const Bytes&)> file;
    bool writes;
    std::vector<std::string> devices;
};

const std::vector<std::string> kSerialLine = {"/dev/ttyS0", "/dev/uart-redir"};
const std::vector<std::string> kFlash = {"/dev/fpgaflash"};

const StartCase kStarts[] = {
    {"SsUpgrade", &FirmwareUpgrade::startSSUpgrade, firmware::supervisorFile, true, kSerialLine},
    {"SsVerification", &FirmwareUpgrade::startSSVerification, firmware::supervisorFile, false, kSerialLine},
    {"FrontUpgrade", &FirmwareUpgrade::startFrontUpgrade, firmware::frontFile, true, kSerialLine},
    {"FrontVerification", &FirmwareUpgrade::startFrontVerification, firmware::frontFile, false, kSerialLine},
    {"FpgaUpgrade", &FirmwareUpgrade::startFpgaUpgrade, firmware::fpgaFile, true, kFlash},
    {"FpgaVerification", &FirmwareUpgrade::startFpgaVerification, firmware::fpgaFile, false, kFlash},
};

class EveryStart : public hxtest::TestWithRow<StartCase> {
protected:
    /// The result of a run of this kind on a unit whose contents differ from the file.
    static eErr expected() { return row().writes ? ERR_SUCCESS : ERR_VERIFY_FAILED; }
    static eErr start(const Upgrade& upgrade, const std::string& file, bool blocking)
    {
        return ((*upgrade).*row().start)(file.c_str(), blocking);
    }
};
TEST_ROWS_IN(FirmwareUpgrade, EveryStart, kNameOfRow, kStarts);

} // namespace

ROW_TEST(EveryStart, AnswersTheResultOfABlockingRun)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();

    EXPECT_EQ(start(upgrade, row().file(unit, firmware::pattern(1056)), true), expected());

    const UpgradeStatus status = statusOf(upgrade);
    EXPECT_EQ(status.action, row().writes ? UpgradeActionFinished : UpgradeActionFailed);
    EXPECT_EQ(status.error, expected());
    EXPECT_EQ(status.percent, 0);
    EXPECT_THAT(status.reserved, ElementsAre(0, 0, 0));
    EXPECT_TRUE(lockIsFree());
}

ROW_TEST(EveryStart, ReportsTheResultOfARunOnItsOwnThreadInTheStatus)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();

    EXPECT_EQ(start(upgrade, row().file(unit, firmware::pattern(1056)), false), ERR_SUCCESS);

    const UpgradeStatus status = outcomeOf(upgrade);
    EXPECT_EQ(status.action, row().writes ? UpgradeActionFinished : UpgradeActionFailed);
    EXPECT_EQ(status.error, expected());
    unit.settle();
    EXPECT_TRUE(lockIsFree());
    EXPECT_EQ(unit.get("uart.direction"), "0");
    EXPECT_EQ(unit.get("uart.mode"), "0xc3");
}

ROW_TEST(EveryStart, IsInProgressWhileTheLockIsTaken)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(16));
    const Upgrade upgrade = makeUpgrade();
    int lock = 0;
    ASSERT_TRUE(LinuxWrapper::CreateSema(lock, kLock));
    ASSERT_TRUE(LinuxWrapper::WaitForSema(lock, true));

    EXPECT_EQ(start(upgrade, file, true), ERR_IN_PROGRESS);
    EXPECT_EQ(start(upgrade, file, false), ERR_IN_PROGRESS);

    EXPECT_FALSE(lockIsFree());
    EXPECT_EQ(statusOf(upgrade).action, UpgradeActionPrepareHardware);
    LinuxWrapper::CloseSema(lock);
}

ROW_TEST(EveryStart, LeavesARunningJobAlone)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(4224));
    const Upgrade first = makeUpgrade();
    const Upgrade second = makeUpgrade();
    ASSERT_EQ(start(first, file, false), ERR_SUCCESS);

    EXPECT_EQ(start(first, file, false), ERR_IN_PROGRESS);
    EXPECT_EQ(start(second, file, true), ERR_IN_PROGRESS);

    EXPECT_EQ(outcomeOf(first).error, expected());
}

ROW_TEST(EveryStart, ReleasesTheLockWhenNoThreadCanBeStarted)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(16));
    const Upgrade upgrade = makeUpgrade();
    unit.fail("thread", "start", EAGAIN);

    EXPECT_EQ(start(upgrade, file, false), ERR_CREATE_THREAD);

    EXPECT_TRUE(lockIsFree());
}

ROW_TEST(EveryStart, ForgetsWhatWasReadOfTheRunBefore)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(16));
    const Upgrade upgrade = makeUpgrade();
    ASSERT_EQ(start(upgrade, file, true), expected());
    for (int i = 0; i < 1000; ++i) // more than it published
        ASSERT_GE(statusOf(upgrade).action, UpgradeActionFinished);
    unit.fail("thread", "start", EAGAIN);

    EXPECT_EQ(start(upgrade, file, false), ERR_CREATE_THREAD); // it publishes nothing

    EXPECT_EQ(statusOf(upgrade).action, UpgradeActionPrepareHardware);
    EXPECT_EQ(statusOf(upgrade).error, ERR_SUCCESS);
}

ROW_TEST(EveryStart, LeavesNothingOpenWhenNoThreadCanBeStarted)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(16));
    unit.fail("thread", "start", EAGAIN);

    EXPECT_EQ(start(makeUpgrade(), file, false), ERR_CREATE_THREAD);

    EXPECT_EQ(unit.callsTo(std::string{"/"} + kLock).back(), "sem_close");
}

ROW_TEST(EveryStart, RunsAgainOnTheSameObjectAfterEveryOtherKindOfRun)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    for (const StartCase& other : kStarts)
        (void)((*upgrade).*other.start)(other.file(unit, firmware::pattern(16)).c_str(), true);
    unit.clearJournal();

    EXPECT_EQ(start(upgrade, row().file(unit, firmware::pattern(1056)), true), expected());

    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), Contains("open rdwr nonblock"));
    EXPECT_TRUE(lockIsFree());
}

ROW_TEST(EveryStart, PublishesTheBeginningOfEachRun)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(16));
    const Upgrade upgrade = makeUpgrade();
    const auto changesOfARun = [&] {
        unit.clearJournal();
        (void)start(upgrade, file, true);
        const std::vector<std::string> calls = unit.callsTo("/hxSema.XXXXXX");
        return std::ranges::count(calls, "sem_post") / 2; // the lock and the signal
    };
    const auto first = changesOfARun();
    (void)((*upgrade).*kStarts[0].start)(kStarts[0].file(unit, firmware::pattern(16)).c_str(), true);

    EXPECT_EQ(changesOfARun(), first);
}

ROW_TEST(EveryStart, MayBeReleasedRightAfterTheFinalStatus)
{
    SimulatedUnit unit;
    Upgrade upgrade = makeUpgrade();
    ASSERT_EQ(start(upgrade, row().file(unit, firmware::pattern(528)), false), ERR_SUCCESS);
    (void)outcomeOf(upgrade);

    upgrade.release();

    unit.settle();
    EXPECT_TRUE(lockIsFree());
}

ROW_TEST(EveryStart, MayBeReleasedInTheMiddleOfARun)
{
    SimulatedUnit unit;
    Upgrade upgrade = makeUpgrade();
    ASSERT_EQ(start(upgrade, row().file(unit, firmware::pattern(528)), false), ERR_SUCCESS);

    upgrade.release();

    unit.sleepFor(20000);
    EXPECT_TRUE(lockIsFree());
}

ROW_TEST(EveryStart, ReleasesTheLockAfterItsDevicesAreClosed)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string file = row().file(unit, firmware::pattern(528));

    EXPECT_EQ(start(upgrade, file, true), expected());

    const std::vector<std::string> journal = unit.journal();
    for (const std::string& device : row().devices)
        EXPECT_THAT(journal, InOrder({device + " close", std::string{"/"} + kLock + " sem_post"}));
}

ROW_TEST(EveryStart, ResetsTheStatusOfTheRunBefore)
{
    SimulatedUnit unit;
    const std::string file = row().file(unit, firmware::pattern(528));
    const Upgrade upgrade = makeUpgrade();
    EXPECT_EQ(start(upgrade, file, true), expected());
    ASSERT_NE(statusOf(upgrade).action, UpgradeActionPrepareHardware);
    unit.fail("thread", "start", EAGAIN);

    ASSERT_EQ(start(upgrade, file, false), ERR_CREATE_THREAD);

    EXPECT_EQ(statusOf(upgrade).action, UpgradeActionPrepareHardware);
}

TEST(FirmwareUpgrade, ReportsNothingBeforeAnyStart)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();

    const UpgradeStatus status = statusOf(upgrade);

    EXPECT_EQ(status.action, UpgradeActionPrepareHardware);
    EXPECT_EQ(status.percent, 0);
    EXPECT_EQ(status.error, ERR_SUCCESS);
}

TEST(FirmwareUpgrade, DoesNotLetTheFirstWaitWait)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    UpgradeStatus status{};

    EXPECT_EQ(upgrade->getUpgradeStatus(&status, true), ERR_SUCCESS);

    EXPECT_EQ(unit.now(), 0);
}

TEST(FirmwareUpgrade, RepeatsTheLastStatusWhenNothingChanged)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    EXPECT_EQ(upgrade->startFpgaUpgrade("/missing", true), ERR_OPEN_FAILED);

    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(statusOf(upgrade).action, UpgradeActionFailed);
        EXPECT_EQ(statusOf(upgrade).error, ERR_OPEN_FAILED);
    }
}

TEST(FirmwareUpgrade, WaitsOnceForEachChange)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    // Published: (0,0) (0,50) (0,100) (3,0) (3,0,1) (7,0,1), and one token from the start.
    ASSERT_EQ(upgrade->startFpgaUpgrade("/missing", true), ERR_OPEN_FAILED);
    UpgradeStatus status{};
    for (int i = 0; i < 7; ++i)
        upgrade->getUpgradeStatus(&status, true);
    unit.clearJournal();

    upgrade->getUpgradeStatus(&status, false);

    EXPECT_THAT(unit.journal(), ElementsAre(testing::HasSubstr("sem_trywait !EAGAIN")));
}

TEST(FirmwareUpgrade, ChecksTheFileOfAMicrocontrollerFirst)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string tooShort = firmware::file(unit, std::string(94999, ':'));
    const std::string foreign = firmware::file(unit, firmware::filledUpTo(95000, ':', "Front_uc"), "foreign");
    unit.clearJournal();

    EXPECT_EQ(upgrade->startSSUpgrade(tooShort.c_str(), true), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(upgrade->startSSUpgrade(foreign.c_str(), false), ERR_DATATYPE_MISMATCH);

    EXPECT_TRUE(lockIsFree());
    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), IsEmpty());
    EXPECT_EQ(statusOf(upgrade).action, UpgradeActionPrepareHardware);
}

TEST(FirmwareUpgrade, TakesAFrontFileOf50000To110000Characters)
{
    SimulatedUnit unit;
    const Bytes image = firmware::pattern(16);
    const auto start = [&](std::size_t size) {
        return makeUpgrade()->startFrontUpgrade(firmware::file(unit, firmware::intelHexOfSize(size, image)).c_str(),
                                                true);
    };

    EXPECT_EQ(start(49999), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(start(50000), ERR_SUCCESS);
    EXPECT_EQ(start(110000), ERR_SUCCESS);
    EXPECT_EQ(start(110001), ERR_DATATYPE_MISMATCH);
}

TEST(FirmwareUpgrade, RefusesFirmwareForTheOtherMicrocontroller)
{
    SimulatedUnit unit;
    const std::string supervisor = firmware::file(unit, firmware::filledUpTo(100000, '\n', "SystemSupervisor"));

    EXPECT_EQ(makeUpgrade()->startFrontUpgrade(supervisor.c_str(), true), ERR_DATATYPE_MISMATCH);
    EXPECT_TRUE(lockIsFree());
}

TEST(FirmwareUpgrade, CannotOpenAMissingFileOrReadAFolder)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();

    EXPECT_EQ(upgrade->startSSUpgrade("/missing", true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startSSUpgrade(unit.folder().c_str(), true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startSSUpgrade(nullptr, true), ERR_OPEN_FAILED);
    EXPECT_TRUE(lockIsFree());
}

TEST(FirmwareUpgrade, DoesNotCheckTheFileOfTheFpga)
{
    SimulatedUnit unit;

    EXPECT_EQ(makeUpgrade()->startFpgaUpgrade("/missing", false), ERR_SUCCESS) << "the run itself finds out";
}

TEST(FirmwareUpgrade, CreatesTwoPrivateSemaphoresAndTheUnitsLock)
{
    SimulatedUnit unit;
    {
        const Upgrade upgrade = makeUpgrade();
    }
    EXPECT_THAT(unit.callsTo(std::string{"/"} + kLock), Contains("sem_close"));
    int closed = 0;
    for (const std::string& call : unit.journal())
        closed += call.ends_with("sem_close") ? 1 : 0;
    EXPECT_EQ(closed, 3);
}

TEST(FirmwareUpgrade, SendsTheDaemonTheShutdownCommand)
{
    SimulatedUnit unit;

    EXPECT_EQ(makeUpgrade()->shutDown(), ERR_SUCCESS);
    unit.settle();

    EXPECT_EQ(unit.get("daemon.commands"), "129");
}

TEST(FirmwareUpgrade, CannotShutTheUnitDownWithoutTheDaemon)
{
    SimulatedUnit unit{"daemon.running = no"};

    EXPECT_EQ(makeUpgrade()->shutDown(), ERR_COMMAND_FAILED);
}

TEST(FirmwareUpgrade, KeepsNoDeviceOpenBeforeARunThatItRefuses)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const Upgrade other = makeUpgrade();
    const std::string file = firmware::fpgaFile(unit, firmware::pattern(16));
    ASSERT_EQ(upgrade->startFpgaUpgrade(file.c_str(), true), ERR_SUCCESS);
    ASSERT_EQ(other->startFpgaUpgrade(file.c_str(), false), ERR_SUCCESS);
    unit.clearJournal();

    EXPECT_EQ(upgrade->startFpgaUpgrade(file.c_str(), true), ERR_IN_PROGRESS);

    EXPECT_THAT(unit.callsTo("/dev/uart-redir"), Not(Contains("close")))
        << "a refused start leaves the last run's state";
    (void)outcomeOf(other);
}

TEST(FirmwareUpgrade, AnswersOpenFailedWhenTheFlashIsAbsentInASecondRun)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string file = firmware::fpgaFile(unit, firmware::pattern(528));
    ASSERT_EQ(upgrade->startFpgaUpgrade(file.c_str(), true), ERR_SUCCESS);
    unit.describe("absent = /dev/fpgaflash");

    EXPECT_EQ(upgrade->startFpgaUpgrade(file.c_str(), true), ERR_OPEN_FAILED);
}

TEST(FirmwareUpgrade, KeepsAPublishedChangeWhenASignalInterruptsTheWaitForTheStatus)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string file = firmware::fpgaFile(unit, firmware::pattern(16));
    unit.fail("/hxSema.XXXXXX", "sem_wait", EINTR, 5);
    testing::internal::CaptureStdout();

    EXPECT_EQ(upgrade->startFpgaUpgrade(file.c_str(), true), ERR_SUCCESS);

    (void)testing::internal::GetCapturedStdout();
    EXPECT_EQ(outcomeOf(upgrade).action, UpgradeActionFinished);
}

TEST(FirmwareUpgrade, RefusesAFileBeyondFourGigabytesByItsSize)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string file = firmware::file(unit, "");
    ASSERT_EQ(::truncate64(file.c_str(), (std::int64_t{1} << 32) + 60000), 0);
    unit.clearJournal();

    EXPECT_EQ(upgrade->startFrontUpgrade(file.c_str(), true), ERR_DATATYPE_MISMATCH);
}

TEST(FirmwareUpgrade, ReadsNoMoreThanAByteOfAFileOfAnImpossibleSize)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string file = firmware::file(unit, "");
    ASSERT_EQ(::truncate64(file.c_str(), 1 << 30), 0);
    const long before = residentPeakKib();

    EXPECT_EQ(upgrade->startSSVerification(file.c_str(), true), ERR_DATATYPE_MISMATCH);

    EXPECT_LT(residentPeakKib() - before, 1024);
}

TEST(FirmwareUpgrade, CannotOpenAnFpgaFileThatIsNotARegularFile)
{
    SimulatedUnit unit;
    const Upgrade upgrade = makeUpgrade();
    const std::string fifo = unit.folder() + "/fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);

    EXPECT_EQ(upgrade->startFpgaUpgrade("/dev/zero", true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startFpgaVerification(fifo.c_str(), true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startSSVerification("/dev/zero", true), ERR_DATATYPE_MISMATCH) << "by its size, as ever";
    EXPECT_EQ(upgrade->startSSVerification(fifo.c_str(), true), ERR_DATATYPE_MISMATCH);
}

TEST(FirmwareUpgrade, ChecksAFileOnItsOwn)
{
    SimulatedUnit unit;
    FirmwareUpgrade_Imp upgrade;
    const std::string file = firmware::file(unit, std::string(100000, ':'));

    EXPECT_EQ(upgrade.CheckFile(file.c_str(), Flasher_STM32::Supervisor), ERR_SUCCESS);
    EXPECT_EQ(upgrade.CheckFile(file.c_str(), static_cast<Flasher_STM32::eDeviceType>(2)), ERR_DATATYPE_MISMATCH);
    EXPECT_EQ(upgrade.CheckFile("/missing", Flasher_STM32::Supervisor), ERR_OPEN_FAILED);
}
