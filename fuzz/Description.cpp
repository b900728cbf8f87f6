// SPDX-License-Identifier: LicenseRef-HXAux
// Descriptions of units of any content: refused with a line, or a unit whose time advances and whose values can be
// read.
#include "fuzz/Require.h"
#include "simulator/model/Text.h"
#include "simulator/model/Unit.h"

#include <chrono>
#include <cstdint>
#include <string>

using namespace hxsim;
using namespace std::chrono_literals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Unit unit;
    try {
        unit.describe({reinterpret_cast<const char*>(data), size});
    } catch (const BadText& bad) {
        REQUIRE(std::string{bad.what()}.starts_with("line "));
    }
    for (const auto& [name, property] : unit.properties().all())
        (void)property.get();
    for (int i = 0; i < 100 && unit.clock().nextDeadline(); ++i)
        unit.clock().advanceTo(*unit.clock().nextDeadline());
    for (const auto& [name, property] : unit.properties().all())
        (void)property.get();
    return 0;
}
