// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

using namespace oldapp;

namespace {

template <class... Arguments>
void screen(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    expected.insert(expected.begin(), kFrontIsNew);
    expectSlot("GetTouchScreen", 6, number, std::move(expected), arguments...);
}

template <class... Arguments>
void calibration(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    expectSlot("GetTouchScreenCalib", 6, number, std::move(expected), arguments...);
}

const Exchange kCalibrating = local(0x8001006A, "00"_hex, "06"_hex);

} // namespace

TEST(TouchScreenSlots, StandInTheirOrder)
{
    Answer answer;

    screen(0, {readsRegister(3, 1)}, &answer);
    screen(1, {readsRegister(4, 1)}, &answer);
    screen<int>(2, {writesRegister(3, 2)}, 2);
    screen<unsigned short>(3, {writesRegister(4, 500)}, 500);
    screen<int, unsigned short>(4, {writesRegister(11, 40)}, 6, 10);
    screen<int, void*>(5, {readsRegister(10, 1)}, 7, &answer);
}

TEST(TouchScreenCalibSlots, StandInTheirOrder)
{
    Answer answer;

    calibration<int>(0, {local(0x4001006B, "0a"_hex)}, 3);
    calibration<void*>(1, {kCalibrating}, &answer);
    EXPECT_EQ(answer.bytes[0], 2);
    calibration<unsigned char>(2, {kCalibrating, writesRegister(1, 3)}, 3);
    calibration<void*, unsigned char>(3, {readsRegister(1, 0x0103)}, &answer, 3);
    calibration<int, void*>(4, {readsRegister(16, 1)}, 2, &answer);
    calibration<int, unsigned short>(5, {writesRegister(15, 7)}, 3, 7);
}
