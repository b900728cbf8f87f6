// SPDX-License-Identifier: LicenseRef-HXAux
// Descriptions, absent parts and the supply of a whole unit.
#include "simulator/model/Unit.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

using namespace hxsim;
using modeltest::refusalOf;

namespace {

class UnitTest : public modeltest::ModelTest {
protected:
    std::string refusal(const std::string& text)
    {
        return refusalOf([&] { unit.describe(text); });
    }
};

TEST_F(UnitTest, TakesPropertiesActionsFaultsAndAbsentPartsFromADescription)
{
    unit.describe("# a cold unit\n"
                  "diagnostics.pcb-temp = -20   # degrees\n"
                  "\n"
                  "\tvoltage.0=12\n"
                  "absent = /dev/backlight\n"
                  "fail = /dev/adc-id get 3 EIO 2\n"
                  "do = touch 4\n");

    EXPECT_EQ(property("diagnostics.pcb-temp"), "-20");
    EXPECT_EQ(property("voltage.0"), "11.998");
    EXPECT_EQ(property("touch.finger"), "4");
    EXPECT_FALSE(node("/dev/backlight").present);
    ASSERT_EQ(unit.faults().all().size(), 1U);
    EXPECT_EQ(unit.faults().all()[0].call, "get 3");
}

TEST_F(UnitTest, TakesADescriptionLineByLine)
{
    unit.describe("led.timing = 1 2 3 4\nled.timing = 5 6 7 8\r\n");

    EXPECT_EQ(property("led.timing"), "5 6 7 8");
}

TEST_F(UnitTest, TakesAnEmptyDescription)
{
    EXPECT_EQ(refusal(""), "");
    EXPECT_EQ(refusal("\n\n# nothing\n"), "");
}

struct Bad : Named {
    const char* text;
    const char* refusal;
};

class BadDescription : public UnitTest, public hxtest::WithRow<Bad> {};

ROW_TEST(BadDescription, IsRefusedWithItsLineAndChangesNothing)
{
    EXPECT_EQ(refusal(std::string{"backlight.level = 1\n"} + row().text), row().refusal);
    EXPECT_EQ(property("backlight.level"), "128");
}

TEST_ROWS(Unit, BadDescription, kNameOfRow,
          Bad{{"NoEqualsSign"}, "voltage.0", "line 2: 'voltage.0' is not of the form: key = value"},
          Bad{{"UnknownProperty"}, "# one\nxyz = 1", "line 3: the unit has no property 'xyz'"},
          Bad{{"NoKey"}, "= 1", "line 2: the unit has no property ''"},
          Bad{{"BadValue"}, "inputs.1 = 2", "line 2: inputs.1: '2' is neither on nor off"},
          Bad{{"ReadOnly"}, "power.state = off", "line 2: power.state can only be read"},
          Bad{{"NoAction"}, "do =", "line 2: 'do' needs an action"},
          Bad{{"BadAction"}, "do = press back", "line 2: press front [short|long|MILLISECONDS]"},
          Bad{{"BadFault"}, "fail = x", "line 2: a fault is written as: NODE CALL [ERRNO] [COUNT]"});

TEST_F(UnitTest, SetsAValueWithAnEqualsSign)
{
    unit.describe("can.1.text = a = b");

    EXPECT_EQ(property("can.1.text"), "a = b");
}

TEST_F(UnitTest, ChecksADescriptionAgainstWhatItsMemoriesHold)
{
    act("erase", {"main"});

    EXPECT_EQ(refusal("do = production main A 1\ndo = forget main A"), "");
    EXPECT_EQ(refusal("do = production main A 1\ndo = forget main ETH"), "line 2: there is no line ETH");
    EXPECT_EQ(property("eeprom.main.text"), "") << "the first line was tried elsewhere";
}

TEST_F(UnitTest, LacksAPartUntilItIsThereAgain)
{
    unit.setAbsent("/dev/backlight", true);
    unit.setAbsent("libjida.so", true);
    EXPECT_TRUE(unit.isAbsent("/dev/backlight"));
    EXPECT_TRUE(unit.isAbsent("libjida.so"));
    EXPECT_THAT(unit.absent(), testing::ElementsAre("/dev/backlight", "libjida.so"));

    unit.setAbsent("/dev/backlight", false);
    EXPECT_TRUE(node("/dev/backlight").present);
    EXPECT_THAT(unit.absent(), testing::ElementsAre("libjida.so"));
}

TEST_F(UnitTest, HasTheFilesThatProgramsMake)
{
    EXPECT_TRUE(unit.hasFile("/opt/etc/hxaux.ini"));
    EXPECT_TRUE(unit.hasFile("/opt/etc"));
    EXPECT_FALSE(unit.hasFile("/dev/backlight"));
}

TEST_F(UnitTest, NamesEachFunctionOfTheBoardLibrary)
{
    EXPECT_EQ(unit.functions().size(), 13U);
    EXPECT_TRUE(unit.functions().contains("JidaI2CWriteReadCombined"));
}

TEST_F(UnitTest, ShowsItsPartsWhenTheSupplyGoesAndComes)
{
    std::string seen;
    unit.whenSupplyFails([&] { seen += "fails "; });
    unit.whenSupplyReturns([&] { seen += "returns "; });

    act("supply", {"off"});
    act("supply", {"off"});
    act("supply", {"on"});
    act("supply", {"on"});

    EXPECT_EQ(seen, "fails returns ") << "once each";
}

TEST_F(UnitTest, HasDevicesThatRefuseRequestsOfOthersAsDriversDo)
{
    int devices = 0;
    for (const auto& [path, found] : unit.nodes()) {
        if (!path.starts_with("/dev/"))
            continue;
        ++devices;
        EXPECT_EQ(put(path, 0x40019999, {}), -ENOTTY) << path;
    }
    EXPECT_GE(devices, 16);
}

} // namespace
