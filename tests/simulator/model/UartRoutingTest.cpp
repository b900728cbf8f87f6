// SPDX-License-Identifier: LicenseRef-HXAux
// Who is at the other end of the service UART, and which program each microcontroller runs.
#include "simulator/model/UartRouting.h"

#include "simulator/model/Microcontroller.h"
#include "tests/simulator/model/ModelTest.h"

namespace uart_routing_test {

using namespace hxsim;
using modeltest::Bytes;

namespace {

class UartRoutingTest : public modeltest::ModelTest {
protected:
    UartRouting& routing = unit.get<UartRouting>();
    Microcontrollers& chips = unit.get<Microcontrollers>();

    int direct(std::uint8_t direction) { return put("/dev/uart-redir", 0x4001004B, {direction}); }
    int mode(std::uint8_t value) { return put("/dev/uart-redir", 0x4001004C, {value}); }
    int bootFront() { return put("/dev/uart-redir", 0x40010050, {}); }
};

TEST_F(UartRoutingTest, LeadsNowhereAtFirst)
{
    EXPECT_EQ(routing.peer(), nullptr);
    EXPECT_EQ(property("uart.direction"), "0");
    EXPECT_EQ(property("uart.mode"), "0xc3");
}

TEST_F(UartRoutingTest, LeadsToTheSupervisorOrTheFrontController)
{
    EXPECT_EQ(direct(1), 0);
    EXPECT_EQ(routing.peer(), &chips.supervisor);
    EXPECT_EQ(direct(2), 0);
    EXPECT_EQ(routing.peer(), &chips.front);
    EXPECT_EQ(direct(0), 0);
    EXPECT_EQ(routing.peer(), nullptr);
}

TEST_F(UartRoutingTest, RefusesDirectionsAndModesThatAreNone)
{
    ASSERT_EQ(direct(1), 0);

    EXPECT_EQ(direct(3), -EINVAL);
    EXPECT_EQ(property("uart.direction"), "1");
    for (const std::uint8_t value : Bytes{0x00, 0x01, 0x0E, 0x69, 0xFF})
        EXPECT_EQ(mode(value), -EINVAL) << int{value};
    EXPECT_EQ(property("uart.mode"), "0xc3");
}

TEST_F(UartRoutingTest, StartsTheSupervisorsBootloaderByItsMode)
{
    EXPECT_EQ(mode(0x96), 0);

    EXPECT_EQ(property("ss.state"), "bootloader");
    EXPECT_EQ(property("front.state"), "running");
    EXPECT_EQ(property("uart.mode"), "0x96");
}

TEST_F(UartRoutingTest, StartsTheSupervisorAgainWhenTheLineLeavesIt)
{
    ASSERT_EQ(mode(0x96), 0);
    ASSERT_EQ(direct(1), 0);
    EXPECT_EQ(direct(1), 0);
    EXPECT_EQ(property("ss.state"), "bootloader");

    EXPECT_EQ(direct(0), 0);

    EXPECT_EQ(property("ss.state"), "running");
    EXPECT_EQ(property("uart.mode"), "0xc3");
}

TEST_F(UartRoutingTest, StartsTheFrontBootloaderOnlyWhileTheSupervisorKeepsItsHandsOff)
{
    EXPECT_EQ(bootFront(), -EBUSY);
    EXPECT_EQ(property("front.state"), "running");

    ASSERT_EQ(mode(0x0F), 0);
    EXPECT_EQ(bootFront(), 0);
    EXPECT_EQ(property("front.state"), "bootloader");
    EXPECT_EQ(property("ss.state"), "running");
}

TEST_F(UartRoutingTest, StartsTheFrontControllerAgainInItsUsualMode)
{
    ASSERT_EQ(mode(0x0F), 0);
    ASSERT_EQ(bootFront(), 0);

    EXPECT_EQ(mode(0xC3), 0);

    EXPECT_EQ(property("front.state"), "running");
}

TEST_F(UartRoutingTest, LeavesAFrontControllerInItsBootloaderWhileHandsAreOff)
{
    ASSERT_EQ(mode(0x0F), 0);
    ASSERT_EQ(bootFront(), 0);
    EXPECT_EQ(mode(0x0F), 0);

    EXPECT_EQ(property("front.state"), "bootloader");
}

TEST_F(UartRoutingTest, ForgetsBothWithTheSupply)
{
    ASSERT_EQ(mode(0x0F), 0);
    ASSERT_EQ(direct(2), 0);

    supplyOffAndOn();

    EXPECT_EQ(property("uart.direction"), "0");
    EXPECT_EQ(property("uart.mode"), "0xc3");
}

} // namespace

} // namespace uart_routing_test
