// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

#include <cstdlib>

namespace video_test {

using namespace oldapp;

namespace {

using Byte = unsigned char;
using Word = unsigned short;

const Exchange kControl = local(0x8001000e, "00"_hex, "00"_hex);
const Exchange kProgressive = local(0x8001000e, "00"_hex, "04"_hex);

Exchange control(const Bytes& byte)
{
    return local(0x40010005, byte);
}

/// Opens the first input by slot 0, then calls the slot.
template <class... Arguments>
int slot(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    SCOPED_TRACE(number);
    const std::vector<Exchange> init = {local(0x40020011, "0000"_hex), kControl, control("04"_hex), kControl,
                                        control("00"_hex)};
    expected.insert(expected.begin(), init.begin(), init.end());
    Script script{std::move(expected)};
    const Object object{"GetVideo", 29};
    EXPECT_EQ(object.call<Byte>(0, 1), 0);
    const int error = object.call<Arguments...>(number, arguments...);
    EXPECT_EQ(script.complaint(), "");
    EXPECT_THAT(script.opened(), testing::Contains("/dev/analog-video1"));
    return error;
}

} // namespace

TEST(VideoSlots, ShowDeinterlaceAndMirrorInTheirOrder)
{
    Answer answer;

    EXPECT_EQ(slot<bool>(1, {kControl, control("01"_hex)}, true), 0);
    EXPECT_EQ(slot<int>(2, {kControl, control("02"_hex)}, 1), 0);
    EXPECT_EQ(slot<void*>(3, {kControl}, &answer), 0);
    EXPECT_EQ(slot<int>(4, {kControl, control("08"_hex)}, 1), 0);
    EXPECT_EQ(slot<void*>(5, {kControl}, &answer), 0);
    EXPECT_EQ(slot<void*>(14, {kControl}, &answer), 0);
}

TEST(VideoSlots, ChooseChannelColorKeysAndAreaInTheirOrder)
{
    Answer a;
    Answer b;
    Answer c;
    Answer d;

    EXPECT_EQ(slot<int>(6, {local(0x40040010, "03000000"_hex)}, 3), 0);
    EXPECT_EQ(slot<void*>(7, {local(0x8004000f, "00000000"_hex)}, &a), 0);
    EXPECT_EQ((slot<Byte, Byte, Byte>(8, {local(0x40030007, "010203"_hex)}, 1, 2, 3)), 0);
    EXPECT_EQ((slot<void*, void*, void*>(9, {local(0x80030006, "000000"_hex)}, &a, &b, &c)), 0);
    EXPECT_EQ((slot<Word, Word, Word, Word>(10, {local(0x40080008, "0100020003000400"_hex)}, 1, 2, 3, 4)), 0);
    EXPECT_EQ((slot<void*, void*, void*, void*>(11, {local(0x80080009, Bytes(8))}, &a, &b, &c, &d)), 0);
}

TEST(VideoSlots, ReportTheSignalInTheirOrder)
{
    Answer a;
    Answer b;
    float third = 0;

    EXPECT_EQ((slot<void*, void*, float*>(12, {local(0x80060012, Bytes(6), "010002000500"_hex)}, &a, &b, &third)), 0);
    EXPECT_EQ(third, 1.25F);
    EXPECT_EQ(slot<void*>(13, {local(0x8002000d, "8c00"_hex, "8c0e"_hex)}, &a), 0);
    EXPECT_EQ(a.bytes[0], 7);
}

TEST(VideoSlots, ScaleInTheirOrder)
{
    float x = 0;
    float y = 0;

    EXPECT_EQ((slot<float, float>(15, {kProgressive, kFpgaIsNew, local(0x4004000a, "80804040"_hex)}, 1, 1)), 0);
    EXPECT_EQ(
        (slot<float*, float*>(16, {kProgressive, local(0x8004000b, Bytes(4), "40408080"_hex), kFpgaIsNew}, &x, &y)), 0);
    EXPECT_EQ(x, 2.0F);
}

TEST(VideoSlots, OfferNoSnapshots)
{
    using Size = unsigned long;
    char* buffer = nullptr;
    Size size = 0;

    EXPECT_EQ(slot<bool>(17, {}, true), 2);
    EXPECT_EQ((slot<const char*, bool>(18, {}, "picture", true)), 2);
    EXPECT_EQ((slot<char*, Size, bool>(19, {}, nullptr, 0, true)), 2);
    EXPECT_EQ((slot<char**, Size*, bool, bool>(20, {}, &buffer, &size, true, true)), 2);
    EXPECT_EQ((slot<char**, Size*, const char*, Size, bool, bool>(21, {}, &buffer, &size, "", 0, true, true)), 2);
    EXPECT_EQ(slot<void*>(22, {}, std::malloc(1)), 0);
    EXPECT_EQ(slot<void*>(22, {}, nullptr), 9);
}

TEST(VideoSlots, MinimizeReadRegistersAndCropInTheirOrder)
{
    Answer a;
    Answer b;
    Answer c;
    Answer d;

    EXPECT_EQ(slot(23, {local(0x80080009, Bytes(8), "0100020003000400"_hex), local(0x40080008, Bytes(8))}), 0);
    EXPECT_EQ(slot(24, {local(0x40080008, Bytes(8))}), 0);
    EXPECT_EQ((slot<Byte, Byte>(25, {local(0x4002000c, "0506"_hex)}, 5, 6)), 0);
    EXPECT_EQ((slot<Byte, void*>(26, {local(0x8002000d, "0500"_hex, "0507"_hex)}, 5, &a)), 0);
    EXPECT_EQ(a.bytes[0], 7);
    EXPECT_EQ((slot<Byte, Byte, Byte, Byte>(27, {local(0x4004003d, "01030205"_hex)}, 2, 3, 4, 5)), 0);
    EXPECT_EQ((slot<void*, void*, void*, void*>(28, {local(0x8004003c, Bytes(4))}, &a, &b, &c, &d)), 0);
}

} // namespace video_test
