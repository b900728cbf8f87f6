// SPDX-License-Identifier: LicenseRef-HXAux
// Objects that other users of the machine can create in the paths of the library, and unintended names. SECURITY.md
// describes what is tested here.
#include "hx-aux/hx-aux.h"
#include "platform/LinuxWrapper.h"
#include "simulator/model/ProductionData.h"
#include "testing/FileContent.h"
#include "testing/Released.h"
#include "testing/RowTest.h"
#include "testing/SimulatedUnit.h"
#include "tests/faults/Forked.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Halvix;
using testing::HasSubstr;

namespace {

constexpr char kHostile[] = "%s%n%s%n%1000000d";

// In place of the daemon's FIFO.

int openFifo(const std::string& path)
{
    const int fifo = LinuxWrapper::open_write_fifo(path.c_str(), 0666);
    if (fifo >= 0)
        close(fifo);
    return fifo;
}

TEST(Hostile, FileInPlaceOfTheFifoTakesTheCommands)
{
    SimulatedUnit unit;
    const std::string path = unit.folder() + "/fifo";
    std::ofstream{path} << "there";

    EXPECT_GE(openFifo(path), 0);

    EXPECT_EQ(fileContent(path), "there"); // opening alone has no effect
}

TEST(Hostile, FolderInPlaceOfTheFifoIsNotADaemon)
{
    SimulatedUnit unit;
    const std::string path = unit.folder() + "/fifo";
    std::filesystem::create_directory(path);

    EXPECT_EQ(openFifo(path), -2);
}

TEST(Hostile, LinkInPlaceOfTheFifoIsFollowed)
{
    SimulatedUnit unit;
    const std::string path = unit.folder() + "/fifo";
    std::ofstream{unit.folder() + "/target"} << "there";
    std::filesystem::create_symlink(unit.folder() + "/target", path);

    EXPECT_GE(openFifo(path), 0);

    EXPECT_EQ(fileContent(unit.folder() + "/target"), "there");
}

TEST(Hostile, DanglingLinkInPlaceOfTheFifoIsNotADaemonAndCreatesNoFile)
{
    SimulatedUnit unit;
    const std::string path = unit.folder() + "/fifo";
    std::filesystem::create_symlink(unit.folder() + "/nowhere", path);

    EXPECT_EQ(openFifo(path), -2);

    EXPECT_FALSE(std::filesystem::exists(unit.folder() + "/nowhere"));
}

TEST(Hostile, FifoWithoutAReaderIsNotADaemon)
{
    SimulatedUnit unit;
    const std::string path = unit.folder() + "/fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);

    EXPECT_EQ(openFifo(path), -2);
}

// In place of the settings file.

eErr setKey(const char* value)
{
    Released<HXAuxPrivate> service{GetHXAuxPrivate()};
    return service->setFileSetting("KEY", value);
}

eErr getKey(std::string& value)
{
    Released<HXAuxPrivate> service{GetHXAuxPrivate()};
    char text[64] = "";
    const eErr err = service->getFileSetting("KEY", text, sizeof text);
    value = text;
    return err;
}

TEST(Hostile, LinkInPlaceOfTheSettingsIsFollowedAndItsTargetRewritten)
{
    SimulatedUnit unit;
    const std::string target = unit.folder() + "/target";
    std::ofstream{target} << "a user's file\n";
    std::filesystem::create_symlink(target, unit.settingsFile());

    EXPECT_EQ(setKey("1"), ERR_SUCCESS);

    EXPECT_EQ(fileContent(target), "=\nKEY = 1\n");
}

TEST(Hostile, DanglingLinkInPlaceOfTheSettingsCreatesItsTarget)
{
    SimulatedUnit unit;
    const std::string target = unit.folder() + "/target";
    std::filesystem::create_symlink(target, unit.settingsFile());

    EXPECT_EQ(setKey("1"), ERR_SUCCESS);

    EXPECT_EQ(fileContent(target), "KEY = 1\n");
}

TEST(Hostile, FolderInPlaceOfTheSettingsIsAnEmptyFileThatTakesNothing)
{
    SimulatedUnit unit;
    std::filesystem::create_directory(unit.settingsFile());
    std::string value;

    EXPECT_EQ(setKey("1"), ERR_SUCCESS); // a failure to write is not reported
    EXPECT_EQ(getKey(value), ERR_COMMAND_FAILED);
}

TEST(Hostile, SettingsThatCannotBeReadStayAsTheyAre)
{
    SimulatedUnit unit;
    unit.writeSettings("OTHER=1\n");
    unit.fail("/opt/etc/hxaux.ini", "read", EIO, 1);

    EXPECT_EQ(setKey("1"), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "OTHER=1\n");
}

TEST(Hostile, SettingsWithoutSpaceForAChangeStayUnchanged)
{
    SimulatedUnit unit;
    unit.writeSettings("; a comment\nOTHER=1");
    unit.fail("/opt/etc/hxaux.ini", "write", ENOSPC, 1);

    EXPECT_EQ(setKey("1"), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "; a comment\nOTHER=1");
}

TEST(Hostile, SettingsThatCannotBeWrittenAtAllAreEmpty)
{
    SimulatedUnit unit;
    unit.writeSettings("OTHER=1\n");
    unit.fail("/opt/etc/hxaux.ini", "write", ENOSPC);

    EXPECT_EQ(setKey("1"), ERR_SUCCESS);

    EXPECT_EQ(unit.settings(), "");
}

// Semaphores that another user created first.

void makeFirst(const char* name, unsigned count)
{
    sem_t* const semaphore = sem_open(name, O_CREAT | O_EXCL, 0666, count);
    ASSERT_NE(semaphore, SEM_FAILED);
    sem_close(semaphore);
}

int valueOf(const char* name)
{
    int value = -1;
    sem_t* const semaphore = sem_open(name, 0);
    sem_getvalue(semaphore, &value);
    sem_close(semaphore);
    return value;
}

TEST(Hostile, SettingsLockOfCountZeroIsWaitedForWithoutEnd)
{
    const faults::Ended ended = faults::inAChild([] {
        SimulatedUnit unit;
        makeFirst("/FILE_HXAUXINI_IS_IN_USE", 0);
        return std::to_string(setKey("1"));
    });

    EXPECT_EQ(ended.output, "");
    EXPECT_THAT(ended.errors, HasSubstr("semaphore /FILE_HXAUXINI_IS_IN_USE"));
}

TEST(Hostile, OtherLocksOfCountZeroAnswerBusy)
{
    SimulatedUnit unit;
    makeFirst("/HXAUX_BUZZING_IN_PROGRESS", 0);
    makeFirst("/HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS", 0);
    makeFirst("/HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED", 0);

    EXPECT_EQ(
        Released<Buzzer> { GetBuzzer() } -> buzze(10, true), ERR_IN_PROGRESS);
    EXPECT_EQ(
        Released<FirmwareUpgrade> { GetFirmwareUpgrade() } -> startFpgaUpgrade("x", true), ERR_IN_PROGRESS);
    EXPECT_EQ(
        Released<Lightsensor> { GetLightsensor() } -> startAverageCalc(1, 1, 1, SamplingModeAuto),
        ERR_AVERAGE_CALC_STARTED);
}

TEST(Hostile, LocksOfCountAThousandDoNotExcludeAndKeepTheirCount)
{
    SimulatedUnit unit;
    makeFirst("/FILE_HXAUXINI_IS_IN_USE", 1000);
    makeFirst("/HXAUX_BUZZING_IN_PROGRESS", 1000);
    Released<Buzzer> first{GetBuzzer()};
    Released<Buzzer> second{GetBuzzer()};

    EXPECT_EQ(first->buzze(50, false), ERR_SUCCESS);
    EXPECT_EQ(second->buzze(10, true), ERR_SUCCESS);
    EXPECT_EQ(setKey("1"), ERR_SUCCESS);
    unit.sleepFor(100);

    EXPECT_EQ(valueOf("/HXAUX_BUZZING_IN_PROGRESS"), 1000);
    EXPECT_EQ(valueOf("/FILE_HXAUXINI_IS_IN_USE"), 1000);
}

// Unintended names and texts.

TEST(Hostile, FormatsInSettingsAreTexts)
{
    SimulatedUnit unit;
    Released<HXAuxPrivate> service{GetHXAuxPrivate()};
    char value[64] = "";

    EXPECT_EQ(service->setFileSetting(kHostile, kHostile), ERR_SUCCESS);
    EXPECT_EQ(service->getFileSetting(kHostile, value, sizeof value), ERR_SUCCESS);

    EXPECT_STREQ(value, kHostile);
    EXPECT_EQ(unit.settings(), std::string{kHostile} + " = " + kHostile + "\n");
}

TEST(Hostile, SettingsMayBeLongButNotLongerThanTheCallersBuffer)
{
    SimulatedUnit unit;
    Released<HXAuxPrivate> service{GetHXAuxPrivate()};
    const std::string huge(100000, 'x');
    char value[64] = "before";

    EXPECT_EQ(service->setFileSetting(huge.c_str(), huge.c_str()), ERR_SUCCESS);
    EXPECT_EQ(service->getFileSetting(huge.c_str(), value, sizeof value), ERR_BUFFER_SIZE);

    EXPECT_STREQ(value, "before");
}

TEST(Hostile, FormatsInProductionDataAreTexts)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nUNIT_SERIAL:%s%n\r\nPCB_SERIAL:%d\r\n");
    Released<About> about{GetAbout()};
    char serial[64] = "";

