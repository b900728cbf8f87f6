// SPDX-License-Identifier: LicenseRef-HXAux
// Each finding of `hxaux doctor`, provoked on a simulated unit.
#include "tests/tools/hxaux/CommandRows.h"

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;

namespace {

auto finds(const std::string& item, const std::string& problem, const std::string& remedy)
{
    return AllOf(testing::Field("output", &Outcome::output, HasSubstr(item + ": " + problem)),
                 testing::Field("output", &Outcome::output, HasSubstr("\n  fix: " + remedy)), statusIs(1));
}

} // namespace

const CommandRow kDoctorVerbRows[] = {
    {"FindsNothingOnAHealthyUnit", "hxaux doctor",
     AllOf(outputIs("devices: fine\nversions: fine\nboard-library: fine\ndaemon: fine\nsettings-file: fine\n"
                    "locks: fine\ncan: fine\n"),
           errorIs(""), statusIs(0))},
    {"FindsAMissingDevice",
     "hxaux doctor",
     finds("devices: /dev/backlight", "missing", "sudo systemctl restart"),
     {"absent=/dev/backlight"}},
    {"FindsADeviceThatTheUserMayNotUse",
     "hxaux doctor devices",
     finds("devices: /dev/buzzer", "this user may not use it", "sudo adduser \"$USER\" hxaux"),
     {"fail=/dev/buzzer access EACCES"}},
    {"FindsASupervisorThatIsTooOldForAFunction",
     "hxaux doctor versions",
     finds("versions: power on at start-up", "supervisor 1.0.2.9 is installed, 1.0.3.0 is needed",
           "hxaux upgrade ss FILE"),
     {"version.ss=1.0.2.9"}},
    {"FindsAFrontMicrocontrollerThatIsTooOldForAFunction",
     "hxaux doctor versions",
     finds("versions: advanced touch screen settings", "front microcontroller 0.9.9.9 is installed, 1.0.0.0 is needed",
           "hxaux upgrade front FILE"),
     {"version.front=0.9.9.9"}},
    {"FindsAnFpgaThatIsTooOldForAFunction",
     "hxaux doctor versions",
     finds("versions: video scaling with full height", "FPGA 0.4.0.0 is installed, 0.4.0.1 is needed",
           "hxaux upgrade fpga FILE"),
     {"version.fpga=0.4.0.0"}},
    {"FindsAVersionThatCannotBeRead",
     "hxaux doctor versions",
     finds("versions: system image version", "cannot be read: Open failed (1)", "cat /etc/firmware.ver"),
     {"absent=/etc/firmware.ver"}},
    {"FindsAMissingBoardLibrary",
     "hxaux doctor board-library",
     finds("board-library: libjida.so", "cannot be loaded", "sudo ldconfig"),
     {"absent=libjida.so"}},
    {"FindsAFunctionThatTheBoardLibraryLacks",
     "hxaux doctor board-library",
     finds("board-library: JidaI2CWrite", "is missing in libjida.so", "sudo ldconfig"),
     {"absent=JidaI2CWrite"}},
    {"FindsADaemonThatDoesNotRun",
     "hxaux doctor daemon",
     finds("daemon: /tmp/hxauxd.fifo", "no process reads it", "sudo systemctl restart hxauxd"),
     {"daemon.running=off"}},
    {"FindsAMissingFifo",
     "hxaux doctor daemon",
     finds("daemon: /tmp/hxauxd.fifo", "missing", "sudo systemctl restart hxauxd"),
     {"absent=/tmp/hxauxd.fifo"}},
    {"FindsASettingsFileThatTheUserMayNotWrite",
     "hxaux doctor settings-file",
     finds("settings-file: /opt/etc/hxaux.ini", "Permission denied", "sudo chmod 666 /opt/etc/hxaux.ini"),
     {"fail=/opt/etc/hxaux.ini access EACCES"}},
    {"FindsASettingsFolderThatIsMissing",
     "hxaux doctor settings-file",
     finds("settings-file: /opt/etc/hxaux.ini", "cannot be made", "sudo mkdir -p /opt/etc"),
     {"fail=/opt/etc access ENOENT"}},
    {"GroupsEqualFindings",
     "hxaux doctor devices",
     AllOf(outputIs("devices: /dev/backlight, /dev/buzzer, /dev/dig-io: missing: its driver is not loaded\n"
                    "  fix: sudo systemctl restart systemd-modules-load && sudo udevadm trigger\n"),
           errorIs("doctor: 3 of 16 checks failed\n"), statusIs(1)),
     {"absent=/dev/backlight", "absent=/dev/buzzer", "absent=/dev/dig-io"}},
    {"FindsAMissingCanAttribute",
     "hxaux doctor can",
     finds("can: CAN network 3", "/sys/class/net/can2", "sudo systemctl"),
     {"absent=/sys/class/net/can2/can_bittiming/bitrate"}},
    {"FindsACanAttributeThatHoldsNoRate",
     "hxaux doctor can",
     finds("can: CAN network 1", "", "hxaux can set 1 250"),
     {"can.1.text=fast"}},
    {"FindsACanAttributeThatTheUserMayNotWrite",
     "hxaux doctor can",
     finds("can: CAN network 1", "", "sudo udevadm trigger"),
     {"fail=/sys/class/net/can0/can_bittiming/bitrate access EACCES"}},
};
const TestTable kDoctorVerb{"DoctorVerb", checkOnUnit, kDoctorVerbRows};

