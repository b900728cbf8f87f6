// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

namespace front_led_test {

using namespace oldapp;

namespace {

template <class... Arguments>
void slot(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    expectSlot("GetFrontLED", 17, number, std::move(expected), arguments...);
}

const Exchange kTiming = local(0x80040042, "00000000"_hex, "0a0b0c0d"_hex);
const Exchange kColor = local(0x80030044, "000000"_hex, "000f00"_hex);

Exchange timing(const Bytes& bytes)
{
    return local(0x40040043, bytes);
}

} // namespace

TEST(FrontLEDSlots, ReadInTheirOrder)
{
    Answer first;
    Answer second;
    Answer third;

    slot(0, {kTiming, kTiming}, &first, &second);
    slot(1, {kTiming}, &first);
    EXPECT_EQ(first.bytes[0], 0x0A);
    slot(2, {kTiming}, &first);
    EXPECT_EQ(first.bytes[0], 0x0B);
    slot(3, {kTiming}, &first);
    EXPECT_EQ(first.bytes[0], 0x0C);
    slot(4, {kTiming}, &first);
    EXPECT_EQ(first.bytes[0], 0x0D);
    slot(5, {kColor}, &first, &second, &third);
    EXPECT_EQ(second.bytes[0], 0x0F);
    slot(6, {kColor}, &first);
    EXPECT_EQ(first.bytes[0], 1);
    slot(7, {local(0x80010046, "00"_hex, "01"_hex)}, &first);
}

TEST(FrontLEDSlots, WriteInTheirOrder)
{
    using Byte = unsigned char;
    slot<double, Byte>(8, {kTiming, timing("320b0c0d"_hex), kTiming, timing("0a320c0d"_hex)}, 1.0, 50);
    slot<Byte>(9, {kTiming, timing("070b0c0d"_hex)}, 7);
    slot<Byte>(10, {kTiming, timing("0a070c0d"_hex)}, 7);
    slot<Byte>(11, {kTiming, timing("0a0b070d"_hex)}, 7);
    slot<Byte>(12, {kTiming, timing("0a0b0c07"_hex)}, 7);
    slot<Byte, Byte, Byte>(13, {local(0x40030045, "010203"_hex)}, 1, 2, 3);
    slot<int>(14, {local(0x40030045, "0c0004"_hex)}, 4);
    slot(15, {kTiming, timing("000b0c0d"_hex)});
    slot<int>(16, {local(0x40010047, "01"_hex)}, 1);
}

} // namespace front_led_test
