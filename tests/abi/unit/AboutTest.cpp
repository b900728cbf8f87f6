// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/model/ProductionData.h"
#include "tests/abi/unit/Journal.h"

#include <map>

using namespace oldapp;

namespace {

std::string text(const Object& about, unsigned slot)
{
    char buffer[64] = {};
    EXPECT_EQ((about.call<char*, int>(slot, buffer, 60)), 0) << slot;
    return buffer;
}

int number(const Object& about, unsigned slot)
{
    unsigned char count = 0;
    EXPECT_EQ(about.call(slot, &count), 0) << slot;
    return count;
}

/// Fits exactly the module of that key.
bool fitted(const char* key, unsigned slot)
{
    SimulatedUnit unit;
    std::string data = "WLAN:0\r\nGPS:0\r\nGSM:0\r\nBLUETOOTH:0\r\n";
    data.replace(data.find(std::string{key} + ":0") + std::string{key}.size() + 1, 1, "1");
    unit.model<hxsim::ProductionData>()->addOn.setText(data);
    const Object about{"GetAbout", 20};
    bool is = false;
    EXPECT_EQ(about.call(slot, &is), 0);
    return is;
}

} // namespace

TEST(AboutSlots, ReportTextsAndNumbersInTheirOrder)
{
    SimulatedUnit unit;
    {
        auto data = unit.model<hxsim::ProductionData>();
        data->main.setText("DATA:1\r\nPCB_SERIAL:s0\r\nUNIT_SERIAL:s1\r\nPCB_ART:s2\r\nDATE:s3\r\nHWVERSION:s4\r\n"
                           "PCB_REV:s4\r\nPROD_REV:s5\r\nPROD_ART:s6\r\nETH:7\r\nCAN:8\r\nVIDEO:9\r\nUSBHOST:10\r\n"
                           "SERIAL:11\r\nRS232:11\r\n");
        data->addOn.setText("PCB_SERIAL:s12\r\nPCB_ART:s13\r\nDATE:s14\r\nPCB_REV:s15\r\n");
    }
    const Object about{"GetAbout", 20};

    for (const unsigned slot : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 12U, 13U, 14U, 15U})
        EXPECT_EQ(text(about, slot), "s" + std::to_string(slot));
    for (const int slot : {7, 8, 9, 10, 11})
        EXPECT_EQ(number(about, static_cast<unsigned>(slot)), slot);
}

TEST(AboutSlots, ReportTheFittedModulesInTheirOrder)
{
    const std::map<unsigned, const char*> keys = {{16, "WLAN"}, {17, "GPS"}, {18, "GSM"}, {19, "BLUETOOTH"}};
    for (const auto& [fittedSlot, key] : keys)
        for (const auto& [slot, other] : keys)
            EXPECT_EQ(fitted(key, slot), slot == fittedSlot) << key << " " << slot;
}
