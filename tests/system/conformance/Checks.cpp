// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

#include <cstdio>

namespace conformance {

std::string answer(Halvix::eErr code, const std::string& values)
{
    const std::string number = std::to_string(static_cast<int>(code));
    return code == Halvix::ERR_SUCCESS && !values.empty() ? number + " " + values : number;
}

int runAll()
{
    int failed = 0;
    for (const auto group : {inputsAndVersions}) {
        for (const Check& check : group()) {
            const std::string got = check.ask();
            const bool passed = got == check.expected;
            failed += passed ? 0 : 1;
            std::printf("%s\t%s\t%s\n", check.operation, passed ? "pass" : "FAIL", got.c_str());
            std::fflush(stdout);
        }
    }
    return failed;
}

} // namespace conformance
