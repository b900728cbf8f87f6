// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/unit/Journal.h"

using namespace oldapp;

namespace {

using Byte = unsigned char;
constexpr const char* kDevice = "/dev/backlight";

} // namespace

TEST(BacklightSlots, DriveTheBacklightInTheirOrder)
{
    SimulatedUnit unit;
    const Object backlight{"GetBacklight", 12};
    Byte value = 0;

    EXPECT_EQ(backlight.call<Byte>(1, 77), 0);
    EXPECT_EQ(unit.get("backlight.level"), "77");
    EXPECT_EQ(backlight.call(0, &value), 0);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(backlight.call(2, &value), 0);
    EXPECT_THAT(unit.requestsTo(kDevice), HasRequest("0x80010004"));
}

TEST(BacklightSlots, SwitchTheAutomaticInTheirOrder)
{
    SimulatedUnit unit;
    const Object backlight{"GetBacklight", 12};
    Byte on = 9;

    EXPECT_EQ(backlight.call(3), 0);
    EXPECT_EQ(backlight.call(5, &on), 0);
    EXPECT_EQ(on, 1);
    EXPECT_EQ(backlight.call(4), 0);
    EXPECT_EQ(backlight.call(5, &on), 0);
    EXPECT_EQ(on, 0);
}

TEST(BacklightSlots, SetTheAutomaticInTheirOrder)
{
    using Size = unsigned long;
    SimulatedUnit unit;
    unit.writeSettings("ABL_k=12.5\n");
    const Object backlight{"GetBacklight", 12};
    bool soft = false;
    double k = 0;
    Size window = 0;
    Size reject = 0;
    Size delta = 0;
    int mode = 0;

    EXPECT_EQ(backlight.call<bool>(6, true), 0);
    EXPECT_EQ(backlight.call(7, &soft, &k), 0);
    EXPECT_TRUE(soft);
    EXPECT_EQ(k, 12.5);
    EXPECT_EQ((backlight.call<Size, Size, Size, int>(8, 6, 7, 8, 1)), 0);
    EXPECT_EQ(backlight.call(9, &window, &reject, &delta, &mode), 0);
    EXPECT_THAT((std::vector<Size>{window, reject, delta, Size(mode)}), testing::ElementsAre(6, 7, 8, 1));
}

TEST(BacklightSlots, DimTheLedInTheirOrder)
{
    SimulatedUnit unit;
    const Object backlight{"GetBacklight", 12};
    int dimming = 9;

    EXPECT_EQ(backlight.call<int>(11, 0), 0);
    EXPECT_THAT(unit.settings(), HasSubstr("UseLEDDimming"));
    EXPECT_EQ(backlight.call(10, &dimming), 0);
    EXPECT_EQ(dimming, 0);
}
