// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim under careless and hostile use: names of units, options that do not go together, texts from elsewhere.
#include "tests/simulator/hx-sim/UnitFixture.h"

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

using hxtest::errorMatches;
using hxtest::outputIs;
using hxtest::run;
using hxtest::statusIs;
using testing::AllOf;

/// A directory beside the simulator's own one must survive every command.
class HostileUse : public UnitFixture {
protected:
    HostileUse()
    {
        for (const std::string& folder : {sentinel(), folderOf("precious")}) {
            fs::create_directories(folder);
            std::ofstream{folder + "/file"} << "precious";
        }
    }

    [[nodiscard]] std::string sentinel() const { return fs::path{folderOf("../precious")}.lexically_normal(); }
    [[nodiscard]] bool nothingIsLost() const
    {
        return fs::exists(sentinel() + "/file") && fs::exists(folderOf("precious") + "/file");
    }
};

/// As words of a shell.
constexpr const char* kBadNames[] = {
    "''",    "' '",       ".",         "..",     "../precious", "../../precious", "/",      "/tmp",
    "a/b",   "precious/", ".new-1",    "-",      "'a b'",       "'a\n'",          "'*'",    "'$(x)'",
    "\"'\"", "_a",        "'\033[2J'", "'\xff'", "'\xc3\xa9'",  "'\xc2\x9b'",     "a\\\\b",
};

/// Every command, %s standing for the name.
constexpr const char* kNaming[] = {
    "start -- %s",
    "stop -- %s",
    "run --unit %s -- true",
    "record --unit %s -o /dev/null -- true",
    "set --unit %s light 1",
    "get --unit %s light",
    "properties --unit %s",
    "actions --unit %s",
    "do --unit %s lift",
    "remove --unit %s /dev/backlight",
    "restore --unit %s /dev/backlight",
    "fail --unit %s /dev/backlight open",
    "unfail --unit %s",
    "log --unit %s",
    "shell --unit %s",
    "play light --unit %s /dev/null",
};

std::string with(std::string command, const std::string& name)
{
    return "hx-sim " + command.replace(command.find("%s"), 2, name);
}

TEST_F(HostileUse, RefusesANameThatNoUnitCanHaveInEveryCommand)
{
    run("hx-sim start only"); // the unit that would be meant without a name

    for (const char* const command : kNaming)
        for (const char* const name : kBadNames)
            EXPECT_THAT(run(with(command, name)), AllOf(statusIs(2), outputIs(""), errorMatches("a unit's name is")));

    EXPECT_TRUE(nothingIsLost());
    EXPECT_THAT(run("hx-sim list"), outputIs("only\n"));
}

TEST_F(HostileUse, RefusesABadNameBeforeAnythingIsMade)
{
    fs::remove_all(folderOf(""));

    for (const char* const name : kBadNames)
        run(with("start -- %s", name));

    EXPECT_FALSE(fs::exists(folderOf("")));
}

TEST_F(HostileUse, RefusesTheNameOfABadFolderInTheEnvironment)
{
    EXPECT_THAT(run("HXSIM_UNIT=/tmp/.. hx-sim get light"), AllOf(statusIs(2), errorMatches("a unit's name is")));
}

TEST_F(HostileUse, RemovesNoFolderThatItHasNotMade)
{
    for (const char* const command : {"start precious", "stop precious", "list", "run --unit precious -- true"})
        run("hx-sim " + std::string{command});

    EXPECT_TRUE(nothingIsLost());
    EXPECT_THAT(run("hx-sim start precious"), AllOf(statusIs(1), errorMatches("cannot make the folder .*/precious")));
    EXPECT_THAT(run("hx-sim stop precious"), AllOf(statusIs(6), errorMatches("no unit named 'precious' is running")));
}

TEST_F(HostileUse, FollowsNoLinkToAFolderThatItRemoves)
{
    run("hx-sim start killed; kill -9 " + hostOf("killed"));
    run("hx-sim start killed"); // its folder is there again
    fs::create_directory_symlink(sentinel(), folderOf("link"));
    std::ofstream{sentinel() + "/made-by-hx-sim"} << "copied";

    run("hx-sim list");
    run("hx-sim start link");

    EXPECT_TRUE(nothingIsLost());
    EXPECT_TRUE(fs::is_symlink(folderOf("link")));
}

