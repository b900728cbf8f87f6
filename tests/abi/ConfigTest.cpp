// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

namespace config_test {

using namespace oldapp;

namespace {

constexpr const char* kFactory = "GetConfig";
constexpr unsigned kRelease = 26;

void getter(unsigned slot, std::vector<Exchange> expected)
{
    Answer answer;
    expectSlot(kFactory, kRelease, slot, std::move(expected), &answer);
}

template <class Value>
void setter(unsigned slot, Value value, std::vector<Exchange> expected)
{
    expectSlot(kFactory, kRelease, slot, std::move(expected), value);
}

const Exchange kNew = kSupervisorIsNew;

} // namespace

TEST(ConfigSlots, ReadInTheirOrder)
{
    getter(0, {kNew, readsRegister(19, 1)});
    getter(1, {kNew, readsRegister(16, 1)});
    getter(2, {kNew, readsRegister(17, 1)});
    getter(3, {kNew, readsRegister(18, 1)});
    getter(4, {readsRegister(0, 1), readsRegister(1, 1)});
    getter(5, {readsRegister(3, 1), readsRegister(20, 1)});
    getter(6, {readsRegister(4, 1)});
    getter(7, {readsRegister(7, 1)});
    getter(8, {readsRegister(8, 1), readsRegister(11, 1), readsRegister(12, 1), readsRegister(13, 1)});
    getter(9, {readsRegister(9, 1)});
    getter(10, {readsRegister(10, 1000)});
    getter(11, {kNew, readsRegister(14, 40)});
    getter(12, {kNew, readsRegister(21, 1)});
}

TEST(ConfigSlots, WriteInTheirOrder)
{
    setter(13, 1, {kNew, writesRegister(19, 1)});
    setter(14, 1, {kNew, writesRegister(16, 1)});
    setter(15, 1, {kNew, writesRegister(17, 1)});
    setter(16, 1, {kNew, writesRegister(18, 1)});
    setter<unsigned short>(17, 5,
                           {readsRegister(0, 9), readsRegister(1, 9), writesRegister(0, 9), writesRegister(1, 5)});
    setter<unsigned int>(18, 0x10002, {writesRegister(3, 2), writesRegister(20, 1)});
    setter<unsigned short>(19, 300, {writesRegister(4, 300)});
    setter(20, 1, {writesRegister(7, 1)});
    setter<unsigned char>(21, 15,
                          {writesRegister(8, 1), writesRegister(11, 2), writesRegister(12, 4), writesRegister(13, 8)});
    setter(22, 1, {writesRegister(9, 1)});
    setter(23, 28.0, {writesRegister(10, 2896)});
    setter<short>(24, -25, {kNew, writesRegister(14, 31)});
    setter(25, 1, {kNew, writesRegister(21, 1)});
}

} // namespace config_test
