// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Properties.h"

#include "tests/simulator/model/ModelTest.h"

using hxsim::Properties;
using modeltest::refusalOf;

namespace {

struct Held : testing::Test {
    Properties properties;

    std::string refusal(const std::string& name, const std::string& value)
    {
        return refusalOf([&] { properties.set(name, value); });
    }
};

using PropertiesOf = Held;

TEST_F(PropertiesOf, ANumberFollowTheVariableBothWays)
{
    std::uint8_t level = 128;
    properties.number("level", level, 0, 200, "");

    EXPECT_EQ(properties.get("level"), "128");
    properties.set("level", "0x20");
    EXPECT_EQ(level, 32);
    level = 7;
    EXPECT_EQ(properties.get("level"), "7");
}

TEST_F(PropertiesOf, ANumberAreRefusedOutsideItsRangeByName)
{
    std::uint8_t level = 128;
    properties.number("level", level, 1, 200, "");

    EXPECT_EQ(refusal("level", "201"), "level: 201 is outside 1 to 200");
    EXPECT_EQ(refusal("level", "0"), "level: 0 is outside 1 to 200");
    EXPECT_EQ(refusal("level", "bright"), "level: 'bright' is not a number");
    EXPECT_EQ(level, 128);
}

TEST_F(PropertiesOf, ARealNumberAreShownAsShortAsPossible)
{
    double value = 0.1;
    properties.real("value", value, "");

    EXPECT_EQ(properties.get("value"), "0.1");
    properties.set("value", "250");
    EXPECT_EQ(properties.get("value"), "250");
    EXPECT_EQ(refusal("value", "much"), "value: 'much' is not a number");
    EXPECT_EQ(value, 250);
}

TEST_F(PropertiesOf, AFlagAreOnOrOff)
{
    bool flag = true;
    properties.flag("flag", flag, "");

    EXPECT_EQ(properties.get("flag"), "on");
    properties.set("flag", "no");
    EXPECT_FALSE(flag);
    EXPECT_EQ(properties.get("flag"), "off");
    EXPECT_EQ(refusal("flag", "maybe"), "flag: 'maybe' is neither on nor off");
}

TEST_F(PropertiesOf, ATextAreTakenAsTheyAre)
{
    std::string text = "before";
    properties.text("text", text, "");

    properties.set("text", " any # thing ");

    EXPECT_EQ(text, " any # thing ");
    EXPECT_EQ(properties.get("text"), " any # thing ");
}

TEST_F(PropertiesOf, WhatCanOnlyBeReadRefuseToBeSet)
{
    properties.readOnly(
        "state", [] { return "running"; }, "");

    EXPECT_EQ(properties.get("state"), "running");
    EXPECT_EQ(refusal("state", "off"), "state can only be read");
}

TEST_F(PropertiesOf, NamesThatDoNotExistAreRefusedWithTheNearest)
{
    bool flag = true;
    properties.flag("led.startup", flag, "");

    EXPECT_TRUE(properties.has("led.startup"));
    EXPECT_FALSE(properties.has("led.start"));
    EXPECT_EQ(refusal("led.statrup", "on"), "the unit has no property 'led.statrup'; did you mean 'led.startup'?");
    EXPECT_EQ(refusalOf([&] { (void)properties.get("x"); }), "the unit has no property 'x'");
}

TEST_F(PropertiesOf, AllShowTheirHelpAndWhetherTheyCanBeSet)
{
    bool flag = true;
    properties.flag("flag", flag, "whether");
    properties.readOnly(
        "state", [] { return ""; }, "what");

    EXPECT_EQ(properties.all().at("flag").help, "whether");
    EXPECT_TRUE(properties.all().at("flag").set);
    EXPECT_FALSE(properties.all().at("state").set);
}

class EveryProperty : public modeltest::ModelTest {};

TEST_F(EveryProperty, OfAHealthyUnitTakesTheValueThatItShows)
{
    for (const auto& [name, row] : unit.properties().all()) {
        if (!row.set || name == "light.profile") // "" for none
            continue;
        const std::string value = row.get();
        EXPECT_EQ(refusalOfSet(name, value), "");
        EXPECT_EQ(row.get(), value) << name;
    }
}

TEST_F(EveryProperty, SaysWhatItIs)
{
    for (const auto& [name, row] : unit.properties().all())
        EXPECT_GT(row.help.size(), 3U) << name;
}

} // namespace
