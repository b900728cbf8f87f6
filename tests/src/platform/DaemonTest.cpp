// SPDX-License-Identifier: LicenseRef-HXAux
#include "platform/LinuxWrapper.h"
#include "simulator/model/ServiceDaemon.h"
#include "testing/SimulatedUnit.h"

#include <gtest/gtest.h>

using namespace Halvix;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kFifo[] = "/tmp/hxauxd.fifo";

TEST(DaemonCommand, ArrivesAtTheDaemon)
{
    SimulatedUnit unit;

    EXPECT_EQ(LinuxWrapper::ControlDaemon(129), ERR_SUCCESS);
    EXPECT_EQ(LinuxWrapper::ControlDaemon(0), ERR_SUCCESS);

    EXPECT_EQ(unit.get("daemon.commands"), "129 0");
}

TEST(DaemonCommand, IsFourBytesInTheMachinesOrder)
{
    SimulatedUnit unit;

    ASSERT_EQ(LinuxWrapper::ControlDaemon(0x01020384), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo(kFifo),
                ElementsAre("mkfifo 0666 !EEXIST", "open wronly nonblock", "write: 84 03 02 01", "close"));
}

TEST(DaemonCommand, CreatesTheFifoWithTheMaskAtZero)
{
    SimulatedUnit unit;
    const unsigned int before = LinuxWrapper::umask(022);
    unit.clearJournal();

    ASSERT_EQ(LinuxWrapper::ControlDaemon(128), ERR_SUCCESS);

    EXPECT_THAT(unit.journal(), InOrder({"umask 0", "/tmp/hxauxd.fifo mkfifo 0666 !EEXIST", "umask 022",
                                         "/tmp/hxauxd.fifo open wronly nonblock"}));
    EXPECT_EQ(LinuxWrapper::umask(before), 022U);
}

TEST(DaemonCommand, RefusesANegativeNumberBeforeItTouchesTheFifo)
{
    SimulatedUnit unit;

    EXPECT_EQ(LinuxWrapper::ControlDaemon(-1), ERR_INVALID_PARAMETER);

    EXPECT_THAT(unit.journal(), IsEmpty());
}

TEST(DaemonCommand, AnswersOpenFailedWithoutAReader)
{
    SimulatedUnit unit{"daemon.running = no"};

    EXPECT_EQ(LinuxWrapper::ControlDaemon(129), ERR_OPEN_FAILED);
}

TEST(DaemonCommand, AnswersOpenFailedWhenTheFifoCannotBeCreated)
{
    SimulatedUnit unit;
    unit.fail(kFifo, "mkfifo", EROFS);

    EXPECT_EQ(LinuxWrapper::ControlDaemon(129), ERR_OPEN_FAILED);
    LinuxWrapper::umask(022);
}

TEST(DaemonCommand, IsTriedSixTimesAtAFullFifo)
{
    SimulatedUnit unit{"daemon.full = yes"};

    EXPECT_EQ(LinuxWrapper::ControlDaemon(129), ERR_COMMAND_FAILED);

    EXPECT_EQ(unit.now(), 1000);
    EXPECT_THAT(unit.callsTo("sleep"), ElementsAre("200 ms", "200 ms", "200 ms", "200 ms", "200 ms"));
    EXPECT_THAT(unit.callsTo(kFifo),
                ElementsAre("mkfifo 0666 !EEXIST", "open wronly nonblock", "write: 81 00 00 00 !EAGAIN",
                            "write: 81 00 00 00 !EAGAIN", "write: 81 00 00 00 !EAGAIN", "write: 81 00 00 00 !EAGAIN",
                            "write: 81 00 00 00 !EAGAIN", "write: 81 00 00 00 !EAGAIN", "close"));
}

TEST(DaemonCommand, WaitsInFullForAFullFifoWhenSignalsInterrupt)
{
    SimulatedUnit unit{"daemon.full = yes"};
    unit.fail("sleep", "200 ms", EINTR, 1);

    EXPECT_EQ(LinuxWrapper::ControlDaemon(129), ERR_COMMAND_FAILED);

    EXPECT_EQ(unit.now(), 1000);
}

TEST(DaemonCommand, SucceedsAtTheSixthAttempt)
{
    SimulatedUnit unit;
    unit.fail(kFifo, "write", EAGAIN, 5);

    EXPECT_EQ(LinuxWrapper::ControlDaemon(132), ERR_SUCCESS);

    EXPECT_EQ(unit.now(), 1000);
    EXPECT_EQ(unit.get("daemon.commands"), "132");
}

TEST(DaemonCommand, IsWrittenAgainAtOnceAfterAnyOtherError)
{
    SimulatedUnit unit;
    unit.fail(kFifo, "write", EINTR, 50); // far more than six: they are not counted

    EXPECT_EQ(LinuxWrapper::ControlDaemon(132), ERR_SUCCESS);

    EXPECT_THAT(unit.callsTo("sleep"), IsEmpty());
    EXPECT_EQ(unit.now(), 0);
}

TEST(DaemonFifo, CountsOnlyFullPipesAmongMixedErrors)
{
    SimulatedUnit unit;
    unit.fail(kFifo, "write", EIO, 3);
    unit.fail(kFifo, "write", EAGAIN, 5);

    EXPECT_EQ(LinuxWrapper::ControlDaemon(132), ERR_SUCCESS);

    EXPECT_EQ(unit.now(), 1000);
}

TEST(DaemonFifo, LeavesTheMaskAtZeroWhenItCannotBeCreated)
{
    SimulatedUnit unit;
    unit.fail(kFifo, "mkfifo", EROFS);
    const unsigned int before = LinuxWrapper::umask(022);

    EXPECT_EQ(LinuxWrapper::open_write_fifo(kFifo, 0600), -1);

    EXPECT_EQ(LinuxWrapper::umask(before), 0U); // callers rely on it
}

TEST(DaemonFifo, AnswersMinusTwoAndRestoresTheMaskWithoutAReader)
{
    SimulatedUnit unit{"daemon.running = no"};
    const unsigned int before = LinuxWrapper::umask(022);

    EXPECT_EQ(LinuxWrapper::open_write_fifo(kFifo, 0600), -2);

    EXPECT_EQ(LinuxWrapper::umask(before), 022U);
}

TEST(DaemonFifo, IsCreatedWithTheGivenPermissions)
{
    SimulatedUnit unit;

    const int fifo = LinuxWrapper::open_write_fifo(kFifo, 0600);

    EXPECT_GE(fifo, 0);
    LinuxWrapper::close(fifo);
    EXPECT_THAT(unit.callsTo(kFifo), ElementsAre("mkfifo 0600 !EEXIST", "open wronly nonblock", "close"));
}

} // namespace
