// SPDX-License-Identifier: LicenseRef-HXAux
// Scenarios of any content, which may include themselves: refused with file and line, or statements that stand in it.
#include "simulator/scenario/Scenario.h"

#include "fuzz/Require.h"

#include <cstdint>
#include <string>

using namespace hxsim;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string content{reinterpret_cast<const char*>(data), size};
    const auto files = [&](const std::string& path) {
        if (path.size() > 8)
            throw BadText{"cannot read it"};
        return content;
    };
    try {
        for (const Scenario& scenario : parseScenario("x", content, files))
            for (const Statement& statement : scenario.statements)
                REQUIRE(statement.line > 0 && !statement.text.empty());
    } catch (const BadScenario& bad) {
        const std::string text = bad.what();
        const std::size_t number = text.find(':') + 1;
        REQUIRE(number > 0 && text.find(": ", number) != std::string::npos);
    }
    return 0;
}
