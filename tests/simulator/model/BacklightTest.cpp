// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Backlight.h"

#include "tests/simulator/model/ModelTest.h"

namespace backlight_test {

using namespace hxsim;
using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/backlight";
constexpr std::uint32_t kGetLevel = 0x80010002;
constexpr std::uint32_t kSetLevel = 0x40010003;
constexpr std::uint32_t kGetStatus = 0x80010004;

using BacklightModel = modeltest::ModelTest;

TEST_F(BacklightModel, TakesItsLevelFromTheSecondByteOfTheBlock)
{
    EXPECT_EQ(put(kPath, kSetLevel, {77, 200}), 0);

    EXPECT_EQ(get(kPath, kGetLevel, 1), Bytes{200});
    EXPECT_EQ(property("backlight.level"), "200");
}

TEST_F(BacklightModel, TakesEveryByte)
{
    for (const std::uint8_t level : Bytes{0, 255}) {
        EXPECT_EQ(put(kPath, kSetLevel, {0, level}), 0);
        EXPECT_EQ(get(kPath, kGetLevel, 1), Bytes{level});
    }
}

TEST_F(BacklightModel, ShowsProgramsWhatIsSetFromOutside)
{
    set("backlight.level", "17");
    set("backlight.status", "3");

    EXPECT_EQ(get(kPath, kGetLevel, 1), Bytes{17});
    EXPECT_EQ(get(kPath, kGetStatus, 1), Bytes{3});
}

TEST_F(BacklightModel, KeepsItsStatusApartFromItsLevel)
{
    EXPECT_EQ(put(kPath, kSetLevel, {0, 9}), 0);

    EXPECT_EQ(get(kPath, kGetStatus, 1), Bytes{0});
}

TEST_F(BacklightModel, ReportsTheLevelsThatProgramsWriteAndNoOthers)
{
    std::vector<int> written;
    unit.get<Backlight>().onWrite = [&](std::uint8_t level) { written.push_back(level); };

    EXPECT_EQ(put(kPath, kSetLevel, {0, 9}), 0);
    set("backlight.level", "17");
    EXPECT_EQ(put(kPath, kSetLevel, {0, 9}), 0);

    EXPECT_THAT(written, testing::ElementsAre(9, 9));
}

TEST_F(BacklightModel, RefusesLevelsThatAreNoByte)
{
    EXPECT_EQ(refusalOfSet("backlight.level", "256"), "backlight.level: 256 is outside 0 to 255");
    EXPECT_EQ(property("backlight.level"), "128");
}

TEST_F(BacklightModel, NeedsTheWholeBlock)
{
    EXPECT_EQ(put(kPath, kSetLevel, {200}), -EFAULT);
}

} // namespace

} // namespace backlight_test