    EXPECT_EQ(about->getUnitSerial(serial, sizeof serial - 1), ERR_SUCCESS);

    EXPECT_STREQ(serial, "%s%n");
}

TEST(Hostile, LongPropertyIsCutOrRefusedByTheCallersBuffer)
{
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nUNIT_SERIAL:" + std::string(2000, 'x') + "\r\n");
    Released<About> about{GetAbout()};
    char serial[64] = "before";

    EXPECT_EQ(about->getUnitSerial(serial, sizeof serial - 1), ERR_BUFFER_SIZE);

    EXPECT_STREQ(serial, "before");
}

TEST(Hostile, PropertyNamesMayBeAnything)
{
    SimulatedUnit unit;
    Released<HXAuxPrivate> service{GetHXAuxPrivate()};
    std::string huge(100000, 'x');
    std::string format{kHostile};
    char value[64] = "before";

    EXPECT_EQ(service->getEepromProperty(0, huge.data(), value, sizeof value - 1), ERR_JIDA_EEPROM);
    EXPECT_EQ(service->getEepromProperty(0, format.data(), value, sizeof value - 1), ERR_JIDA_EEPROM);
    EXPECT_EQ(service->setEepromProperty(0, huge.data(), format.data()), ERR_JIDA_EEPROM);

    EXPECT_STREQ(value, "before");
}

