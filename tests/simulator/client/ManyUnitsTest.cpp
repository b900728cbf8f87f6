// SPDX-License-Identifier: LicenseRef-HXAux
// Many units at once, each with a program of its own; scripts/bench-units does the same with a hundred. ClientTest.cpp
// names the hx-sim of this build.
#include "testing/Command.h"
#include <hx-sim/client.h>

#include <gmock/gmock.h>

#include <map>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace many_units_test {

/// Units whose light is their number; on each a program sets a level of its own, again and again, until it fails.
class ManyUnits : public testing::Test {
protected:
    static constexpr int kCount = 8;
    static int levelOf(int number) { return 10 + 20 * number; }

    std::map<int, hxsim::Unit> units{};
    std::map<int, hxsim::Program> programs{};

    ManyUnits()
    {
        for (int number = 0; number < kCount; ++number) {
            hxsim::Unit& unit =
                units.try_emplace(number, hxsim::Options{{"light = " + std::to_string(number)}}).first->second;
            const std::string level = std::to_string(levelOf(number));
            programs.emplace(number,
                             unit.run({"sh", "-c", "while hxaux backlight set " + level + "; do :; done; exit 7"}));
        }
        for (auto& [number, unit] : units)
            unit.waitFor("backlight.level", levelOf(number), 60s);
    }
};

TEST_F(ManyUnits, HaveValuesOfTheirOwn)
{
    units.at(3).set("light", 500);

    for (auto& [number, unit] : units) {
        EXPECT_EQ(unit.get("light"), number == 3 ? "500" : std::to_string(number));
        EXPECT_TRUE(unit.check("never backlight.level != " + std::to_string(levelOf(number)) + " for 50ms"));
    }
}

TEST_F(ManyUnits, HaveFailuresOfTheirOwn)
{
    units.at(3).fail("/dev/backlight", "0x40010003");

    EXPECT_EQ(programs.at(3).wait(), 7);
    for (auto& [number, program] : programs)
        EXPECT_EQ(program.isRunning(), number != 3);
    EXPECT_THAT(units.at(3).log(), HasSubstr("!EIO"));
    EXPECT_THAT(units.at(4).log(), Not(HasSubstr("!EIO")));
}

TEST_F(ManyUnits, ContinueWhenOthersStop)
{
    for (int number = 0; number < kCount; number += 2) {
        programs.erase(number);
        units.erase(number);
    }

    for (auto& [number, unit] : units) {
        unit.sleep(1ms); // what follows counts from here
        EXPECT_TRUE(unit.check("request /dev/backlight 0x40010003 within 60s"));
        EXPECT_TRUE(programs.at(number).isRunning());
    }
}

} // namespace many_units_test
