// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/DigIO.h"

#include "devices/DigIO_Imp.h"
#include "testing/Released.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using namespace Halvix;
using namespace driver;
using testing::ElementsAre;

TEST(DigIO, MasksOffTheUpperFourBits)
{
    Script script{{local(0x80010051, "0000"_hex, "fa"_hex)}};
    const Released digital{GetDigIO()};
    unsigned char inputs = 0x77;

    EXPECT_EQ(digital->getDigIO(&inputs), ERR_SUCCESS);

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(inputs, 0x0A);
}

TEST(DigIO, CannotBeReadWithoutTheDevice)
{
    Script script;
    script.deviceIsAbsent();
    const Released digital{GetDigIO()};
    unsigned char inputs = 0x77;

    EXPECT_EQ(digital->getDigIO(&inputs), ERR_OPEN_FAILED);

    EXPECT_TRUE(script.calls().empty());
    EXPECT_EQ(inputs, 0x77);
}

TEST(DigIO, LeavesTheInputsWhenTheDriverRefuses)
{
    Script script{{local(0x80010051, "0000"_hex, "0a"_hex)}};
    script.failAt(0, EIO);
    const Released digital{GetDigIO()};
    unsigned char inputs = 0x77;

    EXPECT_EQ(digital->getDigIO(&inputs), ERR_IOCTRL_FAILED);

    EXPECT_EQ(inputs, 0x77);
}

TEST(DigIO, ChecksNoPointerBeforeTheDevice)
{
    Script script;
    script.deviceIsAbsent();
    const Released digital{GetDigIO()};

    EXPECT_EQ(digital->getDigIO(nullptr), ERR_OPEN_FAILED);
}

TEST(DigIO, OpensItsDeviceForReadingAndWritingAndClosesIt)
{
    Script script;
    const int next = dup(0); // the number that the next descriptor will have
    close(next);

    DigIO* digital = GetDigIO();
    EXPECT_NE(fcntl(next, F_GETFD), -1);
    digital->Release();

    EXPECT_EQ(fcntl(next, F_GETFD), -1);
    EXPECT_THAT(script.opened(), ElementsAre("/dev/dig-io"));
    EXPECT_EQ(script.lastOpenFlags() & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
}

TEST(DigIO, ClosesNothingWhenTheDeviceWasAbsent)
{
    Script script;
    script.deviceIsAbsent();
    const int bystander = dup(0);

    GetDigIO()->Release();

    EXPECT_NE(fcntl(bystander, F_GETFD), -1);
    EXPECT_NE(fcntl(0, F_GETFD), -1);
    close(bystander);
}
