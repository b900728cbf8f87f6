// SPDX-License-Identifier: LicenseRef-HXAux
// The six standard colors and their table, which programs may change.
#include "hx-aux/FrontLED.h"
#include "testing/Released.h"
#include "testing/SimulatedUnit.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

namespace front_led_color_test {

using namespace Halvix;
using testing::IsEmpty;

namespace {

constexpr const char* kDevice = "/dev/frontled";

/// Restores the table.
class TableGuard {
public:
    TableGuard() { std::copy(std::begin(stdColor), std::end(stdColor), kept_.begin()); }
    ~TableGuard() { std::copy(kept_.begin(), kept_.end(), std::begin(stdColor)); }
    TableGuard(const TableGuard&) = delete;
    TableGuard& operator=(const TableGuard&) = delete;

private:
    std::array<unsigned char, 18> kept_{};
};

int colorOf(FrontLED& led)
{
    auto color = static_cast<HXAuxColor>(77);
    EXPECT_EQ(led.getColor(&color), ERR_SUCCESS);
    return color;
}

TEST(StandardColor, TableHoldsTheSixTriples)
{
    EXPECT_THAT(stdColor, testing::ElementsAre(15, 0, 0, 0, 15, 0, 0, 0, 15, 0, 15, 15, 12, 0, 4, 15, 5, 0));
}

TEST(StandardColor, SendsItsTriple)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    for (int color = 0; color <= 5; ++color)
        EXPECT_EQ(led->setColor(static_cast<HXAuxColor>(color)), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kDevice),
                Requests("0x40030045: 0f 00 00", "0x40030045: 00 0f 00", "0x40030045: 00 00 0f", "0x40030045: 00 0f 0f",
                         "0x40030045: 0c 00 04", "0x40030045: 0f 05 00"));
}

TEST(StandardColor, IsRefusedOutsideTheTable)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    for (const int color : {6, 7, 256, -1, -2147483647})
        EXPECT_EQ(led->setColor(static_cast<HXAuxColor>(color)), ERR_INVALID_PARAMETER) << color;

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

TEST(StandardColor, IsRefusedOutsideTheTableBeforeTheDevice)
{
    SimulatedUnit unit{"absent = /dev/frontled"};
    Released<FrontLED> led{GetFrontLED()};

    EXPECT_EQ(led->setColor(ColorOther), ERR_INVALID_PARAMETER);
}

TEST(StandardColor, IsRecognised)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    for (int color = 0; color <= 5; ++color) {
        EXPECT_EQ(led->setColor(static_cast<HXAuxColor>(color)), ERR_SUCCESS);
        EXPECT_EQ(colorOf(*led), color);
    }
}

TEST(StandardColor, IsSixForATripleThatIsNotInTheTable)
{
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};

    for (const char* triple : {"15 0 1", "14 0 0", "15 1 0", "0 0 0", "15 15 15"}) {
        unit.set("led.color", triple);
        EXPECT_EQ(colorOf(*led), ColorOther) << triple;
    }
}

TEST(StandardColor, IsTheFirstRowThatFits)
{
    const TableGuard guard;
    SimulatedUnit unit{"led.color = 0 15 15"};
    Released<FrontLED> led{GetFrontLED()};
    std::copy_n(stdColor + 9, 3, stdColor + 3);

    EXPECT_EQ(colorOf(*led), ColorGreen);
}

TEST(StandardColor, FollowsAChangedTable)
{
    const TableGuard guard;
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};
    stdColor[0] = 1;
    stdColor[1] = 2;
    stdColor[2] = 3;

    EXPECT_EQ(led->setColor(ColorRed), ERR_SUCCESS);

    EXPECT_EQ(unit.get("led.color"), "1 2 3");
    EXPECT_EQ(colorOf(*led), ColorRed);
}

TEST(StandardColor, IsRefusedWhenItsRowWasChangedToTooMuch)
{
    const TableGuard guard;
    SimulatedUnit unit;
    Released<FrontLED> led{GetFrontLED()};
    stdColor[17] = 16;

    EXPECT_EQ(led->setColor(ColorOrange), ERR_INVALID_PARAMETER);

    EXPECT_THAT(unit.requestsTo(kDevice), IsEmpty());
}

} // namespace

} // namespace front_led_color_test
