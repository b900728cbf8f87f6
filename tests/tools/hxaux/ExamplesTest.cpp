// SPDX-License-Identifier: LicenseRef-HXAux
// The examples, run on a simulated unit; what they print is in examples/expected.
#include "testing/Command.h"
#include "testing/FileContent.h"
#include "testing/RowTest.h"

#include <algorithm>
#include <filesystem>

using namespace hxtest;
using testing::AllOf;

namespace {

namespace fs = std::filesystem;

const fs::path kSources = HX_EXAMPLE_SOURCES;
const std::string kPrograms = HX_EXAMPLE_PROGRAMS;

std::vector<std::string> namesIn(const fs::path& folder, const std::string& extension)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension)
            names.push_back(entry.path().stem());
    }
    std::ranges::sort(names);
    return names;
}

class Example : public hxtest::TestWithRow<std::string> {};

} // namespace

ROW_TEST(Example, PrintsWhatIsExpected)
{
    const std::string& name = row();
    const Unit unit({"touch.finger=follow"});

    EXPECT_THAT(unit.run(kPrograms + "/" + name),
                AllOf(outputIs(fileContent(kSources / "expected" / (name + ".txt"))), errorIs(""), statusIs(0)));
}

TEST_ROWS_IN(
    Each, Example,
    [](const auto& each) {
        std::string name = each;
        std::ranges::replace(name, '-', '_');
        return name;
    },
    namesIn(kSources / "expected", ".txt"));

TEST(Examples, AreAtMostSixtyLinesLong)
{
    for (const std::string& name : namesIn(kSources, ".cpp")) {
        const std::string source = fileContent(kSources / (name + ".cpp"));
        EXPECT_TRUE(name == "tour" || std::ranges::count(source, '\n') <= 60) << name;
    }
}

TEST(Examples, AreAllRun)
{
    for (const std::string& name : namesIn(kSources, ".cpp"))
        EXPECT_TRUE(name == "tour" || name == "firmware-upgrade" || fs::exists(kSources / "expected" / (name + ".txt")))
            << "what it prints on a simulated unit is missing: examples/expected/" << name << ".txt";
}

TEST(Examples, ShowEveryInterface)
{
    std::string all;
    for (const std::string& name : namesIn(kSources, ".cpp"))
        all += name == "tour" ? "" : fileContent(kSources / (name + ".cpp"));
    int interfaces = 0;
    for (const std::string& name : namesIn(kSources.parent_path() / "include/hx-aux", ".h")) {
        const std::string factory = "Get" + name + "(";
        if (fileContent(kSources.parent_path() / "include/hx-aux" / (name + ".h")).find(factory) == std::string::npos)
            continue;
        ++interfaces;
        EXPECT_TRUE(all.find(factory) != std::string::npos) << "no program of examples/ calls " << factory << ")";
    }
    EXPECT_GE(interfaces, 18);
}

TEST(FirmwareUpgradeExample, SaysWhatIsWrongWithAFile)
{
    const Unit unit;

    EXPECT_THAT(unit.run(kPrograms + "/firmware-upgrade /nonexistent.hex"),
                AllOf(outputIs("start: Open failed (1)\n"), statusIs(1)));
}

TEST(Dashboard, ShowsEachLineOnceWhileNothingChanges)
{
    const Unit unit({"inputs.3=on"});

    EXPECT_THAT(
        unit.run(kPrograms + "/dashboard 3"),
        AllOf(outputIs("light    248 lux\nlevel    128 of 255\nsupply   24.0 V\ninputs   0010\n"), statusIs(0)));
}

TEST(Dashboard, LightsTheLedRedWhenTheSupplyIsLow)
{
    const Unit unit({"voltage.0=11"});

    EXPECT_THAT(unit.run(kPrograms + "/dashboard 1"), outputMatches("supply   11.0 V, low"));
    EXPECT_THAT(unit.property("led.color"), testing::HasSubstr("15 0 0"));
}

TEST(Dashboard, AcknowledgesARequestOfTheFrontButtonAndEnds)
{
    const Unit unit({"power.transition=2"});

    EXPECT_THAT(unit.run(kPrograms + "/dashboard"),
                AllOf(outputMatches("power    the front button requests a change of power\npower    acknowledged\n$"),
                      statusIs(0)));
    EXPECT_THAT(unit.property("power.transition"), testing::HasSubstr("0"));
}

TEST(Dashboard, ShowsTheErrorOfAMissingDevice)
{
    const Unit unit({"absent=/dev/backlight"});

    EXPECT_THAT(unit.run(kPrograms + "/dashboard 1"), outputMatches("level    \\(Open failed\\)"));
}
