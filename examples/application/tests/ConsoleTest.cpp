// SPDX-License-Identifier: LicenseRef-HXAux
// The console as its users meet it; the environment variable CONSOLE names the program.
#include <hx-sim/gtest.h>

#include <cstdlib>
#include <fstream>

using namespace std::chrono_literals;

namespace {

/// It is dark, and the front LED refuses a color once.
struct Console : hxsim::UnitTest {
    Console() : UnitTest{{{"light = 20", "fail = /dev/frontled 0x40030045 EIO 1"}, 5}} {}
    hxsim::Program console = unit.run({std::getenv("CONSOLE"), "state-of-googletest"});
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
    EXPECT_EQ(console.wait(), 0);
}

} // namespace
