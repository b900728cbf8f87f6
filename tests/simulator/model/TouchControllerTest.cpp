// SPDX-License-Identifier: LicenseRef-HXAux
// The registers of the touch controller, and its calibrations point by point.
#include "simulator/model/TouchController.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace touch_controller_test {

using namespace hxsim;
using namespace std::chrono_literals;
using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/front-mcu-id";
constexpr std::uint32_t kGetMode = 0x8001006A;
constexpr std::uint32_t kSetMode = 0x4001006B;

struct Register : Named {
    std::uint8_t number;
    unsigned highest;
    const char* property;
};

class TouchRegister : public modeltest::ModelTest, public hxtest::WithRow<Register> {};

ROW_TEST(TouchRegister, TakesUpToItsHighestValue)
{
    EXPECT_EQ(setReg(kPath, row().number, row().highest), 0);
    EXPECT_EQ(reg(kPath, row().number), static_cast<int>(row().highest));
    EXPECT_EQ(property(row().property), std::to_string(row().highest));
    if (row().highest < 65535) {
        EXPECT_EQ(setReg(kPath, row().number, row().highest + 1), -EINVAL);
        EXPECT_EQ(reg(kPath, row().number), static_cast<int>(row().highest));
    }
}

TEST_ROWS(TouchController, TouchRegister, kNameOfRow, Register{{"Mode"}, 3, 3, "touch.mode"},
          Register{{"RightClick"}, 4, 65535, "touch.right-click"}, Register{{"Five"}, 5, 4095, "touch.register.5"},
          Register{{"Six"}, 6, 4095, "touch.register.6"}, Register{{"Seven"}, 7, 65535, "touch.register.7"},
          Register{{"Ten"}, 10, 32767, "touch.register.10"}, Register{{"Eleven"}, 11, 65535, "touch.register.11"},
          Register{{"Twelve"}, 12, 1, "touch.register.12"}, Register{{"Thirteen"}, 13, 65535, "touch.register.13"},
          Register{{"Nineteen"}, 19, 65535, "touch.register.19"});

struct Mode : Named {
    std::uint8_t raw;
    std::uint8_t points;
};

class CalibrationMode : public modeltest::ModelTest, public hxtest::WithRow<Mode> {};

ROW_TEST(CalibrationMode, EndsWhenEachOfItsPointsWasTaken)
{
    set("touch.finger", "follow");
    ASSERT_EQ(put(kPath, kSetMode, {row().raw}), 0);
    EXPECT_EQ(get(kPath, kGetMode, 1), Bytes{row().raw});

    for (std::uint8_t point = 1; point < row().points; ++point) {
        ASSERT_EQ(setReg(kPath, 1, point), 0);
        pass(200ms);
        EXPECT_EQ(reg(kPath, 1) >> 8, point);
        EXPECT_EQ(get(kPath, kGetMode, 1), Bytes{row().raw}) << "after point " << int{point};
    }
    ASSERT_EQ(setReg(kPath, 1, row().points), 0);
    pass(200ms);
    EXPECT_EQ(get(kPath, kGetMode, 1), Bytes{0});
    EXPECT_EQ(property("touch.calibrated"), "1");
}

ROW_TEST(CalibrationMode, RefusesPointsBehindItsLast)
{
    ASSERT_EQ(put(kPath, kSetMode, {row().raw}), 0);

    EXPECT_EQ(setReg(kPath, 1, row().points), 0);
    EXPECT_EQ(setReg(kPath, 1, row().points + 1U), -EINVAL);
}

TEST_ROWS(TouchController, CalibrationMode, kNameOfRow, Mode{{"First"}, 1, 5}, Mode{{"Second"}, 6, 5},
          Mode{{"Third"}, 10, 9}, Mode{{"Fourth"}, 14, 13});

