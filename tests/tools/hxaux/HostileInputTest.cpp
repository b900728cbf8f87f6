// SPDX-License-Identifier: LicenseRef-HXAux
// Careless and hostile input: refused in one line, without any effect on the unit.
#include "testing/Command.h"
#include "tools/hxaux/Objects.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace hxaux;
using namespace hxtest;
using testing::AllOf;

namespace {

namespace fs = std::filesystem;

std::string quoted(const std::string& word)
{
    std::string text = "'";
    for (const char character : word)
        text += character == '\'' ? "'\\''" : std::string(1, character);
    return text + "'";
}

// One line of text without control characters.
MATCHER(IsOnePlainLine, "")
{
    const auto isControl = [](char one) { return (one >= 0 && one < ' ') || one == 0x7F || one == '\x9b'; };
    return !arg.empty() && arg.back() == '\n' && std::none_of(arg.begin(), arg.end() - 1, isControl);
}

auto refusedWith(int status)
{
    return AllOf(outputIs(""), testing::Field("error", &Outcome::error, IsOnePlainLine()), statusIs(status));
}

const std::array<std::string, 16> kNoValues{"",
                                            " ",
                                            "x",
                                            "\xff\xfe",
                                            "\x1b[31m",
                                            "\xc2\x9b[2J",
                                            "1\n2",
                                            "1e999",
                                            "nan",
                                            "inf",
                                            "0x",
                                            "1 ",
                                            "--",
                                            "$(reboot)",
                                            "../../../etc/passwd",
                                            "99999999999999999999"};

bool isChecked(const Argument& argument)
{
    return argument.kind == cli::Kind::Integer || argument.kind == cli::Kind::Real ||
           argument.kind == cli::Kind::Choice;
}

std::string goodValue(const Argument& argument)
{
    if (argument.names != nullptr)
        return argument.names->all().front();
    return isChecked(argument) ? std::to_string(static_cast<long long>(argument.least)) : "x";
}

// The call with one value replaced; those in front of it, and all that are required, are good ones.
std::string callWith(const Object& object, const Verb& verb, const Argument& replaced, const std::string& word)
{
    std::string command = "hxaux " + cli::spoken(object, verb);
    bool isOption = true;
    for (const Argument& value : verb.values) {
        const bool isIt = value.name == replaced.name;
        if (isIt)
            isOption = false;
        else if (value.presence == cli::Presence::Optional && !isOption)
            continue;
        command += " " + quoted(isIt ? word : goodValue(value));
    }
    return isOption ? command + " --" + std::string(replaced.name) + " " + quoted(word) : command;
}

/// A simulated unit with a snapshot of its visible state, except the time.
class WatchedUnit {
public:
    [[nodiscard]] Outcome run(const std::string& command) const { return unit_.run(command); }
    [[nodiscard]] std::string everything() const
    {
        return unit_.run("sh -c 'hx-sim properties | grep -v diagnostics.time; cat /opt/etc/hxaux.ini 2>&1'").output;
    }

private:
    Unit unit_;
};

} // namespace

// The empty "--" ends the options and is not a value, so an optional value is then omitted.
TEST(HostileValue, IsRefusedByEachVerbInOneLine)
{
    int refused = 0;
    for (const Object* object : program().objects)
        for (const Verb& verb : object->verbs)
            for (const auto* group : {&verb.values, &verb.options})
                for (const Argument& argument : *group)
                    for (const std::string& word : kNoValues) {
                        if (!isChecked(argument) || (word == "--" && argument.presence != cli::Presence::Required))
                            continue;
                        EXPECT_THAT(run(callWith(*object, verb, argument, word)), refusedWith(2));
                        ++refused;
                    }
    EXPECT_GT(refused, 500) << "the table of verbs was not walked";
}

TEST(MistakenValue, OutsideItsRangeIsRefusedByEachVerb)
{
    int refused = 0;
    for (const Object* object : program().objects)
        for (const Verb& verb : object->verbs)
            for (const auto* group : {&verb.values, &verb.options})
                for (const Argument& argument : *group) {
                    if (argument.kind != cli::Kind::Integer && argument.kind != cli::Kind::Real)
                        continue;
                    for (const double outside : {argument.least - 1, argument.most + 1}) {
                        const std::string number = std::to_string(static_cast<long long>(outside));
                        EXPECT_THAT(run(callWith(*object, verb, argument, number)), refusedWith(2));
                        ++refused;
                    }
                }
    EXPECT_GT(refused, 50) << "the table of verbs was not walked";
}

