// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/OperatingTime.h"

#include "tests/simulator/model/ModelTest.h"

using namespace std::chrono_literals;

namespace {

class OperatingTimeTest : public testing::Test {
protected:
    hxsim::Clock clock{};
    hxsim::OperatingTime time{clock};

    void pass(hxsim::Time duration) { clock.advanceTo(clock.now() + duration); }
};

TEST_F(OperatingTimeTest, StandsStillUntilItRuns)
{
    pass(10s);
    EXPECT_EQ(time.seconds(), 0U);
}

TEST_F(OperatingTimeTest, CountsWholeSeconds)
{
    time.run(true);
    pass(1999ms);
    EXPECT_EQ(time.seconds(), 1U);
    pass(1ms);
    EXPECT_EQ(time.seconds(), 2U);
}

TEST_F(OperatingTimeTest, KeepsWhatItCountedAndLosesNoFraction)
{
    time.run(true);
    pass(1500ms);
    time.run(false);
    pass(10s);
    EXPECT_EQ(time.seconds(), 1U);
    time.run(true);
    pass(500ms);
    EXPECT_EQ(time.seconds(), 2U);
}

TEST_F(OperatingTimeTest, DoesNotCountTwiceWhenItIsSwitchedOnTwice)
{
    time.run(true);
    pass(5s);
    time.run(true);
    pass(5s);
    EXPECT_EQ(time.seconds(), 10U);
}

TEST_F(OperatingTimeTest, GoesOnFromWhatItIsSetTo)
{
    time.run(true);
    pass(5s);
    time.setSeconds(100);
    EXPECT_EQ(time.seconds(), 100U);
    pass(3s);
    EXPECT_EQ(time.seconds(), 103U);
}

TEST_F(OperatingTimeTest, KeepsWhatItIsSetToWhileItStandsStill)
{
    pass(5s);
    time.setSeconds(100);
    pass(5s);
    EXPECT_EQ(time.seconds(), 100U);
}

} // namespace