class TouchTest : public modeltest::ModelTest {
protected:
    int taken() { return reg(kPath, 1) >> 8; }
    void begin(std::uint8_t mode, unsigned point)
    {
        ASSERT_EQ(put(kPath, kSetMode, {mode}), 0);
        ASSERT_EQ(setReg(kPath, 1, point), 0);
    }
};

TEST_F(TouchTest, RefusesModesThatAreNone)
{
    for (const std::uint8_t mode : Bytes{0, 2, 3, 4, 5, 7, 9, 11, 13, 15, 255})
        EXPECT_EQ(put(kPath, kSetMode, {mode}), -EINVAL) << int{mode};
    EXPECT_EQ(get(kPath, kGetMode, 1), Bytes{0});
}

TEST_F(TouchTest, TimesTheFingerFromWhenItIsPutDown)
{
    begin(1, 2);
    pass(10s);
    act("touch", {"2"});
    pass(199ms);
    EXPECT_EQ(taken(), 0);
    pass(1ms);
    EXPECT_EQ(taken(), 2);
}

TEST_F(TouchTest, TimesARestingFingerFromWhenItsPointIsAskedFor)
{
    act("touch", {"2"});
    begin(1, 1);
    pass(10s);
    ASSERT_EQ(setReg(kPath, 1, 2), 0);
    pass(199ms);
    EXPECT_EQ(taken(), 0);
    pass(1ms);
    EXPECT_EQ(taken(), 2);
}

TEST_F(TouchTest, StartsTheTimeAgainAfterTheFingerWasLifted)
{
    begin(1, 2);
    act("touch", {"2"});
    pass(150ms);
    act("lift");
    act("touch", {"2"});
    pass(199ms);
    EXPECT_EQ(taken(), 0);
    pass(1ms);
    EXPECT_EQ(taken(), 2);
}

TEST_F(TouchTest, TakesNothingForPointZero)
{
    begin(1, 0);
    act("touch", {"0"});
    set("touch.finger", "follow");
    pass(10s);

    EXPECT_EQ(reg(kPath, 1), 0);
}

TEST_F(TouchTest, ForgetsTakenPointsWhenACalibrationBeginsAgain)
{
    set("touch.finger", "follow");
    for (unsigned point = 1; point <= 4; ++point) {
        begin(1, point);
        pass(1s);
    }
    begin(1, 5);
    pass(1s);

    EXPECT_EQ(property("touch.calibrated"), "0");
    EXPECT_EQ(property("touch.calibration"), "1");
}

TEST_F(TouchTest, CountsAPointThatIsTakenTwiceOnce)
{
    set("touch.finger", "follow");
    begin(1, 1);
    for (const unsigned point : {1U, 1U, 2U, 3U, 4U, 4U}) {
        ASSERT_EQ(setReg(kPath, 1, point), 0);
        pass(1s);
    }

    EXPECT_EQ(property("touch.calibrated"), "0");
}

TEST_F(TouchTest, ShowsWhereTheFingerIs)
{
    EXPECT_EQ(property("touch.finger"), "none");
    act("touch", {"3"});
    EXPECT_EQ(property("touch.finger"), "3");
    act("touch", {"follow"});
    EXPECT_EQ(property("touch.finger"), "follow");
    act("lift");
    EXPECT_EQ(property("touch.finger"), "none");
}

TEST_F(TouchTest, RefusesWordsThatAreNoFinger)
{
    EXPECT_EQ(refusalOfAct("touch", {}), "touch POINT");
    EXPECT_EQ(refusalOfAct("touch", {"1", "2"}), "touch POINT");
    EXPECT_EQ(refusalOfSet("touch.finger", "256"), "touch.finger: 256 is outside 0 to 255");
    EXPECT_EQ(property("touch.finger"), "none");
}

TEST_F(TouchTest, AnswersByTheFrontControllerAlone)
{
    act("cut", {"ss"});
    EXPECT_EQ(reg(kPath, 3), 1);
    act("cut", {"front"});
    EXPECT_EQ(reg(kPath, 3), -1);
}

} // namespace

} // namespace touch_controller_test
