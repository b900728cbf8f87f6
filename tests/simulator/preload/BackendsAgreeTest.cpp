// SPDX-License-Identifier: LicenseRef-HXAux
// One scenario through both backends: the same results, and the same calls in the same order.
#include "testing/SimulatedUnit.h"
#include "tests/simulator/hx-sim/UnitFixture.h"
#include "tests/simulator/preload/Scenario.h"

#include <sstream>

namespace {

using Backends = UnitFixture;

constexpr char kWorld[] = "absent=/dev/frontled";
constexpr char kFault[] = "fail=/dev/adc-id get 1 EIO";

TEST_F(Backends, AgreeOnEveryResultAndEveryCall)
{
    std::ostringstream linkedResults;
    std::vector<std::string> linkedCalls;
    {
        SimulatedUnit unit{kWorld, kFault};
        playScenario(linkedResults);
        linkedCalls = unit.journal();
    }

    hxtest::run(std::string{"hx-sim start unit --set "} + kWorld + " --set '" + kFault + "'");
    const auto preloaded = hxtest::run("hx-sim run --unit unit -- hx-probe scenario");
    std::vector<std::string> preloadedCalls;
    for (const auto& line : hxtest::jsonLinesOf(hxtest::run("hx-sim log --json")))
        preloadedCalls.push_back(line["subject"].get<std::string>() + ' ' + line["call"].get<std::string>());

    EXPECT_EQ(preloaded.output, linkedResults.str());
    EXPECT_EQ(preloadedCalls, linkedCalls);
}

} // namespace
