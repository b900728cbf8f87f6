// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/abi/Slots.h"

using namespace oldapp;

namespace {

template <class... Arguments>
void slot(unsigned number, std::vector<Exchange> expected, Arguments... arguments)
{
    expectSlot("GetDiagnostic", 10, number, std::move(expected), arguments...);
}

std::vector<Exchange> timers()
{
    std::vector<Exchange> reads;
    for (const int reg : {8, 7, 9, 11, 10, 23, 24, 15, 16, 17, 18, 19, 20, 21, 22})
        reads.push_back(readsRegister(static_cast<std::uint8_t>(reg), 1));
    return reads;
}

} // namespace

TEST(DiagnosticSlots, StandInTheirOrder)
{
    Answer first;
    Answer second;

    slot(0, {readsRegister(0, 1)}, &first);
    slot(1, {readsRegister(1, 1)}, &first);
    slot(3, {readsRegister(2, 1)}, &first);
    slot(4, {readsRegister(3, 1)}, &first);
    slot(5, {readsRegister(4, 1)}, &first);
    slot(6, timers(), &first);
    slot(7, {readsRegister(14, 1), readsRegister(13, 1)}, &first, &second);
    slot(8, {readsRegister(12, 1)}, &first);
    slot(9, {writesRegister(25, 1)});
}
