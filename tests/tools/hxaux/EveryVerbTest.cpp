// SPDX-License-Identifier: LicenseRef-HXAux
// What holds for every verb of the table, on a healthy unit and on one whose devices are missing.
#include "testing/Command.h"
#include "tools/cli/Arguments.h"
#include "tools/hxaux/Objects.h"

#include <set>

namespace every_verb_test {

using namespace hxtest;
using nlohmann::json;
using testing::AllOf;
using testing::IsEmpty;
using testing::Not;

// They last longer than a test.
const std::set<std::string> kEndless{"hxaux backlight serve", "hxaux video minimize 1 --for 10"};

struct Called {
    const hxaux::Object* object;
    const hxaux::Verb* verb;
    std::string command;
};

std::vector<Called> everyVerb()
{
    std::vector<Called> all;
    for (const hxaux::Object* const object : hxaux::program().objects)
        for (const hxaux::Verb& verb : object->verbs) {
            const std::string example(verb.example);
            const bool repeats = example.find("--watch") != std::string::npos || object->name == "monitor";
            if (!kEndless.contains(example))
                all.push_back({object, &verb, example + (repeats ? " --count 1" : "")});
        }
    return all;
}

// A unit that lacks what the library opens.
const std::vector<std::string> kBare{
    "absent=/dev/adc-id",        "absent=/dev/fpga-version", "absent=/dev/backlight",    "absent=/dev/buzzer",
    "absent=/dev/diag-id",       "absent=/dev/conf-id",      "absent=/dev/dig-io",       "absent=/dev/frontled",
    "absent=/dev/lightsensor",   "absent=/dev/power-id",     "absent=/dev/front-mcu-id", "absent=/dev/analog-video1",
    "absent=/dev/analog-video2", "absent=/dev/fpgaflash",    "absent=/dev/uart-redir",   "absent=/dev/ttyS0",
    "absent=libjida.so",         "daemon.running=off"};

// What every document says of its own call; `last` is that of the end.
void checkDocuments(const Called& called, const Outcome& outcome)
{
    const std::vector<json> documents = jsonLinesOf(outcome);
    ASSERT_THAT(documents, Not(IsEmpty())) << outcome;
    for (const json& document : documents) {
        EXPECT_EQ(document["format"], 3) << outcome;
        EXPECT_EQ(document["object"], called.object->name) << outcome;
        EXPECT_EQ(document["verb"], called.verb->name) << outcome;
        for (const auto& [key, unit] : document["units"].items())
            EXPECT_TRUE(document["result"].contains(key)) << key << outcome;
    }
    EXPECT_EQ(documents.back()["status"], outcome.status) << outcome;
}

bool hasErrors(const Outcome& outcome)
{
    for (const json& document : jsonLinesOf(outcome))
        if (!document["errors"].empty())
            return true;
    return false;
}

TEST(EveryVerb, PrintsNothingButItsDocumentsAsJson)
{
    const Unit unit({"touch.finger=follow"}, 20);
    for (const Called& called : everyVerb()) {
        const Outcome outcome = unit.run(called.command + " --json");

        checkDocuments(called, outcome);
        EXPECT_EQ(outcome.error, "") << outcome;
        EXPECT_EQ(hasErrors(outcome), outcome.status != 0) << outcome;
    }
}

TEST(EveryVerb, SaysWhatFailsWhereAllDevicesAreMissing)
{
    const Unit unit(kBare);
    int failed = 0;
    for (const Called& called : everyVerb()) {
        const Outcome outcome = unit.run(called.command + " --json");

        checkDocuments(called, outcome);
        EXPECT_EQ(outcome.error, "") << outcome;
        EXPECT_EQ(hasErrors(outcome), outcome.status != 0) << outcome;
        failed += outcome.status == 1 ? 1 : 0;
    }
    EXPECT_GT(failed, 60);
}

TEST(EveryVerb, NamesItselfInFrontOfItsMistake)
{
    const Unit unit(kBare);
    for (const Called& called : everyVerb()) {
        const Outcome outcome = unit.run(called.command);
        if (outcome.status != 1)
            continue;

        const std::string name = cli::spoken(*called.object, *called.verb) + ": ";
        EXPECT_THAT(outcome.error, testing::StartsWith(name)) << outcome;
        EXPECT_EQ(outcome.error.find('{'), std::string::npos) << outcome;
    }
}

TEST(EveryVerb, RefusesAValueOfEachFlag)
{
    for (const Called& called : everyVerb())
        for (const hxaux::Argument& option : cli::optionsOf(hxaux::program(), *called.verb)) {
            if (option.kind != cli::Kind::Flag)
                continue;
            const std::string name = "--" + std::string(option.name);
            EXPECT_THAT(run(called.command + " " + name + "=no"),
                        AllOf(errorMatches(name + " takes no value\n$"), outputIs(""), statusIs(2)));
        }
}

} // namespace every_verb_test
