// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <cerrno>

using namespace Halvix;
using namespace driver;

TEST(ReadID, QueriesTheDriverForTheRegistersValue)
{
    Script script{{readsRegister(0xFE, 0xBEEF)}};
    unsigned short value = 0;

    EXPECT_TRUE(LinuxWrapper::ReadID(42, 0xFE, &value));

    EXPECT_EQ(script.complaint(), "");
    EXPECT_EQ(value, 0xBEEF);
}

TEST(ReadID, LeavesTheValueWhenTheDriverRefuses)
{
    Script script{{readsRegister(1, 0xBEEF)}};
    script.failAt(0, EIO);
    unsigned short value = 7;

    EXPECT_FALSE(LinuxWrapper::ReadID(42, 1, &value));

    EXPECT_EQ(value, 7);
}

TEST(WriteID, PassesTheDriverRegisterAndValue)
{
    Script script{{writesRegister(0xFE, 0xBEEF)}};

    EXPECT_TRUE(LinuxWrapper::WriteID(42, 0xFE, 0xBEEF));

    EXPECT_EQ(script.complaint(), "");
}

TEST(WriteID, AnswersFalseWhenTheDriverRefuses)
{
    Script script{{writesRegister(1, 2)}};
    script.failAt(0, EIO);

    EXPECT_FALSE(LinuxWrapper::WriteID(42, 1, 2));
}
