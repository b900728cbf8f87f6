// SPDX-License-Identifier: LicenseRef-HXAux
#include "upgrade/UartRedirector.h"

#include "testing/SimulatedUnit.h"

namespace uart_redirector_test {

using namespace Halvix;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {
constexpr char kNode[] = "/dev/uart-redir";
} // namespace

TEST(UartRedirector, OpensTheDeviceAtTheFirstRequestAndOnce)
{
    SimulatedUnit unit;
    UartRedirector redirector;
    EXPECT_THAT(unit.callsTo(kNode), IsEmpty());

    EXPECT_EQ(redirector.setComDir(1), ERR_SUCCESS);
    EXPECT_EQ(redirector.setComDir(2), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo(kNode), ElementsAre("open rdwr nonblock", "0x4001004b: 01", "0x4001004b: 02"));
}

TEST(UartRedirector, SendsEachOfTheThreeModes)
{
    SimulatedUnit unit;
    UartRedirector redirector;

    constexpr unsigned char kModes[] = {0x0F, 0x96, 0xC3};
    for (const unsigned char mode : kModes)
        EXPECT_EQ(redirector.setSsMode(mode), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), ElementsAre("0x4001004c: 0f", "0x4001004c: 96", "0x4001004c: c3"));
}

TEST(UartRedirector, StartsTheFrontControllersBootloaderWithoutAPayload)
{
    SimulatedUnit unit;
    UartRedirector redirector;
    ASSERT_EQ(redirector.setSsMode(0x0F), ERR_SUCCESS);

    EXPECT_EQ(redirector.frontBootMode(), ERR_SUCCESS);

    EXPECT_THAT(unit.requestsTo(kNode), ElementsAre("0x4001004c: 0f", "0x40010050"));
}

TEST(UartRedirector, RefusesOtherValuesAndSendsNothing)
{
    SimulatedUnit unit;
    UartRedirector redirector;

    EXPECT_EQ(redirector.setComDir(3), ERR_INVALID_DATA);
    EXPECT_EQ(redirector.setSsMode(0x10), ERR_INVALID_DATA);

    EXPECT_THAT(unit.requestsTo(kNode), IsEmpty());
}

TEST(UartRedirector, IsNotOpenBeforeItChecksTheValue)
{
    SimulatedUnit unit{"absent = /dev/uart-redir"};
    UartRedirector redirector;

    EXPECT_EQ(redirector.setComDir(3), ERR_OPEN_FAILED);
    EXPECT_EQ(redirector.setSsMode(0x10), ERR_OPEN_FAILED);
    EXPECT_EQ(redirector.frontBootMode(), ERR_OPEN_FAILED);
}

TEST(UartRedirector, ReportsARefusedRequestExceptForTheMode)
{
    SimulatedUnit unit;
    unit.fail(kNode, 0x4001004b);
    unit.fail(kNode, 0x4001004c);
    unit.fail(kNode, 0x40010050);
    UartRedirector redirector;

    EXPECT_EQ(redirector.setComDir(1), ERR_IOCTRL_FAILED);
    EXPECT_EQ(redirector.setSsMode(0x0F), ERR_SUCCESS) << "the supervisor may not answer at that moment";
    EXPECT_EQ(redirector.frontBootMode(), ERR_IOCTRL_FAILED);
}

TEST(UartRedirector, DoesNotOpenTheDeviceAgainOnceItIsClosed)
{
    SimulatedUnit unit;
    UartRedirector redirector;
    ASSERT_EQ(redirector.setComDir(1), ERR_SUCCESS);
    redirector.closeHWConnection();
    unit.clearJournal();

    EXPECT_EQ(redirector.setComDir(0), ERR_IOCTRL_FAILED);
    EXPECT_EQ(redirector.openHWConnection(), -1);
    redirector.closeHWConnection();

    EXPECT_THAT(unit.callsTo(kNode), IsEmpty());
}

TEST(UartRedirector, ThatWasNeverOpenClosesNothing)
{
    SimulatedUnit unit;
    {
        UartRedirector redirector;
        redirector.closeHWConnection();
    }
    EXPECT_THAT(unit.callsTo(kNode), IsEmpty());
}

TEST(UartRedirector, ClosesTheDeviceWhenItIsDestroyed)
{
    SimulatedUnit unit;
    {
        UartRedirector redirector;
        redirector.openHWConnection();
    }
    EXPECT_THAT(unit.callsTo(kNode), ElementsAre("open rdwr nonblock", "close"));
}

} // namespace uart_redirector_test
