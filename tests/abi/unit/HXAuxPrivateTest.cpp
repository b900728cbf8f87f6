// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ProductionData.h"
#include "tests/abi/unit/Journal.h"

namespace hx_aux_private_test {

using namespace oldapp;

namespace {

constexpr unsigned kRelease = 8;

} // namespace

TEST(HXAuxPrivateSlots, KeepPropertiesInTheirOrder)
{
    using Byte = unsigned char;
    SimulatedUnit unit;
    unit.model<hxsim::ProductionData>()->main.setText("DATA:1\r\nPCB_SERIAL:before\r\n");
    const Object service{"GetHXAuxPrivate", kRelease};
    std::string key = "PCB_SERIAL";
    std::string value = "after";
    char buffer[64] = {};

    EXPECT_EQ((service.call<Byte, char*, char*>(1, 0, key.data(), value.data())), 0);
    EXPECT_EQ((service.call<Byte, char*, char*, int>(0, 0, key.data(), buffer, 60)), 0);
    EXPECT_STREQ(buffer, "after");
}

TEST(HXAuxPrivateSlots, ReachSmartRegistersInTheirOrder)
{
    using Word = unsigned short;
    SimulatedUnit unit;
    const Object service{"GetHXAuxPrivate", kRelease};
    Word value = 0;

    EXPECT_EQ((service.call<char, Word>(3, 5, 4711)), 0);
    EXPECT_EQ((service.call<char, Word*>(2, 5, &value)), 0);
    EXPECT_EQ(value, 4711);
    EXPECT_EQ(unit.requestsTo("/dev/diag-id").front(), "put 37 = 4711");
}

TEST(HXAuxPrivateSlots, StartTheAutomaticBacklightInSlot4)
{
    SimulatedUnit unit;
    unit.fail("thread", "start", EAGAIN, 1);
    const Object service{"GetHXAuxPrivate", kRelease};

    EXPECT_EQ(service.call(4), 10);
}

TEST(HXAuxPrivateSlots, KeepSettingsAndResumeTheVideoInTheirOrder)
{
    SimulatedUnit unit;
    const Object service{"GetHXAuxPrivate", kRelease};
    char buffer[64] = {};

    EXPECT_EQ((service.call<const char*, const char*>(5, "Key", "value")), 0);
    EXPECT_EQ((service.call<const char*, char*, int>(6, "Key", buffer, 60)), 0);
    EXPECT_STREQ(buffer, "value");
    EXPECT_EQ(service.call(7), 7) << "the outcome is not known";
    EXPECT_THAT(unit.requestsTo("/dev/diag-id"), HasRequest("0x40010069"));
}

} // namespace hx_aux_private_test