TEST(Hostile, FirmwareFileNamesMayBeAnything)
{
    SimulatedUnit unit;
    Released<FirmwareUpgrade> upgrade{GetFirmwareUpgrade()};
    const std::string huge(100000, 'x');

    EXPECT_EQ(upgrade->startFrontUpgrade(huge.c_str(), true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startFpgaUpgrade(huge.c_str(), true), ERR_OPEN_FAILED);
    EXPECT_EQ(upgrade->startSSUpgrade(kHostile, true), ERR_OPEN_FAILED);
}

TEST(Hostile, SemaphoreNamesAreCutAndNoFormats)
{
    SimulatedUnit unit;
    int sema = 0;

    ASSERT_TRUE(LinuxWrapper::CreateSema(sema, kHostile));
    LinuxWrapper::CloseSema(sema);
    ASSERT_TRUE(LinuxWrapper::CreateSema(sema, std::string(1000, 'x').c_str()));
    LinuxWrapper::CloseSema(sema);

    EXPECT_THAT(unit.journal(), Contains(HasSubstr("/" + std::string(78, 'x') + " sem_open")));
    EXPECT_THAT(unit.journal(), Contains(HasSubstr(std::string{"/"} + kHostile + " sem_open")));
}

class AnyRate : public hxtest::TestWithRow<const char*> {};
TEST_ROWS(Hostile, AnyRate, hxtest::kNumbered, "", "\n", "%s%n\n", "-1\n", "99999999999999999999\n",
          "1111111111111111111111111111111111111111111111111111111111111\n");

ROW_TEST(AnyRate, OfANetworkReturnsANumberOrAnError)
{
    SimulatedUnit unit;
    unit.set("can.1.text", row());
    Released<CanSetting> can{GetCanSetting()};
    unsigned short kbit = 77;

    const eErr err = can->getBaudrate(1, &kbit);

    EXPECT_TRUE(err == ERR_SUCCESS || (err == ERR_IOCTRL_FAILED && kbit == 77)) << err << ' ' << kbit;
}

} // namespace
