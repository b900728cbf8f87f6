// SPDX-License-Identifier: LicenseRef-HXAux
// hx-sim convert: recordings become scenarios, which are played with real programs.
#include "testing/Command.h"
#include "testing/FileContent.h"
#include "testing/TemporaryFolder.h"

#include <filesystem>

using namespace hxtest;
using testing::AllOf;
using testing::HasSubstr;

namespace convert_test {

class Convert : public testing::Test {
protected:
    TemporaryFolder folder{};

    [[nodiscard]] Outcome inFolder(const std::string& command) const
    {
        return run("cd " + folder.path() + " && " + command);
    }
    /// The scenario of what a program does on a unit with these options.
    std::string scenarioOf(const std::string& options, const std::string& program)
    {
        EXPECT_THAT(inFolder("hx-sim record -o x.recording " + options + " -- " + program), statusIs(0));
        EXPECT_THAT(inFolder("hx-sim convert x.recording -- " + program),
                    AllOf(statusIs(0), errorMatches("^hx-sim convert: [0-9]+ lines in x.scenario\n$"), outputIs("")));
        return fileContent(folder / "x.scenario");
    }
    [[nodiscard]] Outcome play() const { return inFolder("hx-sim play scenario --virtual x.scenario"); }
};

TEST_F(Convert, MakesAScenarioThatTheRecordedProgramPasses)
{
    const std::string scenario = scenarioOf("--set voltage.0=11", "hxaux voltage 0");

    EXPECT_EQ(scenario, "hx-sim scenario 1\n# Made by hx-sim convert from x.recording.\nset voltage.0.raw 1138\n"
                        "run hxaux voltage 0\nwait request /dev/adc-id open rdwr nonblock within 61s\n"
                        "wait request /dev/adc-id get 0 within 61s\n");
    // A scenario is over with its last line, whatever its programs still have to print.
    ASSERT_THAT(inFolder("echo 'wait output voltage' >>x.scenario"), statusIs(0));
    EXPECT_THAT(play(), AllOf(statusIs(0), outputMatches("hxaux: voltage 0: 11.002 V")));
}

TEST_F(Convert, MakesAScenarioThatAnotherProgramFails)
{
    (void)scenarioOf("", "hxaux voltage 0");
    ASSERT_THAT(inFolder("sed -i s/voltage.0$/voltage\\ 1/ x.scenario"), statusIs(0));

    EXPECT_THAT(play(),
                AllOf(statusIs(1), outputMatches("FAILED .*x.scenario:5: wait request /dev/adc-id get 0 within")));
}

TEST_F(Convert, MakesAScenarioThatFailsWhenTheCallsComeInAnotherOrder)
{
    (void)scenarioOf("", "hxaux voltage");
    EXPECT_THAT(play(), statusIs(0));
    ASSERT_THAT(inFolder("sed -i '6{h;d};12{G}' x.scenario"), statusIs(0)); // "get 1" behind "get 7"

    EXPECT_THAT(play(), AllOf(statusIs(1), outputMatches("FAILED .*x.scenario:12: wait request /dev/adc-id get 1")));
}

TEST_F(Convert, BringsTheUnitToWhatTheProgramFound)
{
    const std::string scenario =
        scenarioOf("--set light=77 --set absent=/dev/frontled --set 'fail=/dev/backlight 0x40010003 EIO 1'",
                   "sh -c 'hxaux light; hxaux backlight set 3; hxaux backlight set 3; hxaux led color red; true'");

    EXPECT_THAT(scenario, AllOf(HasSubstr("\nremove /dev/frontled\n"), HasSubstr("\nset light.channels 0x"),
                                HasSubstr("\nfail /dev/backlight 0x40010003 EIO 1\n"),
                                HasSubstr("request /dev/backlight 0x40010003 00 03 !EIO within")));
    EXPECT_THAT(play(), AllOf(statusIs(0), outputMatches("sh: light: 76 lux")));
}

TEST_F(Convert, NamesAnswersThatNoPropertyCauses)
{
    (void)scenarioOf("", "hxaux voltage 0");
    ASSERT_THAT(inFolder("sed -i 's/-> 00 00/-> 07 00/' x.recording && hx-sim convert x.recording -- hxaux voltage 0"),
                statusIs(0));

    EXPECT_THAT(inFolder("cat x.scenario"), outputMatches("\n# /dev/adc-id get 0 -> [0-9]+: no property causes this "));
}

TEST_F(Convert, KeepsTheWordsOfTheProgram)
{
    (void)scenarioOf("", R"(sh -c 'x="a # b"; hxaux voltage 0; echo "$x" '\''$y\\'\''' '#z' '')");

    ASSERT_THAT(inFolder("echo 'wait output \"a # b\"' >>x.scenario"), statusIs(0));

    EXPECT_THAT(play(), AllOf(statusIs(0), outputMatches("sh: a # b \\$y")));
}

TEST_F(Convert, AcceptsEachRecordedExample)
{
    for (const auto& entry : std::filesystem::directory_iterator{HX_RECORDINGS}) {
        const std::string file = entry.path();
        ASSERT_THAT(inFolder("hx-sim convert " + file + " -o x.scenario -- true"), statusIs(0)) << file;
        EXPECT_THAT(play(), AllOf(statusIs(1), outputMatches("FAILED .*wait request")))
            << file; // the program calls nothing
    }
}

TEST_F(Convert, NamesTheLineOfAMistake)
{
    (void)scenarioOf("", "hxaux voltage 0");
    ASSERT_THAT(inFolder("sed -i '3s/adc-id/adc-di/' x.recording && rm x.scenario"), statusIs(0));

    EXPECT_THAT(
        inFolder("hx-sim convert x.recording -- hxaux voltage 0"),
        AllOf(statusIs(3), errorMatches("^hx-sim: x.recording:3: the unit has no device \"/dev/adc-di\"; did you "
                                        "mean '/dev/adc-id'\\?\n$")));
    EXPECT_FALSE(std::filesystem::exists(folder / "x.scenario"));
}

TEST_F(Convert, RefusesWhatCannotBecomeAScenario)
{
    (void)folder.file("empty.recording", "hx-sim recording 1\n");
    EXPECT_THAT(inFolder("hx-sim convert empty.recording -- true"),
                AllOf(statusIs(3), errorMatches("empty.recording: the recording has no calls")));
    EXPECT_THAT(inFolder("hx-sim convert missing.recording -- true"), statusIs(3));
    EXPECT_THAT(inFolder("hx-sim convert empty.recording"), statusIs(2));
    (void)scenarioOf("", "hxaux voltage 0");
    EXPECT_THAT(inFolder("hx-sim convert x.recording -- sh -c 'a\nb'"),
                AllOf(statusIs(1), errorMatches("a scenario cannot have a line break")));
    EXPECT_THAT(inFolder("hx-sim convert x.recording -o /dev/null -- true"),
                AllOf(statusIs(1), errorMatches("a device")));
}

} // namespace convert_test