TEST(DoctorVerb, FindsASettingOutsideItsRange)
{
    const Unit unit;
    ASSERT_THAT(unit.run("hxaux settings set ABL_mode 7"), statusIs(0));

    EXPECT_THAT(unit.run("hxaux doctor settings-file"),
                finds("settings-file: ABL_mode", "'7' is outside its range", "hxaux settings set ABL_mode 2"));
}

TEST(DoctorVerb, FindsALockWhoseHolderWasKilled)
{
    const Unit unit;
    (void)run("timeout -s KILL 3 " + unit.line("hxaux light --average --watch --every 0.2"));

    EXPECT_THAT(unit.run("hxaux doctor locks"), finds("locks: HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED", "stale",
                                                      "hxaux locks reset HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"));
}

TEST(DoctorVerb, SaysThatAnInterruptedUpgradeMustBeRunAgain)
{
    EXPECT_THAT(onUnit("hxaux doctor versions", {"front.silent=on", "do=cut front"}),
                AllOf(outputMatches("after an interrupted upgrade: hxaux upgrade front FILE again"), statusIs(1)));
    EXPECT_THAT(onUnit("hx-probe try /HXAUX_FIRMWARE_UPGRADE_IN_PROGRESS; hxaux doctor locks"),
                AllOf(outputMatches("an upgrade was interrupted.*may have no firmware"),
                      outputMatches("&& hxaux upgrade TARGET FILE   # run the upgrade again"), statusIs(1)));
}

TEST(DoctorVerb, SaysFirstThatAMachineHasNoneOfTheUnitsDevices)
{
    const Outcome outcome = run("hxaux doctor devices");

    EXPECT_THAT(outcome, AllOf(outputMatches("^this machine: none of the unit's devices exists here\n"
                                             "  fix: hx-sim run -- hxaux doctor "),
                               statusIs(1)));
    EXPECT_EQ(run("hx-sim run -- hxaux doctor devices").output, "devices: fine\n");
    EXPECT_THAT(std::string(jsonOf(run("hxaux doctor devices --json"))["notes"][0]),
                testing::StartsWith("none of the unit's devices exists here; hx-sim run -- hxaux doctor"));
}

TEST(DoctorVerb, IsFixedByTheCommandThatItNamesForALock)
{
    const Unit unit;
    (void)run("timeout -s KILL 3 " + unit.line("hxaux light --average --watch --every 0.2"));
    ASSERT_THAT(unit.run("hxaux locks reset HXAUX_LIGHT_SENSOR_AVERAGE_LOCKED"), statusIs(0));

    EXPECT_THAT(unit.run("hxaux doctor locks"), AllOf(outputIs("locks: fine\n"), statusIs(0)));
}

TEST(DoctorVerb, ListsAllChecksAsJson)
{
    const Unit unit({"absent=/dev/adc-id"});
    const Outcome outcome = unit.run("hxaux doctor --json");
    const auto json = jsonOf(outcome);

    EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(1)));
    EXPECT_EQ(json["result"]["findings"][0]["item"], "/dev/adc-id");
    EXPECT_EQ(json["result"]["findings"][0]["fine"], false);
    EXPECT_EQ(json["result"]["findings"][1]["fine"], true);
    EXPECT_EQ(json["result"]["findings"][1]["remedy"], nullptr);
}