TEST_F(HostileUse, LeavesTheSimulatorsFolderOfAnotherPlaceAlone)
{
    fs::remove_all(folderOf(""));
    fs::create_directories(sentinel() + "/unit");
    std::ofstream{sentinel() + "/unit/made-by-hx-sim"} << "copied";
    fs::create_directory_symlink(sentinel(), fs::path{folderOf("x")}.parent_path());

    EXPECT_THAT(run("hx-sim list"), outputIs(""));
    EXPECT_THAT(run("hx-sim start unit"), AllOf(statusIs(1), errorMatches("does not belong to this user")));

    EXPECT_TRUE(fs::exists(sentinel() + "/unit/made-by-hx-sim"));
}

/// Anything but a plain file in place of a file.
TEST_F(HostileUse, RefusesWhatIsNotAFileWithoutWaiting)
{
    const std::string fifo = sentinel() + "/fifo";
    const std::string kept = sentinel() + "/kept";
    run("mkfifo " + fifo + "; mkdir " + kept + "; mkfifo " + kept + "/eeprom-main");

    for (const char* const command : {"run -d %s -- true", "start x -d %s", "play light %s -- true"}) {
        EXPECT_THAT(run(with(command, fifo)), AllOf(statusIs(1), errorMatches("is a FIFO, not a file\n$")));
        EXPECT_THAT(run(with(command, "/dev/zero")), AllOf(statusIs(1), errorMatches("is a device, not a file\n$")));
        EXPECT_THAT(run(with(command, "/tmp")), AllOf(statusIs(1), errorMatches("is a folder, not a file\n$")));
        EXPECT_THAT(run(with(command, "/nonexistent")), AllOf(statusIs(1), errorMatches("cannot read /nonexistent")));
    }
    EXPECT_THAT(
        run("printf '0 1\n1 2\n' >" + kept + "/p; hx-sim play light --plot " + fifo + ' ' + kept + "/p -- true"),
        AllOf(statusIs(1), errorMatches("is a FIFO, not a file\n$")));
    EXPECT_THAT(run("hx-sim run --keep " + sentinel() + "/file -- true"),
                AllOf(statusIs(1), errorMatches("cannot keep memories in")));
    EXPECT_TRUE(nothingIsLost());
    EXPECT_THAT(run("hx-sim list"), outputIs(""));
}

/// Options that would otherwise be ignored.
constexpr const char* kRefusedOptions[] = {
    "run --unit only --set light=1 -- true",
    "run --unit only --description /dev/null -- true",
    "run --unit only --keep /tmp -- true",
    "run --unit only --scale 2 -- true",
    "record --unit only --set light=1 -- true",
    "record --unit only --description /dev/null -- true",
    "record --unit only --keep /tmp -- true",
    "record --unit only --scale 2 -- true",
    "record --machine --unit only -- true",
    "record --machine --set light=1 -- true",
    "record --machine --description /dev/null -- true",
    "record --machine --keep /tmp -- true",
    "record --machine --scale 2 -- true",
    "run --unit only -- hx-sim record --set light=1 -- true",
    "play light /dev/null --set light=1",
    "play light /dev/null --description /dev/null",
    "play light /dev/null --keep /tmp",
    "play light /dev/null --scale 2",
    "play light /dev/null --plot x.svg",
    "play light /dev/null --seconds 1",
    "play light /dev/null --unit only -- true",
    "log --clear --follow",
    "log --clear --json",
    "properties --json --markdown",
    "run --scale 0 -- true",
    "run --scale nan -- true",
    "run --scale inf -- true",
    "run --scale 1e9 -- true",
    "run --scale x -- true",
    "run --scale '' -- true",
    "run --keep '' -- true",
    "run --set '' -- true",
    "run --description '' -- true",
    "record -o '' -- true",
    "replay --scale -1 /dev/null -- true",
    "play light --seconds nan /dev/null -- true",
    "start two --json",
    "start",
    "start one two",
    "stop one two",
    "run",
    "get",
    "set",
    "fail",
    "remove",
    "do",
    "record",
    "replay",
    "play",
    "play sound x",
    "unfail /dev/backlight /dev/buzzer",
    "completion",
    "completion tcsh",
    "completion bash fish",
    "list one",
    "shell only",
    "--no-such-option",
};

TEST_F(HostileUse, HonoursOrRefusesEachOption)
{
    run("hx-sim start only");

    for (const char* const options : kRefusedOptions)
        EXPECT_THAT(run("hx-sim " + std::string{options}), AllOf(statusIs(2), errorMatches("^hx-sim: .")));

    EXPECT_TRUE(nothingIsLost());
    EXPECT_THAT(run("hx-sim list"), outputIs("only\n"));
}

