// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/system/conformance/Checks.h"

namespace conformance {

int runAll()
{
    int failed = 0;
    for (const auto group : {inputsAndVersions, unitInformation, light, supervisor, signals, peripherals, video, texts,
                             upgrades, automaticBacklight}) {
        for (const Check& check : group()) {
            const std::string got = check.run();
            const bool passed = got == check.expected;
            failed += passed ? 0 : 1;
            std::printf("%s\t%s\t%s\n", check.operation.c_str(), passed ? "pass" : "FAIL", got.c_str());
            std::fflush(stdout);
        }
    }
    return failed;
}

} // namespace conformance
