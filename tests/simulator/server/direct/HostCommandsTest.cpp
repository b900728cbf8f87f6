// SPDX-License-Identifier: LicenseRef-HXAux
// The commands of hx-sim on a host in this process, word by word.
#include "simulator/server/HostCommands.h"

#include "simulator/server/Host.h"
#include "testing/RowTest.h"
#include "testing/TemporaryFolder.h"
#include "tests/simulator/model/ModelTest.h"

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace host_commands_test {

using namespace hxsim;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// A place for units that are this test's alone.
class Place {
public:
    Place()
    {
        const char* const before = std::getenv("XDG_RUNTIME_DIR");
        before_ = before == nullptr ? "" : before;
        setenv("XDG_RUNTIME_DIR", scratch_.path().c_str(), 1);
    }
    ~Place()
    {
        if (before_.empty())
            unsetenv("XDG_RUNTIME_DIR");
        else
            setenv("XDG_RUNTIME_DIR", before_.c_str(), 1);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

private:
    TemporaryFolder scratch_;
    std::string before_;
};

class HostCommandsTest : public testing::Test {
protected:
    const Place place{};
    Host host{"commands", {}};

    CommandResult run(const std::vector<std::string>& words) { return runHostCommand(host, -1, words); }
    std::string text(const std::vector<std::string>& words)
    {
        const CommandResult result = run(words);
        EXPECT_TRUE(result.good) << result.text;
        return result.text;
    }
    std::string refusal(const std::vector<std::string>& words)
    {
        const CommandResult result = run(words);
        EXPECT_FALSE(result.good) << result.text;
        return result.text;
    }
    std::string property(const std::string& name) { return host.unit().properties().get(name); }
    nlohmann::json json(const std::vector<std::string>& words) { return nlohmann::json::parse(text(words)); }
};

TEST_F(HostCommandsTest, SetAllOrNothing)
{
    EXPECT_EQ(text({"set", "backlight.level=5", "inputs.1 = on"}), "");
    EXPECT_EQ(property("backlight.level"), "5");
    EXPECT_EQ(property("inputs.1"), "on");

    EXPECT_EQ(refusal({"set", "backlight.level=6", "inputs.1=maybe"}), "inputs.1: 'maybe' is neither on nor off");
    EXPECT_EQ(property("backlight.level"), "5");
}

TEST_F(HostCommandsTest, SetNothingThatWouldBeCutOrDivided)
{
    const std::string before = property("eeprom.main.UNIT_SERIAL");

    EXPECT_EQ(refusal({"set", "eeprom.main.UNIT_SERIAL=A#1"}),
              R"('#' would begin a comment in "eeprom.main.UNIT_SERIAL=A#1")");
    EXPECT_EQ(refusal({"set", "backlight.level=5", "# nothing"}), R"('#' would begin a comment in "# nothing")");
    EXPECT_EQ(refusal({"set", "backlight.level=5\nled.color=0 1 0"}),
              R"("backlight.level=5\nled.color=0 1 0" has more than one line)");
    EXPECT_EQ(refusal({"set", ""}), R"("" is not of the form: key = value)");
    EXPECT_EQ(refusal({"set", " \t"}), R"(" \x09" is not of the form: key = value)");

    EXPECT_EQ(property("eeprom.main.UNIT_SERIAL"), before);
    EXPECT_NE(property("backlight.level"), "5");
    EXPECT_EQ(text({"do", "production", "main", "UNIT_SERIAL", "A#1"}), "") << "an action takes it";
    EXPECT_EQ(property("eeprom.main.UNIT_SERIAL"), "A#1");
}

TEST_F(HostCommandsTest, GetALineForEachName)
{
    EXPECT_EQ(text({"get", "backlight.level", "inputs.2"}), "128\noff\n");
    EXPECT_EQ(refusal({"get", "backlight.levle"}),
              "the unit has no property 'backlight.levle'; did you mean 'backlight.level'?");
}

TEST_F(HostCommandsTest, ListPropertiesWithTheirMeaning)
{
    EXPECT_THAT(text({"properties"}),
                testing::StartsWith("backlight.level = 128    # level of the display's backlight\n"));
    EXPECT_THAT(text({"properties"}),
                HasSubstr("power.state = running    # running, suspended, heating or off (read only)\n"));

    const nlohmann::json all = json({"properties", "--json"});
    EXPECT_EQ(all.at("backlight.level").at("value"), "128");
    EXPECT_EQ(all.at("backlight.level").at("writable"), true);
    EXPECT_EQ(all.at("power.state").at("writable"), false);
}

TEST_F(HostCommandsTest, ListActionsWithTheirWords)
{
    EXPECT_THAT(text({"actions"}), HasSubstr("press front [short|long|MILLISECONDS]    # presses"));
    EXPECT_EQ(json({"actions", "--json"}).at("supply").at("usage"), "on|off");
}

TEST_F(HostCommandsTest, KeepATableOfThePageWhole)
{
    const std::string page = text({"properties-page"});

    EXPECT_THAT(page, HasSubstr("| `backlight.level` | `128` | level of the display's backlight |\n"));
    EXPECT_THAT(page, HasSubstr("| `supply on\\|off` | applies or removes the supply voltage |\n"));
}

TEST_F(HostCommandsTest, DoWhatCanBeDoneToTheUnit)
{
    EXPECT_EQ(text({"do", "touch", "3"}), "");
    EXPECT_EQ(property("touch.finger"), "3");
    EXPECT_EQ(refusal({"do"}), "missing argument: an action");
    EXPECT_EQ(refusal({"do", "touch"}), "touch POINT");
}

TEST_F(HostCommandsTest, InjectShowAndClearFailures)
{
    EXPECT_EQ(text({"fail", "/dev/adc-id", "get", "3", "EBUSY", "2"}), "");
    EXPECT_EQ(text({"fail", "/dev/buzzer", "open"}), "");
    EXPECT_EQ(text({"faults"}), "/dev/adc-id get 3 EBUSY: 2 left, hit 0 times\n"
                                "/dev/buzzer open EIO: all, hit 0 times\n");
    const nlohmann::json all = json({"faults", "--json"});
    EXPECT_EQ(all[0].at("left"), 2);
    EXPECT_EQ(all[1].at("left"), nullptr);
    EXPECT_EQ(all[1].at("call"), "open");

    EXPECT_EQ(text({"unfail", "/dev/adc-id"}), "");
    EXPECT_EQ(host.unit().faults().all().size(), 1U);
    EXPECT_EQ(text({"unfail", "/dev/frontled"}), "") << "nothing to clear, but it is there";
    EXPECT_EQ(text({"unfail"}), "");
    EXPECT_TRUE(host.unit().faults().empty());
    EXPECT_THAT(refusal({"unfail", "/dev/frontlde"}), HasSubstr("did you mean '/dev/frontled'?"));
}

TEST_F(HostCommandsTest, RemoveAndRestoreAllOrNothing)
{
    EXPECT_THAT(refusal({"remove", "/dev/buzzer", "/dev/nothing"}), HasSubstr("/dev/nothing"));
    EXPECT_FALSE(host.unit().isAbsent("/dev/buzzer"));

    EXPECT_EQ(text({"remove", "/dev/buzzer", "libjida.so"}), "");
    EXPECT_TRUE(host.unit().isAbsent("libjida.so"));
    EXPECT_EQ(text({"restore", "/dev/buzzer"}), "");
    EXPECT_FALSE(host.unit().isAbsent("/dev/buzzer"));
    EXPECT_TRUE(host.unit().isAbsent("libjida.so"));
}

TEST_F(HostCommandsTest, ListTheDevicesThatProgramsKnow)
{
    EXPECT_EQ(text({"remove", "/dev/buzzer"}), "");
    const nlohmann::json all = json({"devices"});

    EXPECT_TRUE(all.contains("/dev/backlight"));
    EXPECT_NE(all.at("/dev/buzzer"), all.at("/dev/backlight"));
    EXPECT_FALSE(all.contains("/dev/.hxsim-jida")) << "no program knows it";
}

TEST_F(HostCommandsTest, ListNoProgramBeforeOneUsesTheUnit)
{
    EXPECT_EQ(json({"programs"}), nlohmann::json::array());
}

TEST_F(HostCommandsTest, ShowAndClearTheLog)
{
    host.unit().journal().add(Entry{.time = 1500ms, .caller = {7, 8}, .subject = "sleep", .action = "5"});

    EXPECT_EQ(text({"log"}), "    1.500000 7/8 sleep 5\n");
    EXPECT_EQ(json({"log", "--json"}).at("call"), "5");
    EXPECT_EQ(text({"clear"}), "");
    EXPECT_EQ(text({"log"}), "");
}

TEST_F(HostCommandsTest, ShowTheNewestLinesOfALongLogWhole)
{
    for (int i = 0; i < 20000; ++i)
        host.unit().journal().add(Entry{.subject = "sleep", .action = std::to_string(i)});
    const std::string log = text({"log"});

    EXPECT_LE(log.size(), wire::kLargestPacket - sizeof(wire::Head));
    EXPECT_THAT(log, testing::EndsWith("sleep 19999\n"));
    EXPECT_THAT(log, testing::StartsWith("    0.000000 0/0 sleep "));
}

TEST_F(HostCommandsTest, ShowTheScaleOfTime)
{
    EXPECT_EQ(text({"scale"}), "1");
    Host fast{"fast", {2.5}};
    EXPECT_EQ(runHostCommand(fast, -1, {"scale"}).text, "2.5");
}

TEST_F(HostCommandsTest, RampAProperty)
{
    EXPECT_EQ(text({"ramp", "light", "100", "200", "1000000000"}), "");
    EXPECT_EQ(property("light"), "100");
    host.unit().clock().advanceTo(host.unit().clock().now() + 1s);
    EXPECT_EQ(property("light"), "200");

    EXPECT_EQ(refusal({"ramp", "light", "1", "2"}), "missing argument: a property, two values and a time");
    EXPECT_EQ(refusal({"ramp", "light", "low", "2", "1"}), "'low' is not a number");
    EXPECT_THAT(refusal({"ramp", "light", "1", "2", "-1"}), HasSubstr("-1 is outside 0 to "));
    EXPECT_THAT(refusal({"ramp", "ligth", "1", "2", "1"}), HasSubstr("did you mean 'light'?"));
    EXPECT_EQ(property("light"), "200");
}

TEST_F(HostCommandsTest, ListTheCallsThatCanFail)
{
    const nlohmann::json calls = json({"calls", "/dev/ttyS0"});

    EXPECT_TRUE(calls.contains("open"));
    EXPECT_TRUE(calls.contains("tcsetattr"));
    EXPECT_FALSE(json({"calls", "/dev/adc-id"}).contains("tcsetattr"));
}

TEST_F(HostCommandsTest, ListTheNamesThatAConditionMayUse)
{
    const nlohmann::json names = json({"names"});

    EXPECT_THAT(names["properties"], testing::Contains("backlight.level"));
    EXPECT_THAT(names["devices"], testing::Contains("/dev/backlight"));
    EXPECT_THAT(names["devices"], testing::Not(testing::Contains("/dev/.hxsim-jida")));
    EXPECT_EQ(names["properties"].size(), host.unit().properties().all().size());
}

TEST_F(HostCommandsTest, RefuseWhatIsNoCommand)
{
    EXPECT_EQ(refusal({}), "missing command");
    EXPECT_EQ(refusal({"explode"}), "unknown command 'explode'");
    EXPECT_EQ(refusal({"Set"}), "unknown command 'Set'");
}

TEST_F(HostCommandsTest, RecordForOneAtATime)
{
    const TemporaryFolder scratch;
    EXPECT_EQ(refusal({"record", scratch.path() + "/a"}), "missing argument: a file and a process");
    EXPECT_EQ(text({"record", scratch.path() + "/a", "1"}), "");
    EXPECT_EQ(refusal({"record", scratch.path() + "/b", "1"}), "this unit is being recorded already");
    EXPECT_EQ(text({"end-record"}), "0");
    EXPECT_EQ(text({"end-record"}), "0") << "nothing is recorded any more";
}

struct Row : Named {
    Entry entry;
    const char* json;
};

class JsonOfAnEntry : public hxtest::TestWithRow<Row> {};

ROW_TEST(JsonOfAnEntry, HasWhatTheCallHas)
{
    EXPECT_EQ(nlohmann::json::parse(jsonOf(row().entry)), nlohmann::json::parse(row().json));
}

TEST_ROWS(HostCommands, JsonOfAnEntry, kNameOfRow,
          Row{{"Plain"},
              {.time = 250ms, .caller = {1, 2}, .subject = "/dev/x", .action = "close"},
              R"({"time": 0.25, "process": 1, "thread": 2, "subject": "/dev/x", "call": "close"})"},
          Row{{"Request"},
              {.kind = Entry::Kind::Ioctl, .subject = "/dev/x", .request = 0x40010003, .in = {0, 128}},
              R"({"time": 0.0, "process": 0, "thread": 0, "subject": "/dev/x", "call": "0x40010003: 00 80",
                "request": "0x40010003", "in": "00 80"})"},
          Row{{"Failed"},
              {.subject = "/dev/x", .action = "open rdwr", .error = ENOENT},
              R"({"time": 0.0, "process": 0, "thread": 0, "subject": "/dev/x", "call": "open rdwr !ENOENT",
                "error": "ENOENT"})"},
          Row{{"Read"},
              {.subject = "/dev/x", .action = "read 2", .out = {1, 0xFF}},
              R"({"time": 0.0, "process": 0, "thread": 0, "subject": "/dev/x", "call": "read 2 -> 01 ff",
                "out": "01 ff"})"});

} // namespace

} // namespace host_commands_test
