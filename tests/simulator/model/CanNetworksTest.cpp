// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/CanNetworks.h"

#include "testing/RowTest.h"
#include "tests/simulator/model/ModelTest.h"

namespace can_networks_test {

using namespace hxsim;

namespace {

constexpr const char* kPaths[] = {
    "/sys/class/net/can0/can_bittiming/bitrate", "/sys/class/net/can1/can_bittiming/bitrate",
    "/sys/class/net/can2/can_bittiming/bitrate", "/sys/class/net/can3/can_bittiming/bitrate"};

using CanNetworksTest = modeltest::ModelTest;

TEST_F(CanNetworksTest, ShowTheRateInBitsPerSecondAsALine)
{
    for (const char* path : kPaths)
        EXPECT_EQ(content(path), "250000\n") << path;
}

TEST_F(CanNetworksTest, AreFourAndNumberedFromOne)
{
    set("can.1.bitrate", "1000000");
    set("can.4.bitrate", "125000");

    EXPECT_EQ(content(kPaths[0]), "1000000\n");
    EXPECT_EQ(content(kPaths[1]), "250000\n");
    EXPECT_EQ(content(kPaths[3]), "125000\n");
    EXPECT_EQ(unit.findNode("/sys/class/net/can4/can_bittiming/bitrate"), nullptr);
}

TEST_F(CanNetworksTest, AreSetEachByItself)
{
    EXPECT_EQ(write(kPaths[2], "500000"), 6);

    EXPECT_EQ(property("can.3.bitrate"), "500000");
    EXPECT_EQ(property("can.2.bitrate"), "250000");
}

TEST_F(CanNetworksTest, ShowAnyTextInsteadOfTheRate)
{
    set("can.1.text", "nonsense");
    EXPECT_EQ(content(kPaths[0]), "nonsense");
    set("can.1.text", "");
    EXPECT_EQ(content(kPaths[0]), "250000\n");
}

struct Written : Named {
    const char* text;
    const char* up;
    std::int64_t result;
    const char* rate;
};

class CanRate : public modeltest::ModelTest, public hxtest::WithRow<Written> {};

ROW_TEST(CanRate, IsTakenOrRefused)
{
    set("can.1.up", row().up);

    EXPECT_EQ(write(kPaths[0], row().text), row().result);
    EXPECT_EQ(property("can.1.bitrate"), row().rate);
}

TEST_ROWS(CanNetworks, CanRate, kNameOfRow, Written{{"Plain"}, "125000", "off", 6, "125000"},
          Written{{"WithLineEnd"}, "125000\n", "off", 7, "125000"},
          Written{{"Highest"}, "1000000", "off", 7, "1000000"},
          Written{{"AboveHighest"}, "1000001", "off", -EINVAL, "250000"},
          Written{{"Negative"}, "-1", "off", -EINVAL, "250000"}, Written{{"Text"}, "fast", "off", -EINVAL, "250000"},
          Written{{"Empty"}, "", "off", -EINVAL, "250000"},
          Written{{"TwoNumbers"}, "125000 1", "off", -EINVAL, "250000"},
          Written{{"Up"}, "125000", "on", -EBUSY, "250000"});

} // namespace

} // namespace can_networks_test