struct Mistake {
    const char* command;
    int status;
    const char* message;
};

constexpr Mistake kMistakes[] = {
    {"set light", 1, "is not of the form: key = value"},
    {"set light abc", 1, "light: 'abc' is not a number"},
    {"set light nan", 1, "'nan' is not"},
    {"set ligth 1", 1, "no property 'ligth'; did you mean 'light'\\?"},
    {"set led.lit on", 1, "led.lit can only be read"},
    {"set '=' 1", 1, "the unit has no property ''"},
    {"set \"$(printf 'light\\0331')\" 1", 1, "the unit has no property"},
    {"get ligth", 1, "no property 'ligth'; did you mean 'light'\\?"},
    {"get ''", 1, "no property ''"},
    {"set voltage.0.raw 4096", 1, "voltage.0.raw: 4096 is outside 0 to 4095"},
    {"set config.voltage 4096", 1, "4096 is outside 0 to 4095"},
    {"set config.heating 30", 1, "30 is outside 31 to 61"},
    {"set config.short-press 3", 1, "3 is outside 0 to 2"},
    {"set config.long-press 3", 1, "3 is outside 0 to 2"},
    {"set config.signal 3", 1, "3 is outside 0 to 2"},
    {"set config.trigger 0", 1, "0 is outside 1 to 3"},
    {"set power.can 2", 1, "'2' is neither on nor off"},
    {"set touch.mode 4", 1, "4 is outside 0 to 3"},
    {"set touch.register.5 4096", 1, "4096 is outside 0 to 4095"},
    {"do prses front", 1, "no action 'prses'; did you mean 'press'\\?"},
    {"prses front", 1, "no action 'prses'; did you mean 'press'\\?"},
    {"press back", 1, "press front"},
    {"supply maybe", 1, "'maybe' is neither on nor off"},
    {"remove /dev/backligth", 1, "did you mean '/dev/backlight'\\?"},
    {"remove /dev/backlight /dev/nope", 1, "\"/dev/nope\""},
    {"restore ss", 1, "no device, file, library or function \"ss\""},
    {"fail /dev/nope open", 1, "nothing on the unit is called \"/dev/nope\""},
    {"fail /dev/backlight oepn", 1, "did you mean 'open'\\?"},
    {"fail /dev/backlight open EOI", 1, "did you mean 'EIO'\\?"},
    {"fail /dev/backlight open EIO -1", 1, "-1 is outside 1 to 1000000"},
    {"unfail /dev/nope", 1, "nothing on the unit is called \"/dev/nope\""},
    {"get --unit other light", 6, "no unit named 'other' is running"},
    {"start only", 1, "'only' is already running"},
    {"run -- /nonexistent", 127, "cannot start /nonexistent"},
    {"run -- /tmp", 126, "cannot start /tmp"},
    {"run -- ''", 126, "cannot start"},
};

TEST_F(HostileUse, AnswersEachMistakeWithAStatusAndWords)
{
    run("hx-sim start only");

    for (const Mistake& each : kMistakes)
        EXPECT_THAT(run("hx-sim " + std::string{each.command}),
                    AllOf(statusIs(each.status), outputIs(""), errorMatches(each.message)));

    EXPECT_THAT(run("hx-sim run --unit only -- hx-probe get /dev/adc-id 0"), statusIs(0));
    EXPECT_THAT(run("hx-sim log | grep -c backlight"), outputIs("0\n")) << "nothing of a refused command was done";
    EXPECT_TRUE(nothingIsLost());
}

/// Each has a bad part behind good ones.
constexpr const char* kHalfBad[] = {
    "set backlight.level=9 nope=1",
    "set backlight.level=9 light",
    "set backlight.level=9 light=abc",
    "set backlight.level=9 absent=/dev/nope",
    "set backlight.level=9 'do = press back'",
    "set backlight.level=9 'fail = /dev/backlight oepn'",
    "set 'backlight.level=9\nlight=abc'",
    "set backlight.level=9 eeprom.main.PCB_ART=X 'do = forget main NOPE'",
    "remove /dev/buzzer /dev/nope",
    "start two --set backlight.level=9 --set nope=1",
};