TEST(MistakenCall, WithMissingOrTooManyArgumentsIsRefusedByEachVerb)
{
    for (const Object* object : program().objects)
        for (const Verb& verb : object->verbs) {
            std::string whole = "hxaux " + cli::spoken(*object, verb);
            bool takesMore = false;
            for (const Argument& value : verb.values) {
                if (value.presence != cli::Presence::Optional) {
                    EXPECT_THAT(run(whole), refusedWith(2));
                }
                whole += " " + quoted(goodValue(value));
                takesMore = takesMore || value.presence == cli::Presence::Repeated;
            }
            if (!takesMore) {
                EXPECT_THAT(run(whole + " extra"), refusedWith(2));
            }
            EXPECT_THAT(run(whole + " --nonsense"), refusedWith(2));
        }
}

TEST(HostileWord, IsRefusedAsObjectVerbOptionAndExtraArgument)
{
    for (const std::string& word : kNoValues) {
        if (word == "--")
            continue;
        EXPECT_THAT(run("hxaux " + quoted(word)), refusedWith(2));
        EXPECT_THAT(run("hxaux settings " + quoted(word)), refusedWith(2));
        EXPECT_THAT(run("hxaux backlight set 1 " + quoted(word)), refusedWith(2));
        if (!word.empty()) {
            EXPECT_THAT(run("hxaux backlight set 1 --" + quoted(word)), refusedWith(2));
        }
    }
}

TEST(HostileWord, IsRefusedAsJsonThatIsJson)
{
    for (const std::string& word : kNoValues) {
        const Outcome outcome = run("hxaux --json backlight set " + quoted(word));
        EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(2)));
        EXPECT_EQ(jsonOf(outcome)["status"], 2);
        EXPECT_THAT(outcome.output, IsOnePlainLine());
    }
}

TEST(HostileText, IsNotStoredAndChangesNothing)
{
    const WatchedUnit unit;
    const std::string before = unit.everything();
    const std::string tooLong(300, 'x');

    for (const std::string& text : {std::string("a\nABL_k=1"), std::string("a\r"), std::string("\x1b[31m"),
                                    std::string(" x"), std::string("x\x7f"), tooLong}) {
        EXPECT_THAT(unit.run("hxaux settings set KEY " + quoted(text)), refusedWith(2));
        EXPECT_THAT(unit.run("hxaux settings set " + quoted(text) + " 1"), refusedWith(2));
        EXPECT_THAT(unit.run("hxaux eeprom set PCB_REV " + quoted(text)), refusedWith(2));
        EXPECT_THAT(unit.run("hxaux eeprom set " + quoted(text) + " 1"), refusedWith(2));
    }
    for (const char* key : {"", "a=b", ";a"})
        EXPECT_THAT(unit.run("hxaux settings set " + quoted(key) + " 1"), refusedWith(2));
    for (const char* text : {"", "a b", "\xc3\xbc", "\xff"})
        EXPECT_THAT(unit.run("hxaux eeprom set PCB_REV " + quoted(text)), refusedWith(2));
    for (const std::string& word : kNoValues) {
        if (word == "--")
            continue;
        EXPECT_THAT(unit.run("hxaux power video " + quoted(word)), refusedWith(2));
        EXPECT_THAT(unit.run("hxaux config video " + quoted(word)), refusedWith(2));
    }
    for (const std::string& key : {std::string(), std::string("\x1b[31m"), std::string("1\n2"), std::string("1 ")})
        for (const char* const store : {"settings", "eeprom"})
            EXPECT_THAT(unit.run(std::string("hxaux ") + store + " get " + quoted(key)), refusedWith(2));
    EXPECT_THAT(unit.run("hxaux eeprom set A:B 1"), refusedWith(2));
    EXPECT_THAT(unit.run("hxaux locks reset /etc/passwd"), refusedWith(2));
    EXPECT_THAT(unit.run("hxaux locks reset ''"), refusedWith(2));
    EXPECT_EQ(unit.everything(), before);
}

