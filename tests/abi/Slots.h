// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "testing/driver/Driver.h"
#include "tests/abi/Library.h"

#include <gmock/gmock.h>

/// Helpers for "slot n is this operation": its driver calls identify the operation.
namespace oldapp {

using driver::Bytes;
using driver::callers;
using driver::Exchange;
using driver::local;
using driver::readsRegister;
using driver::Script;
using driver::writesRegister;
using driver::operator""_hex;

/// Storage for any output of a getter.
struct Answer {
    alignas(8) unsigned char bytes[64] = {};
};

inline const Exchange kFpgaIsNew = local(0x80040036, "00000000"_hex, "ffffffff"_hex);
inline const Exchange kSupervisorIsNew = local(0x80040037, "00000000"_hex, "ffffffff"_hex);
inline const Exchange kFrontIsNew = local(0x80040038, "00000000"_hex, "ffffffff"_hex);

/// Calls the slot on a new object and compares what happens at the driver.
template <class... Arguments>
void expectSlot(const char* factory, unsigned releaseSlot, unsigned slot, std::vector<Exchange> expected,
                Arguments... arguments)
{
    SCOPED_TRACE(testing::Message() << factory << " slot " << slot);
    Script script{std::move(expected)};
    const Object object{factory, releaseSlot};
    const int error = object.call<Arguments...>(slot, arguments...);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(script.complaint(), "");
}

} // namespace oldapp