TEST_F(HostileUse, DoesNothingOfACommandWithABadPart)
{
    // The unit's own clock goes on meanwhile.
    const std::string properties = "hx-sim properties | grep -v '^diagnostics.time'";
    run("hx-sim start only --set backlight.level=5");
    const std::string before = run(properties).output;

    for (const char* const command : kHalfBad)
        EXPECT_THAT(run("hx-sim " + std::string{command}), AllOf(statusIs(1), outputIs("")));

    EXPECT_EQ(run(properties).output, before);
    EXPECT_THAT(run("hx-sim run --unit only -- sh -c 'test -e /dev/buzzer'"), statusIs(0));
    EXPECT_THAT(run("hx-sim faults"), outputIs(""));
    EXPECT_THAT(run("hx-sim list"), outputIs("only\n"));
}

TEST_F(HostileUse, AppliesEachPartToWhatTheUnitHolds)
{
    run("hx-sim start only");

    EXPECT_THAT(run("hx-sim do production main OWN_KEY 1; hx-sim set light=7 'do = forget main OWN_KEY'"),
                AllOf(statusIs(0), hxtest::errorIs("")));
    EXPECT_THAT(run("hx-sim get light"), outputIs("7\n"));
}

TEST_F(HostileUse, NamesAPermissionThatIsRefused)
{
    run("hx-sim start only");
    const std::string units = folderOf("");
    const auto refused = [&](const std::string& command) {
        return run("chmod 0 " + units + "; " + hxtest::boundByPermissions() + "hx-sim " + command +
                   "; status=$?; chmod 700 " + units + "; exit $status");
    };

    EXPECT_THAT(refused("get --unit only light"),
                AllOf(statusIs(6), errorMatches("'only' cannot be reached: Permission denied")));
    EXPECT_THAT(refused("get light"), AllOf(statusIs(6), errorMatches("cannot be read: Permission denied")));
    EXPECT_THAT(refused("list"), AllOf(statusIs(1), errorMatches("cannot be read: Permission denied")));
    EXPECT_THAT(refused("start two"), AllOf(statusIs(1), errorMatches("cannot make the folder .*: Permission denied")));
}

TEST_F(HostileUse, SaysSoWhenItsOutputCannotBeWritten)
{
    run("hx-sim start only; hx-sim run --unit only -- hxaux voltage 0");

    for (const char* const command : {"get light", "properties", "list --json", "faults --json", "log --json", "--man"})
        EXPECT_THAT(run("hx-sim " + std::string{command} + " >/dev/full"),
                    AllOf(statusIs(1), errorMatches("standard output cannot be written")));
}

/// What a program changes by its path. Nothing of it may reach the machine.
TEST_F(HostileUse, ChangesTheUnitsFilesAndNotTheMachines)
{
    run("hx-sim start only; hx-sim run --unit only -- hxaux settings set A 1");
    const std::string file = "/opt/etc/hxaux.ini";
    const auto onUnit = [](const std::string& command) { return run("hx-sim run --unit only -- " + command); };

    EXPECT_THAT(onUnit("chmod 611 " + file), statusIs(0));
    EXPECT_THAT(run("stat -c %a " + folderOf("only") + "/files" + file), outputIs("611\n"));
    EXPECT_THAT(onUnit("mkdir /opt/etc"), AllOf(statusIs(1), errorMatches("File exists")));
    EXPECT_THAT(onUnit("mkfifo " + file), AllOf(statusIs(1), errorMatches("File exists")));
    EXPECT_THAT(onUnit("ln -s /nonexistent " + file), AllOf(statusIs(1), errorMatches("File exists")));
    EXPECT_THAT(onUnit("ln " + file + " " + sentinel() + "/link"), AllOf(statusIs(1), errorMatches("cross-device")));
    EXPECT_THAT(onUnit("mv " + file + " " + sentinel() + "/moved"), statusIs(0));
    EXPECT_FALSE(fs::exists(folderOf("only") + "/files" + file));
    EXPECT_THAT(onUnit("mv " + sentinel() + "/moved " + file), statusIs(0));
    EXPECT_THAT(onUnit("hxaux settings get A"), outputIs("A: 1\n"));
}

TEST_F(HostileUse, LeavesDevicesAsTheyAre)
{
    for (const char* const command : {"chmod 600 /dev/adc-id", "chown 1 /dev/adc-id", "mv /dev/adc-id /dev/buzzer",
                                      "mkdir /dev/adc-id", "ln -s x /dev/adc-id", "rmdir /dev/adc-id"})
        EXPECT_THAT(run("hx-sim run -- " + std::string{command}), statusIs(1));

    EXPECT_THAT(run("stat -c '%a %u' /dev/null"), outputIs("666 0\n"));
}

} // namespace
