// SPDX-License-Identifier: LicenseRef-HXAux
#include <sys/stat.h>

#include <atomic>

#include <gtest/gtest.h>

#include "platform/LinuxWrapper.h"
#include "tests/support/SimulatedUnit.h"

using namespace Halvix;
using testing::Contains;
using testing::ElementsAre;

namespace {

std::atomic<const void*> seen{nullptr};

void remember(const void* argument)
{
    seen = argument;
}

TEST(Thread, RunsTheFunctionWithItsArgument)
{
    SimulatedUnit unit;
    const int argument = 0;

    EXPECT_EQ(LinuxWrapper::startThread(remember, &argument), ERR_SUCCESS);
    unit.settle();

    EXPECT_EQ(seen, &argument);
}

TEST(Thread, ThatCannotBeCreatedIsAnError)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN);
    seen = nullptr;

    EXPECT_EQ(LinuxWrapper::startThread(remember, &unit), ERR_CREATE_THREAD);
    unit.settle();

    EXPECT_EQ(seen, nullptr);
}

TEST(Sleep, LastsAsLongAsItIsAskedTo)
{
    SimulatedUnit unit;

    EXPECT_TRUE(LinuxWrapper::Sleep(1500));

    EXPECT_EQ(unit.now(), 1500);
    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms"));
}

TEST(Sleep, AsksTheSystemForZeroToo)
{
    SimulatedUnit unit;

    EXPECT_TRUE(LinuxWrapper::Sleep(0));

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 0 ms"));
}

TEST(Sleep, IsNotResumedAfterAnInterruption)
{
    SimulatedUnit unit;
    unit.fail("sleep", "1500 ms", EINTR);

    EXPECT_FALSE(LinuxWrapper::Sleep(1500));

    EXPECT_THAT(unit.journal(), ElementsAre("sleep 1500 ms !EINTR"));
}

TEST(CreationMask, IsSetAndThePreviousOneGiven)
{
    const unsigned int before = LinuxWrapper::umask(027);

    EXPECT_EQ(LinuxWrapper::umask(before), 027U);
}

} // namespace
