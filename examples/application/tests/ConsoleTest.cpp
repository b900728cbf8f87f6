// SPDX-License-Identifier: LicenseRef-HXAux
// The console as its users meet it; the environment variable CONSOLE names the program.
#include <hx-sim/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

using namespace std::chrono_literals;

namespace {

/// It is dark, and the front LED refuses a color once.
struct Console : hxsim::UnitTest {
    const std::string file = testing::TempDir() + "console-" + unit.name();
    hxsim::Program console = unit.run({std::getenv("CONSOLE"), file});

    Console() : UnitTest{{{"light = 20", "fail = /dev/frontled 0x40030045 EIO 1"}, 5}} {}
    ~Console() override { std::remove(file.c_str()); }
    std::string saved() const
    {
        std::string text;
        std::getline(std::ifstream{file}, text);
        return text;
    }
};

TEST_F(Console, DimsWarnsAndSaves)
{
    unit.waitFor("backlight.level", 40, 60s);
    unit.set("light", 2000);
    unit.waitFor("backlight.level", 200, 60s);
    EXPECT_TRUE(sees("never request /dev/backlight 0x40010003 for 5s"));
    unit.set("voltage.0", 11);
    unit.waitFor("led.color", "15 0 0", 60s);
    unit.press("front");
    unit.waitFor("led.color", "0 15 0", 60s);
    EXPECT_TRUE(sees("power.state = suspended within 50s"));
    EXPECT_EQ(saved(), "1");
}

} // namespace
