// SPDX-License-Identifier: LicenseRef-HXAux
// The documents of the tool say what the verb table says.
#include "tests/tools/Command.h"
#include "tools/Help.h"
#include "tools/Manual.h"

#include <fstream>
#include <sstream>

using namespace hxtest;
using testing::HasSubstr;

namespace {

std::string page(const std::string& name)
{
    std::ifstream stream(std::string(HX_DOCS) + "/" + name);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

} // namespace

TEST(Reference, IsWhatTheVerbTableSays)
{
    EXPECT_TRUE(page("hxaux-reference.md") == hxaux::markdownReference())
        << "make it anew: build/x86_64/hxaux --reference >docs/hxaux-reference.md";
}

TEST(CommandLinePage, TellsEveryExitStatus)
{
    const std::string text = page("command-line.md");
    for (const auto& [status, meaning] : hxaux::exitMeanings())
        EXPECT_THAT(text, HasSubstr("\n| " + std::to_string(status) + " | " + meaning));
}

TEST(JsonPage, ShowsWhatTheToolPrints)
{
    const Unit unit;

    EXPECT_THAT(page("json.md"), HasSubstr(unit.run("hxaux voltage 0 --json").output));
    EXPECT_THAT(page("json.md"), HasSubstr(unit.run("hxaux voltage 9 --json").output));
}

TEST(CommandLinePage, ShowsWhatDoctorPrints)
{
    const Unit unit({"daemon.running=off"});
    const Outcome outcome = unit.run("hxaux doctor");

    EXPECT_THAT(page("command-line.md"), HasSubstr("$ hxaux doctor\n" + outcome.output + outcome.error));
}

TEST(CommandLinePage, ShowsWhatCallsPrint)
{
    const Unit unit;
    const std::string text = page("command-line.md");

    EXPECT_THAT(text, HasSubstr("$ hxaux voltage 0\n" + unit.run("hxaux voltage 0").output));
    EXPECT_THAT(unit.run("hxaux backlight set 128"), testing::AllOf(outputIs(""), statusIs(0)));
    EXPECT_THAT(text, HasSubstr("$ hxaux backlight get\n" + unit.run("hxaux backlight get").output));
    EXPECT_THAT(text, HasSubstr("$ hxaux voltage 9\n" + unit.run("hxaux voltage 9").error));
}