TEST(HostileFile, IsRefusedAndTouchesNothing)
{
    const WatchedUnit unit;
    const std::string before = unit.everything();
    const fs::path folder = fs::temp_directory_path() / ("hxaux-hostile-" + std::to_string(getpid()));
    fs::create_directory(folder);
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    fs::create_symlink("loop", folder / "loop");
    std::ofstream(folder / "\x1b[31m") << "x";
    std::ofstream(folder / "empty") << "";
    std::ofstream(folder / "zeros") << std::string(100000, '\0');

    for (const char* const command : {"upgrade ss ", "upgrade front ", "upgrade fpga ", "verify ss ", "verify fpga "})
        for (const std::string& name :
             {folder.string(), (folder / "fifo").string(), (folder / "loop").string(), (folder / "\x1b[31m").string(),
              (folder / "empty").string(), (folder / "missing").string(), (folder / std::string(300, 'x')).string(),
              (folder / "empty").string() + "/x", std::string(5000, 'x'), std::string(), std::string("/dev/zero"),
              std::string("/dev/null"), std::string("/dev/adc-id"), std::string("/proc/self/mem")})
            EXPECT_THAT(unit.run(std::string("hxaux ") + command + quoted(name)), refusedWith(3));
    EXPECT_THAT(unit.run("hxaux upgrade ss " + (folder / "zeros").string()), refusedWith(3));
    EXPECT_EQ(unit.everything(), before);
    fs::remove_all(folder);
}

TEST(HostileFile, ThatTheUserMayNotReadIsRefused)
{
    const fs::path file = fs::temp_directory_path() / ("hxaux-secret-" + std::to_string(getpid()));
    std::ofstream(file) << "x";
    fs::permissions(file, fs::perms::none);

    const Outcome outcome = run(boundByPermissions() + "hxaux upgrade fpga " + file.string());

    fs::remove(file);
    EXPECT_THAT(outcome, AllOf(errorMatches("Permission denied"), refusedWith(3)));
}

// Texts on the unit from production, other programs or a broken EEPROM.
TEST(HostileTextOfTheUnit, IsShownAsOnePlainLine)
{
    const Unit unit;
    (void)unit.run("sh -c 'printf \"ABL_k=\\033[2J\\302\\233x\\377\\n\" >/opt/etc/hxaux.ini'");

    for (const char* const command : {"hxaux settings get ABL_k", "hxaux settings get ABL_k --json"}) {
        const Outcome outcome = unit.run(command);
        EXPECT_THAT(outcome, AllOf(errorIs(""), statusIs(0)));
        EXPECT_THAT(outcome.output, IsOnePlainLine());
    }
    EXPECT_EQ(jsonOf(unit.run("hxaux settings get ABL_k --json"))["result"]["ABL_k"], "\x1b[2J\xc2\x9bx\xef\xbf\xbd");
}

TEST(HostileTextOfTheUnit, IsNamedByTheDoctor)
{
    const Unit unit;
    (void)unit.run("sh -c 'printf \"ABL_k=\\033[2J\\n\" >/opt/etc/hxaux.ini'");

    EXPECT_THAT(unit.run("hxaux doctor settings-file"),
                AllOf(outputMatches("'\\\\x1b\\[2J' is not a number"), statusIs(1)));
}

TEST(SettingsPathThatIsNotAFile, DoesNotKeepTheDoctorWaiting)
{
    const Unit unit;
    (void)unit.run("mkfifo /opt/etc/hxaux.ini");

    EXPECT_THAT(unit.run("hxaux doctor settings-file"),
                AllOf(outputMatches("/opt/etc/hxaux.ini: not a regular file"), statusIs(1)));
}

// A device that gets the number of a closed output must not receive the output.
TEST(ClosedOutput, IsReportedAndNotTakenForADevice)
{
    const Unit unit;

    EXPECT_THAT(unit.run("sh -c 'hxaux monitor --count 1 >&-; echo status $? >&2'"),
                errorIs("hxaux: standard output cannot be written\nstatus 3\n"));
    EXPECT_THAT(unit.run("sh -c 'hxaux backlight set 300 2>&-; echo status $?'"), outputIs("status 2\n"));
}
