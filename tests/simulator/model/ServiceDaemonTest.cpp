// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ServiceDaemon.h"

#include "tests/simulator/model/ModelTest.h"

namespace service_daemon_test {

using namespace hxsim;
using modeltest::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kPath[] = "/tmp/hxauxd.fifo";

class ServiceDaemonTest : public modeltest::ModelTest {
protected:
    ServiceDaemon& daemon = unit.get<ServiceDaemon>();

    std::int64_t send(const Bytes& bytes) { return write(kPath, {bytes.begin(), bytes.end()}); }
    int openError() { return node(kPath).openError(); }
};

TEST_F(ServiceDaemonTest, TakesCommandsOfFourBytes)
{
    EXPECT_EQ(send({2, 0, 0, 0}), 4);
    EXPECT_EQ(send({0xFF, 0xFF, 0xFF, 0xFF}), 4);

    EXPECT_THAT(daemon.commands, ElementsAre(2, -1));
    EXPECT_EQ(property("daemon.commands"), "2 -1");
}

TEST_F(ServiceDaemonTest, JoinsCommandsThatComeInParts)
{
    EXPECT_EQ(send({1, 0}), 2);
    EXPECT_THAT(daemon.commands, IsEmpty());
    EXPECT_EQ(send({0, 0, 3, 0, 0, 0, 4}), 7);

    EXPECT_THAT(daemon.commands, ElementsAre(1, 3));
}

TEST_F(ServiceDaemonTest, CannotBeOpenedWhenItDoesNotRun)
{
    EXPECT_EQ(openError(), 0);
    set("daemon.running", "off");
    EXPECT_EQ(openError(), ENXIO);
}

TEST_F(ServiceDaemonTest, BreaksThePipeWhenItHasEnded)
{
    set("daemon.running", "off");

    EXPECT_EQ(send({1, 0, 0, 0}), -EPIPE);
    EXPECT_THAT(daemon.commands, IsEmpty());
}

TEST_F(ServiceDaemonTest, TakesNothingIntoAFullFifo)
{
    set("daemon.full", "on");

    EXPECT_EQ(send({1, 0, 0, 0}), -EAGAIN);
    set("daemon.full", "off");
    EXPECT_EQ(send({1, 0, 0, 0}), 4);
    EXPECT_THAT(daemon.commands, ElementsAre(1));
}

TEST_F(ServiceDaemonTest, DoesNotReadAPlainFile)
{
    set("daemon.plain-file", "on");
    set("daemon.running", "off");

    EXPECT_EQ(openError(), 0);
    EXPECT_EQ(send({1, 0, 0, 0}), 4);
    EXPECT_THAT(daemon.commands, IsEmpty());
    EXPECT_TRUE(node(kPath).isText());
    set("daemon.plain-file", "off");
    EXPECT_FALSE(node(kPath).isText());
    EXPECT_EQ(openError(), ENXIO);
}

} // namespace

} // namespace service_daemon_test
