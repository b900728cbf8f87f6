// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

using namespace oldapp;

namespace {

constexpr unsigned kRelease = 6;

Bytes versionOf(unsigned slot, std::vector<Exchange> expected)
{
    Bytes v(4, 0xEE);
    expectSlot("GetAuxVersion", kRelease, slot, std::move(expected), &v[0], &v[1], &v[2], &v[3]);
    return v;
}

Exchange answers(std::uint32_t request)
{
    return local(request, "00000000"_hex, "01020304"_hex);
}

} // namespace

TEST(AuxVersionSlots, ReportTheVersionsOfTheDevicesInOrder)
{
    EXPECT_EQ(versionOf(0, {answers(0x80040036)}), "01020304"_hex);
    EXPECT_EQ(versionOf(1, {answers(0x80040037)}), "01020304"_hex);
    EXPECT_EQ(versionOf(2, {answers(0x80040038)}), "01020304"_hex);
    EXPECT_EQ(versionOf(5, {answers(0x80040064)}), "01020304"_hex);
}

TEST(AuxVersionSlots, ReportTheLibrarysVersionInSlot3)
{
    EXPECT_EQ(versionOf(3, {}), "01030100"_hex);
}

TEST(AuxVersionSlots, RefuseANullPointerOnlyInSlot4)
{
    const Script script;
    const Object object{"GetAuxVersion", kRelease};
    unsigned char v = 0;
    unsigned char* none = nullptr;

    EXPECT_EQ(object.call(4, none, &v, &v, &v), 9);
}

TEST(VersionGateExports, CompareTheVersionOfTheirComponent)
{
    const std::pair<const char*, std::uint32_t> gates[] = {{"DoesSystemHaveAtLeastFPGAVersion", 0x80040036},
                                                           {"DoesSystemHaveAtLeastSSVersion", 0x80040037},
                                                           {"DoesSystemHaveAtLeastFrontVersion", 0x80040038}};
    for (const auto& [name, request] : gates) {
        Script script{{answers(request)}};
        auto* gate = function<bool(unsigned char, unsigned char, unsigned char, unsigned char)>(name);
        EXPECT_TRUE(gate(1, 2, 3, 4));
        EXPECT_EQ(script.complaint(), "");
    }
}
