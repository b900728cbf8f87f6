// SPDX-License-Identifier: LicenseRef-HXAux
#include "hx-aux/version-gates.h"
#include "testing/Named.h"
#include "testing/RowTest.h"
#include "testing/driver/Driver.h"

#include <gmock/gmock.h>

#include <cerrno>

using namespace driver;
using testing::ElementsAre;

namespace {

struct Gate : Named {
    bool (*has)(unsigned char, unsigned char, unsigned char, unsigned char);
    std::uint32_t request;
};

const Gate kFpga{"Fpga", DoesSystemHaveAtLeastFPGAVersion, 0x80040036};
const Gate kSupervisor{"Supervisor", DoesSystemHaveAtLeastSSVersion, 0x80040037};
const Gate kFront{"Front", DoesSystemHaveAtLeastFrontVersion, 0x80040038};

bool supervisorOf(const Bytes& installed, unsigned char major, unsigned char minor, unsigned char release,
                  unsigned char build)
{
    Script script{{local(0x80040037, "00000000"_hex, installed)}};
    return DoesSystemHaveAtLeastSSVersion(major, minor, release, build);
}

class VersionGate : public hxtest::TestWithRow<Gate> {};

} // namespace

ROW_TEST(VersionGate, IsOpenForTheInstalledVersionItself)
{
    Script script{{local(row().request, "00000000"_hex, {1, 2, 3, 4})}};

    EXPECT_TRUE(row().has(1, 2, 3, 4));

    EXPECT_EQ(script.complaint(), "");
    EXPECT_THAT(script.opened(), ElementsAre("/dev/fpga-version"));
}

ROW_TEST(VersionGate, IsClosedForANewerBuild)
{
    Script script{{local(row().request, "00000000"_hex, {1, 2, 3, 4})}};

    EXPECT_FALSE(row().has(1, 2, 3, 5));
}

ROW_TEST(VersionGate, IsClosedWithoutTheDevice)
{
    Script script;
    script.deviceIsAbsent();

    EXPECT_FALSE(row().has(0, 0, 0, 0));

    EXPECT_TRUE(script.calls().empty());
}

ROW_TEST(VersionGate, IsClosedWhenTheDriverRefuses)
{
    Script script{{local(row().request, "00000000"_hex, {9, 9, 9, 9})}};
    script.failAt(0, EIO);

    EXPECT_FALSE(row().has(0, 0, 0, 0));
}

ROW_TEST(VersionGate, OpensTheDeviceAfreshForEveryQuestion)
{
    const Exchange answer = local(row().request, "00000000"_hex, {1, 0, 0, 0});
    Script script{{answer, answer}};

    EXPECT_TRUE(row().has(1, 0, 0, 0));
    EXPECT_TRUE(row().has(1, 0, 0, 0));

    EXPECT_EQ(script.opened().size(), 2U);
}

TEST_ROWS(Of, VersionGate, kNameOfRow, kFpga, kSupervisor, kFront);

TEST(VersionGates, AreOpenFrom1200On)
{
    EXPECT_TRUE(supervisorOf({1, 2, 0, 0}, 1, 2, 0, 0));
    EXPECT_TRUE(supervisorOf({1, 10, 0, 0}, 1, 2, 0, 0));
    EXPECT_FALSE(supervisorOf({1, 1, 99, 99}, 1, 2, 0, 0));
}

TEST(VersionGates, LetABuildOf100AndMoreSpillIntoTheRelease)
{
    EXPECT_TRUE(supervisorOf({1, 2, 4, 50}, 1, 2, 3, 150)) << "1.2.3.150 counts as 1.2.4.50";
    EXPECT_TRUE(supervisorOf({1, 2, 3, 150}, 1, 2, 4, 50));
    EXPECT_FALSE(supervisorOf({1, 2, 4, 49}, 1, 2, 3, 150));
    EXPECT_FALSE(supervisorOf({1, 3, 0, 0}, 1, 2, 255, 255));
}

TEST(VersionGates, CompareTheLargestVersions)
{
    EXPECT_TRUE(supervisorOf({255, 255, 255, 255}, 255, 255, 255, 255));
    EXPECT_FALSE(supervisorOf({255, 255, 255, 254}, 255, 255, 255, 255));
    EXPECT_TRUE(supervisorOf({0, 0, 0, 0}, 0, 0, 0, 0));
}
