// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

namespace power_test {

using namespace oldapp;

namespace {

template <class... Arguments>
void slot(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    expectSlot("GetPower", 10, number, std::move(expected), arguments...);
}

} // namespace

TEST(PowerSlots, StandInTheirOrder)
{
    Answer answer;

    slot(0, {readsRegister(0, 1)}, &answer);
    slot(1, {readsRegister(1, 1)}, &answer);
    slot(2, {readsRegister(2, 1), readsRegister(5, 1), readsRegister(6, 1), readsRegister(7, 1)}, &answer);
    slot(3, {readsRegister(3, 1)}, &answer);
    slot(4, {writesRegister(0, 1)}, 1);
    slot(5, {writesRegister(1, 1)}, 1);
    slot<unsigned char>(6, {writesRegister(2, 1), writesRegister(5, 0), writesRegister(6, 4), writesRegister(7, 0)}, 5);
    slot(7, {writesRegister(3, 1)}, 1);
    slot(8, {kSupervisorIsNew, readsRegister(4, 6)}, &answer);
    slot(9, {writesRegister(4, 0)});
}

} // namespace power_test
