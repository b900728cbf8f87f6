// SPDX-License-Identifier: LicenseRef-HXAux
// `hxaux backlight serve`, where it cannot serve or must wait.
#include "testing/Command.h"
#include "tests/tools/hxaux/OnUnit.h"

namespace serve_test {

using namespace hxtest;
using testing::AllOf;

// The next line of a program that is not silent.
std::string lineWith(Process& program, const std::string& part)
{
    std::string line = program.line();
    while (line.find(part) == std::string::npos && line != "(ended)" && line != "(silent)")
        line = program.line();
    return line;
}

TEST(Serve, NeedsTheSettingsFile)
{
    EXPECT_THAT(
        onUnit("hxaux backlight serve", {"fail = /opt/etc/hxaux.ini open EACCES"}),
        AllOf(errorIs("backlight serve: the settings file /opt/etc/hxaux.ini cannot be opened\n"), statusIs(3)));
}

TEST(Serve, IsRefusedToASecondProcessAsJsonToo)
{
    const Unit unit;
    Process first = unit.start({"backlight", "serve"});
    ASSERT_EQ(lineWith(first, "serving"), "serving the automatic backlight");

    const Outcome second = unit.run("hxaux backlight serve --json");

    EXPECT_THAT(second, AllOf(errorIs(""), statusIs(5)));
    EXPECT_EQ(jsonOf(second)["errors"][0]["text"],
              "another process already serves the automatic backlight of this unit");
}

TEST(Serve, SaysThatAnotherProgramIsAveraging)
{
    const Unit unit;
    Process averaging = unit.start({"light", "--average", "--watch", "--every", "0.1"});
    ASSERT_NE(lineWith(averaging, "average"), "(ended)");

    Process serving = unit.start({"backlight", "serve"});

    EXPECT_EQ(lineWith(serving, "averag"),
              "another program is averaging the light sensor; the automatic backlight waits until it stops");
    EXPECT_EQ(lineWith(serving, "serving"), "serving the automatic backlight");
}

} // namespace serve_test
