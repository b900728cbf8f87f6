// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/Versions.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace versions_test {

using modeltest::Bytes;

namespace {

constexpr char kPath[] = "/dev/fpga-version";

struct Row : Named {
    const char* property;
    std::uint32_t code;
};

class VersionOf : public modeltest::ModelTest, public hxtest::WithRow<Row> {};

ROW_TEST(VersionOf, IsMajorMinorReleaseAndBuildInThisOrder)
{
    set(row().property, "1.20.255.0");

    EXPECT_EQ(get(kPath, row().code, 4), (Bytes{1, 20, 255, 0}));
    EXPECT_EQ(property(row().property), "1.20.255.0");
}

ROW_TEST(VersionOf, RefusesTextsThatAreNoVersion)
{
    const std::string before = property(row().property);

    for (const char* bad : {"", "1.2.3", "1.2.3.4.5", "1..2.3", "1.2.3.256", "1.2.3.x", "1.2.3.-1"})
        EXPECT_NE(refusalOfSet(row().property, bad), "") << bad;
    EXPECT_EQ(property(row().property), before);
}

TEST_ROWS(Versions, VersionOf, kNameOfRow, Row{{"Fpga"}, "version.fpga", 0x80040036},
          Row{{"Supervisor"}, "version.ss", 0x80040037}, Row{{"Front"}, "version.front", 0x80040038},
          Row{{"Drivers"}, "version.drv", 0x80040064});

using VersionsModel = modeltest::ModelTest;

TEST_F(VersionsModel, GiveNothingOfAMicrocontrollerThatDoesNotRun)
{
    act("cut", {"front"});

    EXPECT_EQ(get(kPath, 0x80040038, 4), Bytes{});
    EXPECT_EQ(get(kPath, 0x80040037, 4).size(), 4U) << "the supervisor runs";
    act("restore", {"front"});
    act("cut", {"ss"});
    EXPECT_EQ(get(kPath, 0x80040038, 4).size(), 4U);
    EXPECT_EQ(get(kPath, 0x80040037, 4), Bytes{});
    EXPECT_EQ(get(kPath, 0x80040036, 4).size(), 4U) << "the FPGA does not need it";
}

TEST_F(VersionsModel, ShowTheOperatingSystemsAsALineOfAFile)
{
    set("version.os", "2.10.0.77");

    EXPECT_EQ(content("/etc/firmware.ver"), "2.10.0.77\n");
    EXPECT_EQ(property("version.os"), "2.10.0.77");
}

TEST_F(VersionsModel, LetTheOperatingSystemsFileHoldAnything)
{
    set("version.os", "unknown");

    EXPECT_EQ(content("/etc/firmware.ver"), "unknown\n");
}

TEST_F(VersionsModel, LetNobodyWriteTheOperatingSystems)
{
    EXPECT_EQ(write("/etc/firmware.ver", "9.9.9.9"), -EINVAL);
    EXPECT_EQ(property("version.os"), "2.1.0.5");
}

} // namespace

} // namespace versions_test
