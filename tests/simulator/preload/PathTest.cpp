// SPDX-License-Identifier: LicenseRef-HXAux
// Calls that name a path: in a directory of a unit they do what they do in one of the machine, and leave that alone.
#include "testing/SimulatedUnit.h"
#include "tests/simulator/hx-sim/UnitFixture.h"
#include "tests/simulator/preload/PathRules.h"

#include <filesystem>
#include <sstream>

namespace path_test {

using hxtest::run;
using testing::HasSubstr;
using testing::Not;

class PathCalls : public UnitFixture {
protected:
    /// The kernel's results, in a directory of the machine.
    [[nodiscard]] std::string kernelsAnswers() const
    {
        std::ostringstream results;
        playPathRules(folder, results);
        return results.str();
    }

    const TemporaryFolder scratch{};
    const std::string folder = [this] {
        std::filesystem::create_directory(scratch / "etc");
        return scratch / "etc";
    }();
};

TEST_F(PathCalls, AreTheKernelsInATestProgram)
{
    const std::string expected = kernelsAnswers();
    std::ostringstream results;
    {
        SimulatedUnit unit;
        playPathRules("/opt/etc", results);
    }

    EXPECT_EQ(results.str(), expected);
    EXPECT_THAT(expected, Not(HasSubstr("elsewhere")));
}

TEST_F(PathCalls, AreTheKernelsInAProgramOnAUnitForBothAbisAndSizesOfTime)
{
    const std::string expected = kernelsAnswers();
    std::istringstream programs{HX_PATH_PROGRAMS};
    int count = 0;
    for (std::string program; programs >> program; ++count) {
        EXPECT_EQ(run(program + " '" + folder + "'").output, expected) << program;
        EXPECT_EQ(run("hx-sim run -- " + program + " /opt/etc").output, expected) << program;
    }
    EXPECT_GT(count, 0);
}

} // namespace path_test
